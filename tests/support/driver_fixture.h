// Brings the driver object back to its start values, so that tests do not depend on their order.
#ifndef KVT_TESTS_SUPPORT_DRIVER_FIXTURE_H
#define KVT_TESTS_SUPPORT_DRIVER_FIXTURE_H

#include "driver/driver_object.h"

#include <QMutexLocker>

/// Empties every list and sets every counter of PLC_driver to its start value, clears `info` and
/// makes it the driver's block. Callbacks and host areas are null afterwards.
inline void resetDriver(ComInfo &info)
{
    info = ComInfo();
    PLC_driver.comInfo = &info;
    PLC_driver.readList.clear();
    PLC_driver.writeList.clear();
    PLC_driver.onceReadList.clear();
    PLC_driver.readListWork.clear();
    PLC_driver.pendingFrames.clear();
    PLC_driver.extendVars.clear();
    PLC_driver.disabledStations.clear();
    PLC_driver.onceReadDone = nullptr;
    PLC_driver.ownerNotify = nullptr;
    PLC_driver.reply = RW_VAR();
    PLC_driver.lastKind = KIND_NONE;
    PLC_driver.writeBurst = 0;
    PLC_driver.onceReadBurst = 0;
    PLC_driver.scanCount = 0;
    PLC_driver.errorFlag = 0;
    LB = nullptr;
    LW = nullptr;
    RWI = nullptr;
}

/// Returns the bytes that `hex` spells, blanks ignored.
inline QByteArray bytes(const char *hex)
{
    return QByteArray::fromHex(hex);
}

/// True when `mutex` is free; leaves it as it was.
inline bool isFree(QMutex &mutex)
{
    const bool taken = mutex.tryLock();
    if (taken)
        mutex.unlock();
    return taken;
}

/// Holds the driver's three mutexes: what is called meanwhile hangs if it takes one of them.
class AllLocksHeld
{
public:
    AllLocksHeld() = default;

private:
    QMutexLocker lists_{&PLC_driver.listMutex};
    QMutexLocker stations_{&PLC_driver.stationMutex};
    QMutexLocker areas_{&PLC_driver.areaMutex};
};

#endif
