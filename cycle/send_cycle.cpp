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
const int BURST_LIMIT = 5;

void buildRead(RW_VAR *var)
{
    if (PLC_driver.comInfo->remoteMode)
        Remote_ReadVar(var);
    else
        ReadRegister(var);
}

void buildWrite(RW_VAR *var)
{
    if (PLC_driver.comInfo->remoteMode)
        Remote_WriteVar(var);
    else
        WriteRegister(var);
}

bool dropDisabledHead(QList<RW_VAR> &queue)
{
    while (!queue.isEmpty() && Ethernetcontains(queue.first().station))
        queue.removeFirst();
    return !queue.isEmpty();
}

void serveWrite()
{
    PLC_driver.lastKind = KIND_WRITE;
    if (!dropDisabledHead(PLC_driver.writeList))
        return;
    buildWrite(&PLC_driver.writeList.first());
    ++PLC_driver.writeBurst;
}

void serveOnceRead()
{
    PLC_driver.lastKind = KIND_ONCE_READ;
    if (!dropDisabledHead(PLC_driver.onceReadList))
        return;
    buildRead(&PLC_driver.onceReadList.first());
    ++PLC_driver.onceReadBurst;
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

void serveCyclicRead()
{
    if (PLC_driver.readList.isEmpty()) {
        PLC_driver.writeBurst = 0;
        PLC_driver.onceReadBurst = 0;
        PLC_driver.comInfo->scanComplete = 1;
        return;
    }
    PLC_driver.lastKind = KIND_CYCLIC_READ;
    if (!rotateToEnabledStation(PLC_driver.readList))
        return;
    buildRead(&PLC_driver.readList.first());
    PLC_driver.writeBurst = 0;
    PLC_driver.onceReadBurst = 0;
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
        // A frame is repeated, and a request's further frames follow, without a new choice.
        if (!PLC_driver.pendingFrames.isEmpty())
            return &PLC_driver.pendingFrames.first();

        QMutexLocker lock(&PLC_driver.listMutex);
        if (!PLC_driver.writeList.isEmpty() && PLC_driver.writeBurst < BURST_LIMIT)
            serveWrite();
        else if (!PLC_driver.onceReadList.isEmpty() && PLC_driver.onceReadBurst < BURST_LIMIT)
            serveOnceRead();
        else
            serveCyclicRead();
        return PLC_driver.pendingFrames.isEmpty() ? nullptr : &PLC_driver.pendingFrames.first();
    });
}
