// What the driver does, done plainly: by QString's own split and toInt, by searching lists from the
// front and by exchanging neighbours. Tests compare the driver's quicker ways with it.
#ifndef KVT_TESTS_SUPPORT_PLAIN_MODELS_H
#define KVT_TESTS_SUPPORT_PLAIN_MODELS_H

#include "driver/records.h"

#include <QStringList>

/// The parts of an address text.
inline QStringList plainParts(const QString &text)
{
    return text.split(QLatin1Char('.'));
}

/// A part as a number, 0 when it is bad or missing.
inline int plainPart(const QStringList &parts, int index)
{
    return parts.value(index).toInt();
}

/// The numeric address of a text; it wraps at 32 bits.
inline int plainAddress(int area, const QString &text)
{
    const QStringList parts = plainParts(text);
    const auto part = [&parts](int index) { return static_cast<quint32>(plainPart(parts, index)); };
    quint32 address = 0;
    if (area == AREA_X || area == AREA_D)
        address = part(0) * 32 + part(1) * 2 + part(2);
    else if (area == AREA_C)
        address = part(1) * 160 + part(2) * 80 + part(3);
    return static_cast<int>(address);
}

/// Exchanges neighbours until the smallest address is in front, then the next, and so on.
inline void plainSort(QList<RW_VAR> &list)
{
    for (int i = 0; i + 1 < list.size(); ++i) {
        for (int j = list.size() - 1; j > i; --j) {
            if (list.at(j).address < list.at(j - 1).address)
                qSwap(list[j], list[j - 1]);
        }
    }
}

/// The value cache.
struct PlainCache {
    QList<EXTENDVAR> records;

    /// The index of the first record with this key; without one, a new one is appended.
    int find(int station, int area, int address)
    {
        for (int i = 0; i < records.size(); ++i) {
            const EXTENDVAR &record = records.at(i);
            if (record.station == station && record.areaType == area && record.address == address)
                return i;
        }
        records.append(EXTENDVAR{station, area, address, QByteArray(4, '\0')});
        return records.size() - 1;
    }

    /// The value of that record.
    QByteArray &data(int station, int area, int address)
    {
        return records[find(station, area, address)].data;
    }

    /// Stores what both bytes are there for.
    void store(const RW_VAR &var)
    {
        const int size = var.areaType == AREA_D ? 2 : 1;
        for (int i = 0; i < var.count && 2 * i + 1 < var.data.size(); ++i)
            data(var.station, var.areaType, plainSum(var.address, i)) = var.data.mid(2 * i, size);
    }

    /// So many elements of area C, the first byte of each and 0.
    QByteArray elements(int station, int address, int count)
    {
        QByteArray out;
        for (int i = 0; i < count; ++i)
            out.append((data(station, AREA_C, plainSum(address, i)) + '\0').at(0)).append('\0');
        return out;
    }

    /// An address so far behind another; it wraps at 32 bits.
    static int plainSum(int address, int offset)
    {
        return static_cast<int>(static_cast<quint32>(address) + static_cast<quint32>(offset));
    }
};

#endif
