// The set-up entry points and the station switch.
#include "driver/driver_object.h"
#include "driver/entry_points.h"

#include <QtCore/QMutexLocker>

void SetComInfo(ComInfo *info) noexcept
{
    if (!info)
        return;
    info->comWord13 = 0;
    PLC_driver.comInfo = info;
    info->comWord10 = 0;
}

int FlashLocalRegister(void *lb, void *lw, void *rwi) noexcept
{
    LB = lb;
    LW = lw;
    RWI = rwi;
    return 396;
}

void RegistCallBackFuncIntf(OnceReadDone onceReadDone, OwnerNotify ownerNotify) noexcept
{
    PLC_driver.onceReadDone = onceReadDone;
    PLC_driver.ownerNotify = ownerNotify;
}

int QueryFinishFlag() noexcept
{
    return 1;
}

void EnCommStation(int station, int mode) noexcept
{
    QMutexLocker lock(&PLC_driver.stationMutex);
    if (station < 0)
        PLC_driver.disabledStations.clear();
    else if (mode == 0)
        PLC_driver.disabledStations.insert(station, 0);
    else if (mode == 1)
        PLC_driver.disabledStations.remove(station);
}
