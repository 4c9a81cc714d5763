// The set-up entry points and the station switch.
#include "driver/driver_object.h"
#include "driver/entry_points.h"
#include "driver/no_throw.h"
#include "driver/ordered_store.h"

#include <QtCore/QMutexLocker>

namespace
{

// Agreed between hosts and driver from the first; neither makes anything of it.
constexpr int LOCAL_REGISTER_ANSWER = 396;

} // namespace

void SetComInfo(ComInfo *info)
{
    if (!info)
        return;
    storeInOrder(info->comWord13, 0);
    storeInOrder(PLC_driver.comInfo, info);
    storeInOrder(info->comWord10, 0);
}

int FlashLocalRegister(void *lb, void *lw, void *rwi)
{
    LB = lb;
    LW = lw;
    RWI = rwi;
    return LOCAL_REGISTER_ANSWER;
}

void RegistCallBackFuncIntf(OnceReadDone onceReadDone, OwnerNotify ownerNotify)
{
    PLC_driver.onceReadDone = onceReadDone;
    PLC_driver.ownerNotify = ownerNotify;
}

int QueryFinishFlag()
{
    return 1;
}

void EnCommStation(int station, int mode)
{
    noThrow([&] {
        QMutexLocker lock(&PLC_driver.stationMutex);
        if (station < 0)
            PLC_driver.disabledStations.clear();
        else if (mode == 1)
            PLC_driver.disabledStations.remove(station);
        else if (mode == 0 && !PLC_driver.disabledStations.contains(station))
            PLC_driver.disabledStations.insert(station, 0);
    });
}
