// The value cache: every value read from the PLC or written by the host, one record per element.
//
// Nothing here takes a lock: the caller holds the area mutex for as long as it uses an index, a
// reference or a walk. Only what meets nothing but records that exist may go without; it changes
// no state that another look-up uses. Whoever edits `extendVars` itself keeps every key unique.
#ifndef KVT_CACHE_VALUE_CACHE_H
#define KVT_CACHE_VALUE_CACHE_H

#include "cache/place_table.h"
#include "driver/driver_object.h"
#include "driver/wrapping.h"

/// Returns the index in `extendVars` of the first record with this key; without one, a record of
/// four zero bytes is appended first.
Q_DECL_EXPORT int ExtendFindSameVar(int station, int areaType, int address);

/// Returns the value bytes of that record.
QByteArray &cachedData(int station, int areaType, int address);

/// A walk along records of rising address; made by cachedRun, moved on by nextData.
struct CachedRun {
    CacheKey next; ///< key of the next record
    int left;      ///< records still to come
    int place;     ///< index of the record before, -1 in front of the first
    bool searched; ///< whatever the list holds of the rest is known; nobody else may change it
};

/// Returns a walk along `count` records from `address` on.
CachedRun cachedRun(int station, int areaType, int address, int count);

/// Returns the index of the walk's next record, appended if there is none; does not move on.
int findNext(CachedRun &run);

/// Moves on and returns the value bytes of the record reached, found or appended as
/// ExtendFindSameVar does; to be called `count` times at most. However many of the records are new,
/// a walk searches the list once.
inline QByteArray &nextData(CachedRun &run)
{
    // Records made by one walk lie next to each other.
    ++run.place;
    if (!isAt(PLC_driver.extendVars, run.place, run.next))
        run.place = findNext(run);
    run.next.address = wrappingSum(run.next.address, 1);
    --run.left;
    return PLC_driver.extendVars[run.place].data;
}

#endif
