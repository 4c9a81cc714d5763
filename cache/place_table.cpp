#include "cache/place_table.h"

void PlaceTable::add(const QList<EXTENDVAR> &records)
{
    if (known + 1 != records.size() || records.size() > table.size() / 2) {
        learn(records);
        return;
    }
    put(records, records.size() - 1);
    ++known;
}

void PlaceTable::put(const QList<EXTENDVAR> &records, int place)
{
    const EXTENDVAR &record = records.at(place);
    const CacheKey key = {record.station, record.areaType, record.address};
    quint32 slot = home(key);
    while (table.at(static_cast<int>(slot)) != FREE)
        slot = next(slot);
    table[static_cast<int>(slot)] = place;
}

// Afresh, because the list has outgrown the table or was changed by others. Leaves room for as many
// records again.
void PlaceTable::learn(const QList<EXTENDVAR> &records)
{
    known = records.size();
    bits = FIRST_BITS;
    while ((1 << bits) / 4 < known)
        ++bits;
    table.fill(FREE, 1 << bits);
    for (int place = 0; place < known; ++place)
        put(records, place);
}
