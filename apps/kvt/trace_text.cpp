#include "apps/kvt/trace_text.h"

#include "apps/kvt/common/counted.h"
#include "apps/kvt/frames/frame_text.h"
#include "apps/kvt/result_code.h"
#include "apps/kvt/trace_filter.h"
#include "apps/kvt/wall_clock.h"

namespace kvt
{

namespace
{

QString placeText(const TraceRecord &record)
{
    const int area = record.number(0);
    const QString name = area >= 0 && area <= static_cast<int>(Area::C)
                             ? areaName(static_cast<Area>(area))
                             : QStringLiteral("area %1").arg(area);
    return QStringLiteral("%1 %2 at station %3")
        .arg(name, record.text(2), QString::number(record.number(1)));
}

QString stationText(const TraceRecord &record)
{
    if (record.number(0) < 0)
        return QStringLiteral("all stations are switched on");
    return QStringLiteral("station %1 is switched %2")
        .arg(record.number(0))
        .arg(record.number(1) == 0 ? QStringLiteral("off") : QStringLiteral("on"));
}

QString valueText(const TraceRecord &record)
{
    const QByteArray bytes = record.bytes(5);
    quint32 value = 0;
    if (bytes.size() > static_cast<int>(sizeof value))
        return QStringLiteral("%1 begins with the bytes %2").arg(placeText(record), hexText(bytes));
    for (int i = bytes.size() - 1; i >= 0; --i)
        value = value << 8U | static_cast<quint8>(bytes.at(i));
    return QStringLiteral("%1 is %2 (0x%3)")
        .arg(placeText(record), QString::number(value), QString::number(value, 16).toUpper());
}

// Why the host ended an attempt, by the words of the record.
QString endText(const TraceRecord &record)
{
    static const QHash<QByteArray, QString> TEXTS = {
        {"replied", QStringLiteral("a whole reply had come")},
        {"refused", QStringLiteral("the station refused")},
        {"noreply", QStringLiteral("nothing had come when the time-out was over")},
        {"brokenoff", QStringLiteral("the reply began and did not go on")},
        {"foreign", QStringLiteral("the reply does not look like the station's own")},
        {"disturbed", QStringLiteral("bytes came that cannot answer it, so that no reply could be "
                                     "trusted")}};
    return TEXTS.value(record.words.at(0), QString::fromLatin1(record.words.at(0)));
}

QString lineText(const QString &stamp, int exchange, const QString &text)
{
    return QStringLiteral("%1 %2  %3\n").arg(stamp, 12).arg(exchange, 6).arg(text);
}

QString explainedText(const FrameExplanation &explanation)
{
    if (explanation.problems.isEmpty())
        return explanation.summary;
    return QStringLiteral("wrong: ") + explanation.problems.join(QStringLiteral("; "));
}

QString judgedText(const TraceRecord &record, const FrameExplanation &reply)
{
    const CodeExplanation code = explainCode(record.number(1));
    const QString result = QStringLiteral("result %1: %2").arg(code.code).arg(code.meaning);
    return reply.fields.isEmpty() ? result : explainedText(reply) + QStringLiteral("; ") + result;
}

QString joined(const TraceRecord &record)
{
    return QString::fromLatin1(record.words.join(' '));
}

} // namespace

QString TraceText::firstLine() const
{
    return startedAt_.isValid()
               ? lineText(QStringLiteral("0.000000"), 0,
                          QStringLiteral("the run began at ") + isoTime(startedAt_))
               : QString();
}

QString TraceText::line(const TraceRecord &record)
{
    note(record);
    const QString text = textOf(record, explanationOf(record));
    if (text.isEmpty())
        return QString();
    return lineText(QString::fromLatin1(record.stamp), record.exchange, text);
}

QJsonObject TraceText::json(const TraceRecord &record)
{
    note(record);
    const FrameExplanation explanation = explanationOf(record);
    const QString text = textOf(record, explanation);
    if (text.isEmpty())
        return QJsonObject();
    QJsonObject object{{QStringLiteral("elapsed_ms"), elapsed_ms(record)},
                       {QStringLiteral("file_line"), record.line},
                       {QStringLiteral("exchange"), record.exchange},
                       {QStringLiteral("record"), QString::fromLatin1(record.name)},
                       {QStringLiteral("text"), text}};
    if (startedAt_.isValid())
        object.insert(QStringLiteral("time"),
                      isoTime(startedAt_.addMSecs(static_cast<qint64>(elapsed_ms(record)))));
    if (!explanation.fields.isEmpty())
        object.insert(QStringLiteral("frame"), explanationToJson(record.bytes(0), explanation));
    if (record.is(trace::RECEIVED))
        object.insert(QStringLiteral("bytes"), hexText(record.bytes(0)));
    if (record.is(trace::JUDGED))
        object.insert(QStringLiteral("result"), record.number(1));
    return object;
}

void TraceText::note(const TraceRecord &record)
{
    if (record.is(trace::ASK))
        request_ = record.bytes(0);
}

// What arrives may be a piece of a reply; it is explained where the driver judges the whole.
FrameExplanation TraceText::explanationOf(const TraceRecord &record)
{
    const bool isFrame = record.is(trace::SENT) || record.is(trace::JUDGED);
    if (!isFrame || record.bytes(0).isEmpty())
        return FrameExplanation();
    FrameExplanation explanation = explainFrame(record.bytes(0), request_, tags_);
    values_.addTo(record.bytes(0), request_, &explanation);
    return explanation;
}

QString TraceText::textOf(const TraceRecord &record, const FrameExplanation &explanation) const
{
    if (record.is(trace::SENT))
        return QStringLiteral("-> %1  %2")
            .arg(hexText(record.bytes(0)), explainedText(explanation));
    if (record.is(trace::RECEIVED))
        return QStringLiteral("<- %1").arg(hexText(record.bytes(0)));
    if (record.is(trace::JUDGED))
        return judgedText(record, explanation);
    if (record.is(trace::VALUE))
        return valueText(record);
    if (record.is(trace::STATION))
        return stationText(record);
    if (record.is(trace::WRITE))
        return QStringLiteral("write queued: %1, bytes %2")
            .arg(placeText(record), hexText(record.bytes(6)));
    if (record.is(trace::ONCE))
        return QStringLiteral("one-time read queued: %1").arg(placeText(record));
    if (record.is(trace::DROPPED))
        return QStringLiteral("%1: %2").arg(
            counted(record.number(1), "byte dropped", "bytes dropped"),
            QString::fromLatin1(record.words.at(0)));
    if (record.is(trace::LINE))
        return QStringLiteral("the line is %1").arg(joined(record));
    if (record.is(trace::INFO))
        return QStringLiteral("settings: %1").arg(joined(record));
    if (record.is(trace::LIST))
        return QStringLiteral("read list of ") + counted(record.number(0), "entry", "entries");
    if (record.is(trace::ENDED))
        return QStringLiteral("attempt %1 ended: %2").arg(record.number(1)).arg(endText(record));
    if (record.is(trace::CONTINUED))
        return QStringLiteral("the recording goes on here, what was before is in an older file");
    if (record.is(trace::LOST))
        return counted(record.number(0), "record was lost", "records were lost");
    return QString();
}

} // namespace kvt
