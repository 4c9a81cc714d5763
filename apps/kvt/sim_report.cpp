#include "apps/kvt/sim_report.h"

#include "apps/kvt/console.h"

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

QString hex(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
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
        exchange.reply.isEmpty() ? QStringLiteral("no reply") : hex(exchange.reply);
    QString text = QStringLiteral("%1 station %2 %3: %4 -> %5")
                       .arg(QString::number(exchange.number), station, kindName(exchange.kind),
                            hex(exchange.request), reply);
    if (!exchange.faults.isEmpty())
        text += QStringLiteral(" [%1]").arg(namesOf(exchange.faults).join(QStringLiteral(", ")));
    return text + QLatin1Char('\n');
}

QJsonObject exchangeObject(const Exchange &exchange)
{
    return {
        {QStringLiteral("exchange"), exchange.number},
        {QStringLiteral("station"), exchange.station},
        {QStringLiteral("kind"), kindName(exchange.kind)},
        {QStringLiteral("request"), hex(exchange.request)},
        {QStringLiteral("reply"), hex(exchange.reply)},
        {QStringLiteral("faults"), QJsonArray::fromStringList(namesOf(exchange.faults))},
    };
}

// The counters by name, the faults that were committed behind them.
QVector<QPair<QString, qint64>> namedCounts(const PlcCounters &counters)
{
    QVector<QPair<QString, qint64>> counts = {
        {QStringLiteral("exchanges"), counters.exchanges},
        {QStringLiteral("reads"), counters.reads},
        {QStringLiteral("writes"), counters.writes},
        {QStringLiteral("commands"), counters.commands},
        {QStringLiteral("refusals"), counters.refusals},
        {QStringLiteral("notAddressed"), counters.notAddressed},
        {QStringLiteral("unanswered"), counters.unanswered},
        {QStringLiteral("droppedBytes"), counters.droppedBytes},
    };
    for (int i = 0; i < FAULT_KINDS; ++i) {
        const qint64 count = counters.faults.at(static_cast<size_t>(i));
        if (count > 0)
            counts.append({QLatin1String(faultName(static_cast<FaultKind>(i))), count});
    }
    return counts;
}

} // namespace

QString lineNameLine(const QString &name, bool json)
{
    return json ? jsonLine({{QStringLiteral("line"), name}}) : name + QLatin1Char('\n');
}

QString exchangeLine(const Exchange &exchange, bool json)
{
    return json ? jsonLine(exchangeObject(exchange)) : exchangeText(exchange);
}

QString summaryLine(const PlcCounters &counters, bool json)
{
    QStringList texts;
    QJsonObject object;
    for (const auto &[name, count] : namedCounts(counters)) {
        texts.append(QStringLiteral("%1 %2").arg(name).arg(count));
        object.insert(name, count);
    }
    if (json)
        return jsonLine({{QStringLiteral("summary"), object}});
    return texts.join(QStringLiteral(", ")) + QLatin1Char('\n');
}

} // namespace kvt
