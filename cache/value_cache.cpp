#include "cache/value_cache.h"

#include <unordered_map>

namespace
{

struct SameKey {
    bool operator()(const CacheKey &left, const CacheKey &right) const
    {
        return left.station == right.station && left.areaType == right.areaType &&
               left.address == right.address;
    }
};

// Addresses of one area and station lie close together, so the address alone spreads them over
// neighbouring buckets; station and area move it far away.
struct KeyHash {
    size_t operator()(const CacheKey &key) const
    {
        const quint32 group =
            static_cast<quint32>(key.station) * 3 + static_cast<quint32>(key.areaType);
        return static_cast<quint32>(key.address) + group * 0x9E3779B1U;
    }
};

// Where the first record with each key is. Only hints: the list may have been changed by others
// since, so a place counts only while the record there has the key. Guarded like the list itself.
std::unordered_map<CacheKey, int, KeyHash, SameKey> knownPlaces;
int knownSize = 0;         // of the list, when the places were learnt
bool keysAreUnique = true; // then
int lastPlace = -1;        // of the record that was looked up last; a hint as well

CacheKey keyAt(int place)
{
    const EXTENDVAR &record = PLC_driver.extendVars.at(place);
    const CacheKey key = {record.station, record.areaType, record.address};
    return key;
}

// From the back, so that of two records with one key the first counts.
void learnAllPlaces()
{
    knownPlaces.clear();
    knownSize = PLC_driver.extendVars.size();
    for (int place = knownSize - 1; place >= 0; --place)
        knownPlaces[keyAt(place)] = place;
    keysAreUnique = knownPlaces.size() == static_cast<size_t>(knownSize);
}

bool isLeft(const EXTENDVAR &record, const CachedRun &run)
{
    const quint32 offset =
        static_cast<quint32>(record.address) - static_cast<quint32>(run.next.address);
    return record.station == run.next.station && record.areaType == run.next.areaType &&
           offset < static_cast<quint32>(run.left);
}

// Searches the list for whatever is left of the run, in case records were changed in place. From
// the back as well.
void learnPlaces(const CachedRun &run)
{
    for (int place = PLC_driver.extendVars.size() - 1; place >= 0; --place) {
        if (isLeft(PLC_driver.extendVars.at(place), run))
            knownPlaces[keyAt(place)] = place;
    }
}

int appendRecord(const CacheKey &key)
{
    const EXTENDVAR record = {key.station, key.areaType, key.address, QByteArray(4, '\0')};
    PLC_driver.extendVars.append(record);
    return knownSize++;
}

} // namespace

CachedRun cachedRun(int station, int areaType, int address, int count)
{
    if (PLC_driver.extendVars.size() != knownSize)
        learnAllPlaces();
    const CachedRun run = {{station, areaType, address}, count, -1, keysAreUnique, false};
    return run;
}

int findNext(CachedRun &run)
{
    int &place = knownPlaces[run.next];
    if (isAt(place, run.next))
        return place;
    if (!run.searched)
        learnPlaces(run);
    // Once is enough: while the walk lasts, nobody else may change the list.
    run.searched = true;
    if (!isAt(place, run.next))
        place = appendRecord(run.next);
    return place;
}

int ExtendFindSameVar(int station, int areaType, int address)
{
    CachedRun run = cachedRun(station, areaType, address, 1);
    // Values are mostly asked for in the order in which they were first met.
    ++lastPlace;
    if (!run.unique || !isAt(lastPlace, run.next))
        lastPlace = findNext(run);
    return lastPlace;
}

QByteArray &cachedData(int station, int areaType, int address)
{
    return PLC_driver.extendVars[ExtendFindSameVar(station, areaType, address)].data;
}
