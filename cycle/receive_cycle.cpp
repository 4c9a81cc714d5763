#include "cycle/receive_cycle.h"

#include "cycle/result_codes.h"
#include "driver/callbacks.h"
#include "driver/driver_object.h"
#include "driver/no_throw.h"
#include "driver/ordered_store.h"
#include "driver/wrapping.h"
#include "protocol/frame_codec.h"
#include "protocol/reply_decoding.h"
#include "varlist/read_list.h"

#include <QtCore/QMutexLocker>

namespace
{

constexpr int ANY_LENGTH = -1;
constexpr int NO_REMOTE_TAG = -1;

// The reasons that stand for a failed attempt on one of the two paths.
struct FailureReasons {
    int badReply;
    int noReply;
    int wrongLength;
};

constexpr FailureReasons LOCAL_FAILURES = {REASON_LOCAL_BAD_REPLY, REASON_LOCAL_NO_REPLY,
                                           REASON_LOCAL_WRONG_LENGTH};
constexpr FailureReasons REMOTE_FAILURES = {REASON_REMOTE_BAD_REPLY, REASON_REMOTE_NO_REPLY,
                                            REASON_REMOTE_WRONG_LENGTH};

struct Judgement {
    int reason; // REASON_SUCCESS, or one of the failures
    bool hasData;
};

// Judges what was received for the first of `frames`.
Judgement judge(const QList<Protocol> &frames, QByteArray *received, int receivedLength,
                const FailureReasons &failures)
{
    if (frames.isEmpty())
        return {failures.badReply, false};
    const int expected = frames.first().expectedReplyLength;
    if (receivedLength == 0 && expected != 0)
        return {failures.noReply, false};
    if (receivedLength != expected && expected != ANY_LENGTH)
        return {failures.wrongLength, false};
    const int check = CheckGetData(received, receivedLength);
    return {check == REPLY_BAD ? failures.badReply : REASON_SUCCESS, check == REPLY_DATA};
}

bool isSuccess(int code)
{
    return code == RESULT_SUCCESS || code == RESULT_REMOTE_SUCCESS;
}

RW_VAR *answer(Modbus_RTU_Master &driver, int result)
{
    QMutexLocker lock(&driver.listMutex);
    driver.reply.result = result;
    return &driver.reply;
}

// Counts the failed attempt; true when the frame has no attempt left.
bool countFailure(ComInfo &info, qint32 &scanCount, quint8 &errorFlag)
{
    const int failures = wrappingSum(info.retryCount, 1);
    storeInOrder(scanCount, 0);
    storeInOrder(errorFlag, 1);
    storeInOrder(info.retryCount, failures);
    storeInOrder(info.scanComplete, 0);
    if (failures <= info.retryLimit)
        return false;
    storeInOrder(info.retryCount, 0);
    return true;
}

// Counts the good reply; true when the request needs no further frame.
bool countReply(ComInfo &info, quint8 &errorFlag, QList<Protocol> &pendingFrames)
{
    storeInOrder(errorFlag, 0);
    pendingFrames.removeFirst();
    const int replies = wrappingSum(info.framesReceived, 1);
    storeInOrder(info.framesReceived, replies);
    return replies >= info.framesExpected;
}

// Every local request counts towards a complete scan, whatever its kind. Locked as a whole: a list
// rebuilt in between would count as scanned though nothing of it has been read.
void countScan(Modbus_RTU_Master &driver)
{
    QMutexLocker lock(&driver.listMutex);
    ComInfo &info = *driver.comInfo;
    if (info.scanComplete != 0)
        return;
    driver.scanCount = wrappingSum(driver.scanCount, 1);
    if (driver.scanCount > driver.readList.size()) {
        storeInOrder(driver.scanCount, 0);
        storeInOrder(info.scanComplete, 1);
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

void retireCyclicRead(QList<RW_VAR> &list, RW_VAR &reply)
{
    if (list.isEmpty())
        return;
    passRetValue(list.first(), reply);
    rotateReadList(list);
}

void retireQueued(QList<RW_VAR> &queue, RW_VAR &reply)
{
    if (queue.isEmpty())
        return;
    passRetValue(queue.first(), reply);
    queue.removeFirst();
}

void retire(Modbus_RTU_Master &driver, bool local)
{
    const QList<RW_VAR> &onceReads = driver.onceReadList;
    switch (driver.lastKind) {
    case KIND_WRITE:
        retireQueued(driver.writeList, driver.reply);
        break;
    case KIND_ONCE_READ:
        if (local && !onceReads.isEmpty() && isLastOfGroup(onceReads))
            reportOnceRead(driver.onceReadDone, driver.comInfo->portTag, onceReads.first(),
                           driver.errorFlag == 0);
        retireQueued(driver.onceReadList, driver.reply);
        break;
    case KIND_CYCLIC_READ:
        retireCyclicRead(driver.readList, driver.reply);
        break;
    default:
        break;
    }
}

// What waits behind a request that failed for good would most likely fail as well.
void purge(QList<RW_VAR> &queue, bool byStation, int station)
{
    if (!byStation)
        queue.clear();
    for (int i = queue.size() - 1; i >= 0; --i) {
        if (queue.at(i).station == station)
            queue.removeAt(i);
    }
}

// Ends the request: its list entry is retired, and a final failure is told and purged.
RW_VAR *finish(Modbus_RTU_Master &driver, int code, bool local)
{
    QMutexLocker lock(&driver.listMutex);
    retire(driver, local);
    if (driver.errorFlag != 0) {
        notifyOwner(driver.ownerNotify, driver.reply.ownerId);
        const bool byStation = driver.comInfo->purgeByStation != 0;
        purge(driver.onceReadList, byStation, driver.reply.station);
        purge(driver.writeList, byStation, driver.reply.station);
    }
    driver.reply.result = code;
    return &driver.reply;
}

} // namespace

int DealDataOfLocalArea(QByteArray *received, int receivedLength)
{
    const Judgement judgement =
        judge(PLC_driver.pendingFrames, received, receivedLength, LOCAL_FAILURES);
    if (judgement.hasData) {
        QMutexLocker lock(&PLC_driver.areaMutex);
        SaveToLocalDataErea(received);
    }
    return GetDriverReturnValue(judgement.reason);
}

int DealDataOfRemoteArea(QByteArray *received, int receivedLength)
{
    const QList<Protocol> &frames = PLC_driver.pendingFrames;
    const Judgement judgement = judge(frames, received, receivedLength, REMOTE_FAILURES);
    if (judgement.reason != REASON_SUCCESS)
        return GetDriverReturnValue(judgement.reason);
    if (frames.first().var.remoteTag != NO_REMOTE_TAG)
        return GetDriverReturnValue(REASON_REMOTE_NOT_STORED);

    // Without the area mutex, unlike the local path.
    SaveToLocalDataErea(received);
    return GetDriverReturnValue(PLC_driver.comInfo->framesReceived == 1 ? REASON_REMOTE_NOT_STORED
                                                                        : REASON_SUCCESS);
}

RW_VAR *DataCom(QByteArray *received, int receivedLength)
{
    return noThrow([&]() -> RW_VAR * {
        Modbus_RTU_Master &driver = PLC_driver;
        driver.reply.result = RESULT_SUCCESS;
        if (driver.pendingFrames.isEmpty())
            return &driver.reply;

        ComInfo &info = *driver.comInfo;
        const bool local = driver.pendingFrames.first().var.plcNo == info.localPlcNo;
        const int code = local ? DealDataOfLocalArea(received, receivedLength)
                               : DealDataOfRemoteArea(received, receivedLength);
        if (!isSuccess(code)) {
            if (!countFailure(info, driver.scanCount, driver.errorFlag))
                return answer(driver, RESULT_RETRY);
            driver.pendingFrames.clear();
            return finish(driver, code, local);
        }
        if (!countReply(info, driver.errorFlag, driver.pendingFrames))
            return answer(driver, code);
        if (local)
            countScan(driver);
        return finish(driver, code, local);
    });
}
