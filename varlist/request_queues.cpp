// The queues of one-off requests: writes and one-time reads.
#include "driver/driver_object.h"
#include "driver/entry_points.h"
#include "driver/no_throw.h"
#include "varlist/address_text.h"

#include <QtCore/QMutexLocker>

namespace
{

bool isSameVariable(const RW_VAR &left, const RW_VAR &right)
{
    return left.station == right.station && left.areaType == right.areaType &&
           left.address == right.address && left.count == right.count;
}

bool isSameRequest(const RW_VAR &left, const RW_VAR &right)
{
    return left.ownerId == right.ownerId && left.ownerSubId == right.ownerSubId &&
           isSameVariable(left, right);
}

int append(QList<RW_VAR> &queue, const RW_VAR &var)
{
    queue.append(var);
    return queue.size();
}

int appendWithinLimit(QList<RW_VAR> &queue, const RW_VAR &var)
{
    if (queue.size() < QUEUE_LIMIT)
        queue.append(var);
    return queue.size();
}

// Makes the caller's record what the send cycle and the matching need.
void amendOnceRead(RW_VAR &var, int address)
{
    var.remoteTag = 0;
    var.reserved13 = 0;
    setReadRange(var, address);
    if (PLC_driver.comInfo->purgeByStation == 0)
        var.station = PLC_driver.comInfo->defaultStation;
}

} // namespace

int AddListWriteVar(RW_VAR *var, int mode)
{
    return noThrow([&]() -> int {
        QMutexLocker lock(&PLC_driver.listMutex);
        QList<RW_VAR> &queue = PLC_driver.writeList;
        if (!var)
            return queue.size();
        if (mode == LIST_APPEND)
            return append(queue, *var);
        // Index 0 is left alone: it may be on the line, and what was sent is what gets
        // acknowledged.
        for (int i = 1; i < queue.size(); ++i) {
            if (isSameVariable(queue.at(i), *var)) {
                queue[i] = *var;
                return queue.size();
            }
        }
        return appendWithinLimit(queue, *var);
    });
}

int AddListOnceReadVar(RW_VAR *var, int mode)
{
    return noThrow([&]() -> int {
        QList<RW_VAR> &queue = PLC_driver.onceReadList;
        if (!var || mode == LIST_APPEND) {
            QMutexLocker lock(&PLC_driver.listMutex);
            return var ? append(queue, *var) : queue.size();
        }
        const int address = StringAddressToInt(var->areaType, var->addressText);
        if (address < 0)
            return 0;
        amendOnceRead(*var, address);
        QMutexLocker lock(&PLC_driver.listMutex);
        for (int i = 0; i < queue.size(); ++i) {
            if (isSameRequest(queue.at(i), *var))
                return queue.size();
        }
        return appendWithinLimit(queue, *var);
    });
}
