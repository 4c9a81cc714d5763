// The value cache: every value read from the PLC or written by the host, one record per element.
//
// Nothing here takes a lock: the caller holds the area mutex for as long as it uses an index, a
// reference or a walk.
#ifndef KVT_CACHE_VALUE_CACHE_H
#define KVT_CACHE_VALUE_CACHE_H

#include "driver/driver_object.h"
#include "driver/wrapping.h"

/// Returns the index in `extendVars` of the first record with this key; without one, a record of
/// four zero bytes is appended first.
Q_DECL_EXPORT int ExtendFindSameVar(int station, int areaType, int address);

/// Returns the value bytes of that record.
QByteArray &cachedData(int station, int areaType, int address);

/// What tells one record from another.
struct CacheKey {
    int station;
    int areaType;
    int address;
};

/// A walk along records of rising address; made by cachedRun, moved on by nextData.
struct CachedRun {
    CacheKey next; ///< key of the next record
    int left;      ///< records still to come
    int place;     ///< index of the record before, -1 in front of the first
    bool unique;   ///< no two records have the same key
    bool searched; ///< the list has been searched for all that is left
};

/// Returns a walk along `count` records from `address` on.
CachedRun cachedRun(int station, int areaType, int address, int count);

/// Returns the index of the walk's next record, appended if there is none; does not move on.
int findNext(CachedRun &run);

/// True when the record at index `place`, not negative, exists and has this key.
inline bool isAt(int place, const CacheKey &key)
{
    if (place >= PLC_driver.extendVars.size())
        return false;
    const EXTENDVAR &record = PLC_driver.extendVars.at(place);
    return record.station == key.station && record.areaType == key.areaType &&
           record.address == key.address;
}

/// Moves on and returns the value bytes of the record reached, found or appended as
/// ExtendFindSameVar does; to be called `count` times at most. However many of the records are new,
/// a walk searches the list once.
inline QByteArray &nextData(CachedRun &run)
{
    // Records made by one walk lie next to each other.
    ++run.place;
    if (!run.unique || !isAt(run.place, run.next))
        run.place = findNext(run);
    run.next.address = wrappingSum(run.next.address, 1);
    --run.left;
    return PLC_driver.extendVars[run.place].data;
}

#endif
