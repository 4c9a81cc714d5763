#include "cycle/receive_cycle.h"

#include "cycle/result_codes.h"
#include "driver/driver_object.h"
#include "driver/wrapping.h"
#include "protocol/frame_codec.h"
#include "protocol/reply_decoding.h"
#include "varlist/read_list.h"

#include <QtCore/QMutexLocker>

namespace
{

const int ANY_LENGTH = -1;
const int NO_REMOTE_TAG = -1;

// Why the reply's length alone settles the attempt, or REASON_SUCCESS when it is as expected.
int judgeLength(int receivedLength, int noReply, int wrongLength)
{
    const int expected = PLC_driver.pendingFrames.first().expectedReplyLength;
    if (receivedLength == 0 && expected != 0)
        return noReply;
    if (receivedLength != expected && expected != ANY_LENGTH)
        return wrongLength;
    return REASON_SUCCESS;
}

bool isSuccess(int code)
{
    return code == RESULT_SUCCESS || code == RESULT_REMOTE_SUCCESS;
}

RW_VAR *answer(int result)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    PLC_driver.reply.result = result;
    return &PLC_driver.reply;
}

// Counts the failed attempt; true when the frame has no attempt left.
bool countFailure()
{
    ComInfo *const info = PLC_driver.comInfo;
    PLC_driver.scanCount = 0;
    PLC_driver.errorFlag = 1;
    info->retryCount = wrappingSum(info->retryCount, 1);
    info->scanComplete = 0;
    if (info->retryCount <= info->retryLimit)
        return false;
    info->retryCount = 0;
    return true;
}

// Counts the good reply; true when the request needs no further frame.
bool countReply()
{
    ComInfo *const info = PLC_driver.comInfo;
    PLC_driver.errorFlag = 0;
    PLC_driver.pendingFrames.removeFirst();
    info->framesReceived = wrappingSum(info->framesReceived, 1);
    return info->framesReceived >= info->framesExpected;
}

// Every local request counts towards a complete scan, whatever its kind. Locked as a whole: a list
// rebuilt in between would count as scanned though nothing of it has been read.
void countScan()
{
    QMutexLocker lock(&PLC_driver.listMutex);
    if (PLC_driver.comInfo->scanComplete != 0)
        return;
    PLC_driver.scanCount = wrappingSum(PLC_driver.scanCount, 1);
    if (PLC_driver.scanCount > PLC_driver.readList.size()) {
        PLC_driver.scanCount = 0;
        PLC_driver.comInfo->scanComplete = 1;
    }
}

bool isLastOfGroup(const QList<RW_VAR> &queue)
{
    const RW_VAR &head = queue.first();
    for (int i = 1; i < queue.size(); ++i) {
        if (queue.at(i).ownerId == head.ownerId && queue.at(i).ownerSubId == head.ownerSubId)
            return false;
    }
    return true;
}

void reportOnceRead(const RW_VAR &head)
{
    if (PLC_driver.onceReadDone) {
        PLC_driver.onceReadDone(PLC_driver.comInfo->portTag, head.ownerId, head.ownerSubId,
                                PLC_driver.errorFlag ? 2 : 1);
    }
}

void retireWrite()
{
    if (PLC_driver.writeList.isEmpty())
        return;
    passRetValue(PLC_driver.writeList.first(), PLC_driver.reply);
    PLC_driver.writeList.removeFirst();
}

void retireOnceRead(bool local)
{
    if (PLC_driver.onceReadList.isEmpty())
        return;
    if (local && isLastOfGroup(PLC_driver.onceReadList))
        reportOnceRead(PLC_driver.onceReadList.first());
    passRetValue(PLC_driver.onceReadList.first(), PLC_driver.reply);
    PLC_driver.onceReadList.removeFirst();
}

void retireCyclicRead()
{
    if (PLC_driver.readList.isEmpty())
        return;
    passRetValue(PLC_driver.readList.first(), PLC_driver.reply);
    rotateReadList();
}

void retire(bool local)
{
    switch (PLC_driver.lastKind) {
    case KIND_WRITE:
        retireWrite();
        break;
    case KIND_ONCE_READ:
        retireOnceRead(local);
        break;
    case KIND_CYCLIC_READ:
        retireCyclicRead();
        break;
    default:
        break;
    }
}

