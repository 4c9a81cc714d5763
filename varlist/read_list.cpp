#include "varlist/read_list.h"

#include "driver/driver_object.h"
#include "driver/no_throw.h"
#include "varlist/address_text.h"

#include <QtCore/QMap>
#include <QtCore/QMutexLocker>

#include <algorithm>

namespace
{

// 255 and not 256: station 255 of an area and station 0 of the next form one group.
constexpr int GROUP_STRIDE = 255;

// Moving the entry itself costs as much as moving the pointers to so many entries.
constexpr int SHORT_LIST = 256;

RW_VAR entryTemplate()
{
    RW_VAR entry;
    entry.ownerSubId = -1;
    entry.rwKind = RW_READ;
    entry.reserved3 = PLC_driver.comInfo->remoteMode;
    entry.plcNo = PLC_driver.comInfo->localPlcNo;
    return entry;
}

void fillEntry(RW_VAR &entry, const HOST_VAR &hostVar, int address)
{
    entry.name = hostVar.name;
    entry.addressText = hostVar.addressText;
    entry.areaType = hostVar.areaType;
    entry.station = hostVar.station;
    setReadRange(entry, address);
}

bool lowerAddress(const RW_VAR &left, const RW_VAR &right)
{
    return left.address < right.address;
}

} // namespace

int AddListReadVar(RW_VAR *var)
{
    return noThrow([&]() -> int {
        if (var)
            PLC_driver.readList.append(*var);
        return PLC_driver.readList.size();
    });
}

int Add_AddListReadVar(QList<RW_VAR> *group)
{
    if (group->isEmpty())
        return -1;
    int lastAddress = -1;
    for (int i = 0; i < group->size(); ++i) {
        RW_VAR &entry = (*group)[i];
        if (entry.address == lastAddress)
            continue;
        AddListReadVar(&entry);
        lastAddress = entry.address;
    }
    return 1;
}

void Bubble_Sort(QList<RW_VAR> *list)
{
    std::stable_sort(list->begin(), list->end(), lowerAddress);
}

void rotateReadList(QList<RW_VAR> &list)
{
    if (list.size() <= SHORT_LIST)
        list.move(0, list.size() - 1);
    else
        list.append(list.takeFirst());
}

int ReCreatReadVarList(QList<HOST_VAR> *hostVars)
{
    return noThrow([&]() -> int {
        QMutexLocker lock(&PLC_driver.listMutex);
        PLC_driver.readList.clear();
        if (!hostVars || hostVars->isEmpty())
            return 0;

        PLC_driver.scanCount = 0;
        PLC_driver.comInfo->scanComplete = 0;
        RW_VAR entry = entryTemplate();
        QMap<int, QList<RW_VAR>> groups; // newest first
        QList<int> keys;                 // in the order first met
        for (int i = 0; i < hostVars->size(); ++i) {
            const HOST_VAR &hostVar = hostVars->at(i);
            const int address = StringAddressToInt(hostVar.areaType, hostVar.addressText);
            if (address < 0)
                continue;
            fillEntry(entry, hostVar, address);
            const int key = entry.areaType * GROUP_STRIDE + entry.station;
            QList<RW_VAR> &group = groups[key];
            if (group.isEmpty())
                keys.append(key);
            group.prepend(entry);
        }
        for (int i = 0; i < keys.size(); ++i) {
            QList<RW_VAR> &group = groups[keys.at(i)];
            Bubble_Sort(&group);
            Add_AddListReadVar(&group);
        }
        return PLC_driver.readList.size();
    });
}

int WhetherGroup(int current, int limit, RW_VAR *var, QList<RW_VAR> *group)
{
    Q_UNUSED(limit);
    Q_UNUSED(var);
    Q_UNUSED(group);
    return current;
}

int BitVarReCreat(QList<RW_VAR> *list, int first, int last)
{
    Q_UNUSED(list);
    Q_UNUSED(first);
    Q_UNUSED(last);
    return 0;
}

int WordVarReCreat(QList<RW_VAR> *list, int first, int last)
{
    Q_UNUSED(list);
    Q_UNUSED(first);
    Q_UNUSED(last);
    return 0;
}
