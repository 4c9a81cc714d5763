#include "cache/value_cache.h"

#include "driver/driver_object.h"

#include <unordered_map>

namespace
{

struct Key {
    int station;
    int areaType;
    int address;
};

bool operator==(const Key &left, const Key &right)
{
    return left.station == right.station && left.areaType == right.areaType &&
           left.address == right.address;
}

// Addresses of one area and station lie close together, so the address alone spreads them over
// neighbouring buckets; station and area move it far away.
struct KeyHash {
    size_t operator()(const Key &key) const
    {
        const quint32 group =
            static_cast<quint32>(key.station) * 3 + static_cast<quint32>(key.areaType);
        return static_cast<quint32>(key.address) + group * 0x9E3779B1U;
    }
};

// Where each key was met last. Only a hint: the list may have been changed by others since, so a
// place counts only while the record there still has the key. Guarded like the list itself.
std::unordered_map<Key, int, KeyHash> knownPlaces;

bool isAt(int place, const Key &key)
{
    if (place >= PLC_driver.extendVars.size())
        return false;
    const EXTENDVAR &record = PLC_driver.extendVars.at(place);
    return record.station == key.station && record.areaType == key.areaType &&
           record.address == key.address;
}

int searchFromFront(const Key &key)
{
    int place = 0;
    while (place < PLC_driver.extendVars.size() && !isAt(place, key))
        ++place;
    return place;
}

void appendRecord(const Key &key)
{
    const EXTENDVAR record = {key.station, key.areaType, key.address, QByteArray(4, '\0')};
    PLC_driver.extendVars.append(record);
}

} // namespace

int ExtendFindSameVar(int station, int areaType, int address)
{
    const Key key = {station, areaType, address};
    int &place = knownPlaces[key];
    if (isAt(place, key))
        return place;
    place = searchFromFront(key);
    if (place == PLC_driver.extendVars.size())
        appendRecord(key);
    return place;
}

QByteArray &cachedData(int station, int areaType, int address)
{
    return PLC_driver.extendVars[ExtendFindSameVar(station, areaType, address)].data;
}