void removeStation(QList<RW_VAR> &queue, int station)
{
    for (int i = queue.size() - 1; i >= 0; --i) {
        if (queue.at(i).station == station)
            queue.removeAt(i);
    }
}

// What waits behind a request that failed for good would most likely fail as well.
void purgeQueues()
{
    if (PLC_driver.comInfo->purgeByStation == 0) {
        PLC_driver.onceReadList.clear();
        PLC_driver.writeList.clear();
    } else {
        removeStation(PLC_driver.onceReadList, PLC_driver.reply.station);
        removeStation(PLC_driver.writeList, PLC_driver.reply.station);
    }
}

void reportFailure()
{
    if (!PLC_driver.ownerNotify)
        return;
    QList<RW_VAR> unread;
    PLC_driver.ownerNotify(&unread, PLC_driver.reply.ownerId, 1);
}

// Ends the request: its list entry is retired, and a final failure is told and purged.
RW_VAR *finish(int code, bool local)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    retire(local);
    if (PLC_driver.errorFlag != 0) {
        reportFailure();
        purgeQueues();
    }
    PLC_driver.reply.result = code;
    return &PLC_driver.reply;
}

} // namespace

int DealDataOfLocalArea(QByteArray *received, int receivedLength)
{
    if (PLC_driver.pendingFrames.isEmpty())
        return GetDriverReturnValue(REASON_LOCAL_BAD_REPLY);
    const int reason =
        judgeLength(receivedLength, REASON_LOCAL_NO_REPLY, REASON_LOCAL_WRONG_LENGTH);
    if (reason != REASON_SUCCESS)
        return GetDriverReturnValue(reason);

    const int check = CheckGetData(received, receivedLength);
    if (check == REPLY_DATA) {
        QMutexLocker lock(&PLC_driver.areaMutex);
        SaveToLocalDataErea(received);
    } else if (check != REPLY_ACKNOWLEDGE) {
        return GetDriverReturnValue(REASON_LOCAL_BAD_REPLY);
    }
    return GetDriverReturnValue(REASON_SUCCESS);
}

int DealDataOfRemoteArea(QByteArray *received, int receivedLength)
{
    if (PLC_driver.pendingFrames.isEmpty())
        return GetDriverReturnValue(REASON_REMOTE_BAD_REPLY);
    const int reason =
        judgeLength(receivedLength, REASON_REMOTE_NO_REPLY, REASON_REMOTE_WRONG_LENGTH);
    if (reason != REASON_SUCCESS)
        return GetDriverReturnValue(reason);

    const int check = CheckGetData(received, receivedLength);
    if (check != REPLY_DATA && check != REPLY_ACKNOWLEDGE)
        return GetDriverReturnValue(REASON_REMOTE_BAD_REPLY);
    if (PLC_driver.pendingFrames.first().var.remoteTag != NO_REMOTE_TAG)
        return GetDriverReturnValue(REASON_REMOTE_NOT_STORED);

    // Without the area mutex, unlike the local path.
    SaveToLocalDataErea(received);
    return GetDriverReturnValue(PLC_driver.comInfo->framesReceived == 1 ? REASON_REMOTE_NOT_STORED
                                                                        : REASON_SUCCESS);
}

RW_VAR *DataCom(QByteArray *received, int receivedLength) noexcept
{
    PLC_driver.reply.result = RESULT_SUCCESS;
    if (PLC_driver.pendingFrames.isEmpty())
        return &PLC_driver.reply;

    const bool local = PLC_driver.pendingFrames.first().var.plcNo == PLC_driver.comInfo->localPlcNo;
    const int code = local ? DealDataOfLocalArea(received, receivedLength)
                           : DealDataOfRemoteArea(received, receivedLength);
    if (!isSuccess(code)) {
        if (!countFailure())
            return answer(0);
        PLC_driver.pendingFrames.clear();
        return finish(code, local);
    }
    if (!countReply())
        return answer(code);
    if (local)
        countScan();
    return finish(code, local);
}
