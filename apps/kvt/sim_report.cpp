#include "apps/kvt/sim_report.h"

#include "apps/kvt/console.h"
#include "apps/kvt/frames/frame_text.h"
#include "apps/kvt/wall_clock.h"
#include "host/statistics_json.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

namespace kvt
{

namespace
{

QString kindName(PlcRequest::Kind kind)
{
    switch (kind) {
    case PlcRequest::Kind::Read:
        return QStringLiteral("read");
    case PlcRequest::Kind::Write:
        return QStringLiteral("write");
    case PlcRequest::Kind::Bad:
        break;
    }
    return QStringLiteral("bad");
}

QStringList namesOf(const QVector<FaultKind> &faults)
{
    QStringList names;
    for (const FaultKind fault : faults)
        names.append(QLatin1String(faultName(fault)));
    return names;
}

QString exchangeText(const Exchange &exchange)
{
    const QString station =
        exchange.station < 0 ? QStringLiteral("?") : QString::number(exchange.station);
    const QString reply =
        exchange.reply.isEmpty() ? QStringLiteral("no reply") : hexText(exchange.reply);
    QString text = QStringLiteral("%1  %2 station %3 %4: %5 -> %6")
                       .arg(isoNow(), QString::number(exchange.number), station,
                            kindName(exchange.kind), hexText(exchange.request), reply);
    if (!exchange.faults.isEmpty())
        text += QStringLiteral(" [%1]").arg(namesOf(exchange.faults).join(QStringLiteral(", ")));
    return text + QLatin1Char('\n');
}

QJsonObject exchangeObject(const Exchange &exchange)
{
    QJsonObject object{
        {QStringLiteral("time"), isoNow()},
        {QStringLiteral("exchange"), exchange.number},
        {QStringLiteral("kind"), kindName(exchange.kind)},
        {QStringLiteral("request"), hexText(exchange.request)},
        {QStringLiteral("reply"), hexText(exchange.reply)},
        {QStringLiteral("faults"), QJsonArray::fromStringList(namesOf(exchange.faults))},
    };
    if (exchange.station >= 0)
        object.insert(QStringLiteral("station"), exchange.station);
    return object;
}

using NamedCounts = QVector<QPair<QString, qint64>>;

NamedCounts namedCounts(const PlcCounters &counters)
{
    return {
        {QStringLiteral("exchanges"), counters.exchanges},
        {QStringLiteral("reads"), counters.reads},
        {QStringLiteral("writes"), counters.writes},
        {QStringLiteral("commands"), counters.commands},
        {QStringLiteral("refusals"), counters.refusals},
        {QStringLiteral("not addressed"), counters.notAddressed},
        {QStringLiteral("unanswered"), counters.unanswered},
        {QStringLiteral("dropped bytes"), counters.droppedBytes},
        {QStringLiteral("lost replies"), counters.lostReplies},
    };
}

// Those that were committed.
NamedCounts faultCounts(const PlcCounters &counters)
{
    NamedCounts counts;
    for (int i = 0; i < FAULT_KINDS; ++i) {
        const qint64 count = counters.faults.at(static_cast<size_t>(i));
        if (count > 0)
            counts.append({QLatin1String(faultName(static_cast<FaultKind>(i))), count});
    }
    return counts;
}

QJsonObject summaryObject(const PlcCounters &counters)
{
    QJsonObject faults;
    for (const auto &[name, count] : faultCounts(counters))
        faults.insert(name, count);
    QJsonObject object{{QStringLiteral("faults"), faults}};
    for (const auto &[name, count] : namedCounts(counters))
        object.insert(jsonWord(name), count);
    return object;
}

} // namespace

QString lineNameLine(const QString &name, bool json)
{
    return json ? jsonLine({{QStringLiteral("time"), isoNow()}, {QStringLiteral("line"), name}})
                : name + QLatin1Char('\n');
}

QString exchangeLine(const Exchange &exchange, bool json)
{
    return json ? jsonLine(exchangeObject(exchange)) : exchangeText(exchange);
}

QString summaryLine(const PlcCounters &counters, bool json)
{
    if (json)
        return jsonLine({{QStringLiteral("time"), isoNow()},
                         {QStringLiteral("summary"), summaryObject(counters)}});
    QStringList texts;
    for (const auto &[name, count] : namedCounts(counters) + faultCounts(counters))
        texts.append(QStringLiteral("%1 %2").arg(name).arg(count));
    return texts.join(QStringLiteral(", ")) + QLatin1Char('\n');
}

} // namespace kvt
