#include "apps/kvt/live_view.h"

#include "apps/kvt/console.h"
#include "tags/tag_value.h"

#include <algorithm>

namespace kvt
{

namespace
{

const QString CURSOR_UP = QStringLiteral("\x1b[%1A");
const QString CLEAR_TO_END_OF_LINE = QStringLiteral("\x1b[K");
const QString ROW = QStringLiteral("%1  %2  %3  %4  %5\n");
const int AREA_WIDTH = -4;
const int ADDRESS_WIDTH = -14;
const int VALUE_WIDTH = 8;

} // namespace

QString qualityName(Quality quality)
{
    switch (quality) {
    case Quality::NeverRead:
        return QStringLiteral("never read");
    case Quality::Good:
        return QStringLiteral("good");
    case Quality::Stale:
        return QStringLiteral("stale");
    case Quality::Failed:
        return QStringLiteral("failed");
    }
    return QString();
}

QString valueText(const Tag &tag, const CellValue &value)
{
    if (value.quality == Quality::NeverRead)
        return QStringLiteral("-");
    QByteArray bytes(1, static_cast<char>(value.raw & 0xFF));
    bytes.append(static_cast<char>(value.raw >> 8));
    return formatValue(tag.area, tag.type, bytes);
}

LiveView::LiveView(const QVector<Tag> &tags) : tags_(tags), inPlace_(outputIsTerminal())
{
    for (const Tag &tag : tags_)
        nameWidth_ = std::max(nameWidth_, tag.name.size());
}

void LiveView::show(const QVector<CellValue> &values, const QString &status)
{
    QString text;
    if (inPlace_ && drawnLines_ > 0)
        text += CURSOR_UP.arg(drawnLines_);
    text += status + QLatin1Char('\n');
    text += ROW.arg(QStringLiteral("tag"), -nameWidth_)
                .arg(QStringLiteral("area"), AREA_WIDTH)
                .arg(QStringLiteral("address"), ADDRESS_WIDTH)
                .arg(QStringLiteral("value"), VALUE_WIDTH)
                .arg(QStringLiteral("result"));
    for (int i = 0; i < tags_.size(); ++i)
        text += row(i, values.at(i));
    drawnLines_ = text.count(QLatin1Char('\n'));
    if (inPlace_)
        text.replace(QLatin1Char('\n'), CLEAR_TO_END_OF_LINE + QLatin1Char('\n'));
    printOut(text);
}

QString LiveView::row(int tag, const CellValue &value) const
{
    const Tag &description = tags_.at(tag);
    const QString address =
        QStringLiteral("%1:%2").arg(description.station).arg(description.address);
    return ROW.arg(description.name, -nameWidth_)
        .arg(areaName(description.area), AREA_WIDTH)
        .arg(address, ADDRESS_WIDTH)
        .arg(valueText(description, value), VALUE_WIDTH)
        .arg(qualityName(value.quality));
}

} // namespace kvt
