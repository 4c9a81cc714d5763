#include "apps/kvt/live_view.h"

#include "apps/kvt/console.h"
#include "apps/kvt/value_text.h"

#include <QStringList>

#include <algorithm>

namespace kvt
{

namespace
{

// To the first column too: Ctrl-C leaves its echo behind the cursor.
const QString CURSOR_UP = QStringLiteral("\r\x1b[%1A");
const QString CLEAR_TO_END_OF_LINE = QStringLiteral("\x1b[K");
const QString CLEAR_TO_END_OF_SCREEN = QStringLiteral("\x1b[J");
const QString CUT_LONG_LINES = QStringLiteral("\x1b[?7l");
const QString WRAP_LONG_LINES = QStringLiteral("\x1b[?7h");
const QString PLAIN = QStringLiteral("\x1b[0m");

const int AREA_WIDTH = 4;
const int ADDRESS_WIDTH = 14;
const int VALUE_WIDTH = 8;
const int QUALITY_WIDTH = 10;
const int AGE_WIDTH = 10;
const int LINES_BESIDE_TAGS = 4; // status, heading, how many are left out, the cursor's own

QString ageText(const CellValue &value, qint64 now_ns)
{
    if (value.quality == Quality::NeverRead)
        return QStringLiteral("-");
    return QStringLiteral("%1 ms").arg(std::max<qint64>(now_ns - value.readAt_ns, 0) / 1000000);
}

// Stands for the tags that found no room; those that need a look are counted.
QString moreText(const QVector<CellValue> &values)
{
    const auto bad = std::count_if(values.begin(), values.end(), [](const CellValue &value) {
        return value.quality != Quality::Good;
    });
    const QString text = QStringLiteral("... and %1 more").arg(values.size());
    return bad == 0 ? text + QLatin1Char('\n')
                    : text + QStringLiteral(", %1 of them not good\n").arg(bad);
}

QString line(const QStringList &columns)
{
    return columns.join(QStringLiteral("  ")) + QLatin1Char('\n');
}

} // namespace

LiveView::LiveView(const QVector<Tag> &tags)
    : tags_(tags), inPlace_(outputIsTerminal()), inColour_(outputTakesColour())
{
    for (const Tag &tag : tags_)
        nameWidth_ = std::max(nameWidth_, tag.name.size());
}

void LiveView::show(const Snapshot &snapshot, const QString &status)
{
    QString text;
    if (inPlace_ && drawnLines_ > 0)
        text += CURSOR_UP.arg(drawnLines_);
    text += status + QLatin1Char('\n');
    text += heading();
    const int room = inPlace_ ? std::max(terminalHeight() - LINES_BESIDE_TAGS, 1) : tags_.size();
    const int shown = std::min(room, tags_.size());
    for (int i = 0; i < shown; ++i)
        text += row(i, snapshot);
    if (shown < tags_.size())
        text += moreText(snapshot.values.mid(shown));
    drawnLines_ = text.count(QLatin1Char('\n'));
    if (inPlace_) {
        text.replace(QLatin1Char('\n'), CLEAR_TO_END_OF_LINE + QLatin1Char('\n'));
        text = CUT_LONG_LINES + text + CLEAR_TO_END_OF_SCREEN + WRAP_LONG_LINES;
    }
    printOut(text);
}

QString LiveView::row(int tag, const Snapshot &snapshot) const
{
    const Tag &description = tags_.at(tag);
    const CellValue &value = snapshot.values.at(tag);
    const QString address =
        QStringLiteral("%1:%2").arg(description.station).arg(description.address);
    const QString quality = qualityName(value.quality).leftJustified(QUALITY_WIDTH);
    return line(
        {description.name.leftJustified(nameWidth_),
         areaName(description.area).leftJustified(AREA_WIDTH), address.leftJustified(ADDRESS_WIDTH),
         valueText(description, value).rightJustified(VALUE_WIDTH),
         coloured(quality, value.quality), ageText(value, snapshot.at_ns).rightJustified(AGE_WIDTH),
         resultText(snapshot.results.at(tag))});
}

QString LiveView::heading() const
{
    return line({QStringLiteral("tag").leftJustified(nameWidth_),
                 QStringLiteral("area").leftJustified(AREA_WIDTH),
                 QStringLiteral("address").leftJustified(ADDRESS_WIDTH),
                 QStringLiteral("value").rightJustified(VALUE_WIDTH),
                 QStringLiteral("quality").leftJustified(QUALITY_WIDTH),
                 QStringLiteral("age").rightJustified(AGE_WIDTH), QStringLiteral("result")});
}

QString LiveView::coloured(const QString &text, Quality quality) const
{
    if (!inColour_)
        return text;
    switch (quality) {
    case Quality::Good:
        return QStringLiteral("\x1b[32m") + text + PLAIN;
    case Quality::Stale:
        return QStringLiteral("\x1b[33m") + text + PLAIN;
    case Quality::Failed:
        return QStringLiteral("\x1b[31m") + text + PLAIN;
    case Quality::NeverRead:
        break;
    }
    return text;
}

} // namespace kvt
