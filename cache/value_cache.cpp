#include "cache/value_cache.h"

#include "driver/driver_object.h"

int ExtendFindSameVar(int station, int areaType, int address)
{
    QList<EXTENDVAR> &records = PLC_driver.extendVars;
    for (int i = 0; i < records.size(); ++i) {
        const EXTENDVAR &record = records.at(i);
        if (record.station == station && record.areaType == areaType && record.address == address)
            return i;
    }
    const EXTENDVAR record = {station, areaType, address, QByteArray(4, '\0')};
    records.append(record);
    return records.size() - 1;
}

QByteArray &cachedData(int station, int areaType, int address)
{
    return PLC_driver.extendVars[ExtendFindSameVar(station, areaType, address)].data;
}
