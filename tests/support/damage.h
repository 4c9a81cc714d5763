// Damaged forms of a valid input: what a parser meets when a line, a disk or a hand slips.
#ifndef KVT_TESTS_SUPPORT_DAMAGE_H
#define KVT_TESTS_SUPPORT_DAMAGE_H

#include <QByteArray>
#include <QString>

/// Bytes that mean something to one format or another, or nothing to any.
inline QByteArray hostileBytes()
{
    return QByteArray::fromHex("00 05 0A 0D 15 20 22 2C 2E 7F FF");
}

/// Puts damaged forms of `valid` to `judge`: cut to every length that is less than the whole, with
/// each hostile byte behind it, and with each of its bytes replaced by each hostile one. `judge`
/// takes a QByteArray and returns a QString that says what is wrong with the outcome, empty when
/// nothing is. Returns the first such text, with the damage in front; empty when there is none.
template <typename Judge>
QString faultAtDamage(const QByteArray &valid, Judge judge)
{
    const auto put = [&judge](const QByteArray &damaged, const QString &damage) {
        const QString fault = judge(damaged);
        return fault.isEmpty() ? QString() : damage + QLatin1String(": ") + fault;
    };
    QString fault;
    for (int length = 0; length < valid.size() && fault.isEmpty(); ++length)
        fault = put(valid.left(length), QString::fromLatin1("cut to %1 bytes").arg(length));
    const QByteArray hostile = hostileBytes();
    for (int i = 0; i < hostile.size() && fault.isEmpty(); ++i)
        fault =
            put(valid + hostile.at(i), QString::fromLatin1("0x%1 behind it")
                                           .arg(quint8(hostile.at(i)), 2, 16, QLatin1Char('0')));
    for (int at = 0; at < valid.size(); ++at)
        for (int i = 0; i < hostile.size() && fault.isEmpty(); ++i) {
            QByteArray damaged = valid;
            damaged[at] = hostile.at(i);
            if (damaged != valid)
                fault = put(damaged, QString::fromLatin1("byte %1 is 0x%2")
                                         .arg(at)
                                         .arg(quint8(hostile.at(i)), 2, 16, QLatin1Char('0')));
        }
    return fault;
}

#endif
