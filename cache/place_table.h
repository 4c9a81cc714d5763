// Where the records of the value cache are. Internal to the cache.
#ifndef KVT_CACHE_PLACE_TABLE_H
#define KVT_CACHE_PLACE_TABLE_H

#include "driver/records.h"

#include <QtCore/QList>
#include <QtCore/QVector>

/// What tells one record from another.
struct CacheKey {
    int station;
    int areaType;
    int address;
};

/// True when `records` has a record at index `place`, not negative, and that has this key.
inline bool isAt(const QList<EXTENDVAR> &records, int place, const CacheKey &key)
{
    if (place >= records.size())
        return false;
    const EXTENDVAR &record = records.at(place);
    return record.station == key.station && record.areaType == key.areaType &&
           record.address == key.address;
}

/// A hash table of the indices of records; the keys stay in the records. A record that others have
/// moved or changed since is not found, and never taken for another. `find` changes nothing, so
/// that any number of threads may look up at once; `add` and `learn` need all others kept out.
class PlaceTable
{
public:
    /// Returns the index in `records` of the record with this key, -1 when the table knows none.
    int find(const QList<EXTENDVAR> &records, const CacheKey &key) const
    {
        for (quint32 slot = home(key);; slot = next(slot)) {
            const int place = table.at(static_cast<int>(slot));
            if (place == FREE || isAt(records, place, key))
                return place;
        }
    }

    /// Adds the last of `records`; of the others the table knows, or learns, where they are.
    void add(const QList<EXTENDVAR> &records);

private:
    enum { FREE = -1 }; // has no address, which a container would otherwise ask for
    static constexpr int FIRST_BITS = 6;

    // Multiplication by a prime close to 2^32 divided by the golden ratio spreads runs of
    // neighbouring keys evenly (Knuth, The Art of Computer Programming 3, 6.4).
    quint32 home(const CacheKey &key) const
    {
        const quint32 factor = 0x9E3779B1U;
        const quint32 group =
            static_cast<quint32>(key.station) * 3 + static_cast<quint32>(key.areaType);
        return (group * factor + static_cast<quint32>(key.address)) * factor >> (32 - bits);
    }

    quint32 next(quint32 slot) const { return (slot + 1) & ((1U << bits) - 1); }
    void put(const QList<EXTENDVAR> &records, int place);
    void learn(const QList<EXTENDVAR> &records);

    int bits = FIRST_BITS;                                    // of a slot's number
    QVector<int> table = QVector<int>(1 << FIRST_BITS, FREE); // at most half of it taken
    int known = 0;                                            // records put in
};

#endif
