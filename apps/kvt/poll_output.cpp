#include "apps/kvt/poll_output.h"

#include "apps/kvt/common/counted.h"
#include "apps/kvt/console.h"
#include "apps/kvt/outcome_text.h"
#include "apps/kvt/report_json.h"
#include "apps/kvt/wall_clock.h"
#include "tags/tag_watch.h"

#include <QJsonArray>

#include <algorithm>
#include <utility>

namespace kvt
{

namespace
{

QString statusText(const PollState &state)
{
    // The line comes last: its name may be long, and a narrow terminal cuts it.
    return QStringLiteral("%1, %2, %3%4 on %5")
        .arg(roughTimeText(state.elapsed_ns), counted(state.scans, "scan", "scans"),
             counted(static_cast<qint64>(state.exchanges), "exchange", "exchanges"), state.more,
             state.line);
}

QList<int> sorted(const QSet<int> &stations)
{
    QList<int> result = stations.values();
    std::sort(result.begin(), result.end());
    return result;
}

QString troubleText(const Snapshot &snapshot, const PollState &state)
{
    if (!state.lineError.isEmpty())
        return QStringLiteral("line down: ") + state.lineError;
    if (snapshot.stationsOff.isEmpty())
        return QString();
    QStringList numbers;
    for (const int station : sorted(snapshot.stationsOff))
        numbers.append(QString::number(station));
    return QStringLiteral("off, asked from time to time: station ") +
           numbers.join(QStringLiteral(", "));
}

} // namespace

PollOutput::PollOutput(const QVector<Tag> &tags, const AlarmTexts &alarms, Form form,
                       const Acknowledge &acknowledge)
    : tags_(tags), texts_(tags), alarms_(alarms), form_(form)
{
    if (form == Form::Table)
        view_ = std::make_unique<LiveView>(tags, texts_, acknowledge);
    for (int i = 0; i < tags.size(); ++i) {
        shown_.append(QString());
        shownResults_.append(QString());
        const std::optional<double> deadband = watchOf(tags.at(i)).deadband;
        deadbands_.push_back(deadband ? std::make_optional(DeadbandFilter(*deadband))
                                      : std::nullopt);
    }
}

void PollOutput::show(const Snapshot &snapshot, const PollState &state, const QJsonObject &summary)
{
    switch (form_) {
    case Form::Table:
        view_->show(snapshot, statusText(state), troubleText(snapshot, state));
        break;
    case Form::Lines:
        showLines(snapshot);
        break;
    case Form::Json:
        showJson(snapshot, state, summary);
        break;
    }
}

void PollOutput::finish()
{
    if (view_)
        view_->finish();
}

void PollOutput::showLines(const Snapshot &snapshot)
{
    const QString time = isoNow();
    QString text;
    for (int i = 0; i < tags_.size(); ++i) {
        const TagValue &value = snapshot.values.at(i);
        const bool isOff = snapshot.stationsOff.contains(tags_.at(i).station);
        const QStringList words = {tags_.at(i).name, texts_.text(i, value),
                                   qualityName(value.quality),
                                   resultText(snapshot.results.at(i), isOff)};
        const QString line = words.join(QStringLiteral("  "));
        if (isNews(i, value, words.last(), line))
            text += time + QStringLiteral("  ") + line + QLatin1Char('\n');
    }
    if (!text.isEmpty())
        printOut(text);
}

/// A tag with a deadband is told when its value has left it, and with each change of quality or
/// result; any other with each change.
bool PollOutput::isNews(int tag, const TagValue &value, const QString &result, const QString &line)
{
    const bool isOther = std::exchange(shown_[tag], line) != line;
    const bool isOtherResult = std::exchange(shownResults_[tag], result) != result;
    std::optional<DeadbandFilter> &deadband = deadbands_[static_cast<size_t>(tag)];
    if (!deadband)
        return isOther;
    ReportedValue reported;
    reported.quality = static_cast<int>(value.quality);
    if (value.isKnown)
        reported.number = texts_.converter(tag).number(value.raw);
    return deadband->isReported(reported) || isOtherResult;
}

void PollOutput::showJson(const Snapshot &snapshot, const PollState &state,
                          const QJsonObject &summary) const
{
    QJsonArray tags;
    for (int i = 0; i < tags_.size(); ++i) {
        QJsonObject tag = polledTagToJson(tags_.at(i), snapshot.values.at(i),
                                          snapshot.results.at(i), snapshot.at_ns);
        texts_.insertInto(i, snapshot.values.at(i), &tag);
        if (const std::optional<AlarmStatus> alarm = snapshot.alarms.value(i))
            tag.insert(QStringLiteral("alarm"), alarms_.toJson(i, *alarm));
        tags.append(tag);
    }
    QJsonArray off;
    for (const int station : sorted(snapshot.stationsOff))
        off.append(station);
    QJsonObject object{{QStringLiteral("time"), isoNow()},
                       {QStringLiteral("elapsed_ms"), millisecondsOf(state.elapsed_ns)},
                       {QStringLiteral("scans"), state.scans},
                       {QStringLiteral("line_up"), state.lineIsUp},
                       {QStringLiteral("stations_off"), off},
                       {QStringLiteral("tags"), tags}};
    if (!summary.isEmpty())
        object.insert(QStringLiteral("summary"), summary);
    printOut(jsonLine(object));
}

} // namespace kvt
