#include "cycle/send_cycle.h"

#include "driver/driver_object.h"
#include "driver/no_throw.h"
#include "protocol/read_frames.h"
#include "protocol/remote_envelope.h"
#include "protocol/write_frames.h"
#include "varlist/read_list.h"

#include <QtCore/QMutexLocker>

namespace
{

// A queue may send this many requests in a row before the next one has its turn.
constexpr int BURST_LIMIT = 5;

void buildRead(const ComInfo &info, RW_VAR &var)
{
    if (info.remoteMode)
        Remote_ReadVar(&var);
    else
        ReadRegister(&var);
}

void buildWrite(const ComInfo &info, RW_VAR &var)
{
    if (info.remoteMode)
        Remote_WriteVar(&var);
    else
        WriteRegister(&var);
}

bool dropDisabledHead(QList<RW_VAR> &queue)
{
    while (!queue.isEmpty() && Ethernetcontains(queue.first().station))
        queue.removeFirst();
    return !queue.isEmpty();
}

void serveWrite(Modbus_RTU_Master &driver)
{
    driver.lastKind = KIND_WRITE;
    if (!dropDisabledHead(driver.writeList))
        return;
    buildWrite(*driver.comInfo, driver.writeList.first());
    ++driver.writeBurst;
}

void serveOnceRead(Modbus_RTU_Master &driver)
{
    driver.lastKind = KIND_ONCE_READ;
    if (!dropDisabledHead(driver.onceReadList))
        return;
    buildRead(*driver.comInfo, driver.onceReadList.first());
    ++driver.onceReadBurst;
}

// Brings an entry whose station is polled to the head; false when there is none, after one full
// turn that leaves the order as it was.
bool rotateToEnabledStation(QList<RW_VAR> &list)
{
    for (int moves = list.size(); moves > 0; --moves) {
        if (!Ethernetcontains(list.at(0).station))
            return true;
        rotateReadList(list);
    }
    return !Ethernetcontains(list.at(0).station);
}

// The queues may send again.
void endBursts(Modbus_RTU_Master &driver)
{
    driver.writeBurst = 0;
    driver.onceReadBurst = 0;
}

void serveCyclicRead(Modbus_RTU_Master &driver)
{
    if (driver.readList.isEmpty()) {
        endBursts(driver);
        driver.comInfo->scanComplete = 1;
        return;
    }
    driver.lastKind = KIND_CYCLIC_READ;
    if (!rotateToEnabledStation(driver.readList))
        return;
    buildRead(*driver.comInfo, driver.readList.first());
    endBursts(driver);
}

} // namespace

bool Ethernetcontains(int station)
{
    QMutexLocker lock(&PLC_driver.stationMutex);
    return PLC_driver.disabledStations.contains(station);
}

Protocol *ComCommunication()
{
    return noThrow([&]() -> Protocol * {
        Modbus_RTU_Master &driver = PLC_driver;
        // A frame is repeated, and a request's further frames follow, without a new choice.
        if (!driver.pendingFrames.isEmpty())
            return &driver.pendingFrames.first();

        QMutexLocker lock(&driver.listMutex);
        if (!driver.writeList.isEmpty() && driver.writeBurst < BURST_LIMIT)
            serveWrite(driver);
        else if (!driver.onceReadList.isEmpty() && driver.onceReadBurst < BURST_LIMIT)
            serveOnceRead(driver);
        else
            serveCyclicRead(driver);
        return driver.pendingFrames.isEmpty() ? nullptr : &driver.pendingFrames.first();
    });
}
