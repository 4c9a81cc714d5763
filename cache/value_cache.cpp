#include "cache/value_cache.h"

namespace
{

// Changes only when a record is appended, which nobody may do beside another's look-up. What is
// stored without the area mutex goes to records that exist, and is found without a change here.
PlaceTable places;

bool isLeft(const EXTENDVAR &record, const CachedRun &run)
{
    const quint32 offset =
        static_cast<quint32>(record.address) - static_cast<quint32>(run.next.address);
    return record.station == run.next.station && record.areaType == run.next.areaType &&
           offset < static_cast<quint32>(run.left);
}

// Searches the list from the front for the next record, in case it was put there by others.
// Unless there are more of the run that the table does not know, the walk need not search again.
int search(CachedRun &run)
{
    const QList<EXTENDVAR> &records = PLC_driver.extendVars;
    run.searched = true;
    for (int place = 0; place < records.size(); ++place) {
        const EXTENDVAR &record = records.at(place);
        if (!isLeft(record, run))
            continue;
        const CacheKey key = {record.station, record.areaType, record.address};
        if (places.find(records, key) == place)
            continue;
        run.searched = false;
        if (key.address == run.next.address)
            return place;
    }
    return -1;
}

int appendRecord(const CacheKey &key)
{
    const EXTENDVAR record = {key.station, key.areaType, key.address, QByteArray(4, '\0')};
    PLC_driver.extendVars.append(record);
    places.add(PLC_driver.extendVars);
    return PLC_driver.extendVars.size() - 1;
}

} // namespace

CachedRun cachedRun(int station, int areaType, int address, int count)
{
    const CachedRun run = {{station, areaType, address}, count, -1, false};
    return run;
}

int findNext(CachedRun &run)
{
    int place = places.find(PLC_driver.extendVars, run.next);
    if (place < 0 && !run.searched)
        place = search(run);
    return place < 0 ? appendRecord(run.next) : place;
}

int ExtendFindSameVar(int station, int areaType, int address)
{
    CachedRun run = cachedRun(station, areaType, address, 1);
    return findNext(run);
}

QByteArray &cachedData(int station, int areaType, int address)
{
    return PLC_driver.extendVars[ExtendFindSameVar(station, areaType, address)].data;
}
