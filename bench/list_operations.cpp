#include "bench/driver_rig.h"
#include "bench/operations.h"
#include "driver/entry_points.h"

namespace
{

const std::vector<int> QUEUED = {1, 1024};

// Rebuilding is too slow to be repeated often, and always the same.
constexpr int REBUILDS = 1;
constexpr int REPEATS = 200;

Operation rebuildOf(const QList<HOST_VAR> &vars)
{
    resetDriver();
    return [list = vars]() mutable { ReCreatReadVarList(&list); };
}

Operation prepareAscending(int n)
{
    return rebuildOf(variables(AREA_D, n));
}

Operation prepareShuffled(int n)
{
    QList<HOST_VAR> vars = variables(AREA_D, n);
    shuffle(vars);
    return rebuildOf(vars);
}

Operation prepareTenStations(int n)
{
    QList<HOST_VAR> vars = variables(AREA_D, n);
    for (int i = 0; i < n; ++i)
        vars[i].station = static_cast<quint8>(1 + i % 10);
    return rebuildOf(vars);
}

RW_VAR request(int index)
{
    RW_VAR var;
    var.areaType = AREA_D;
    var.address = index;
    var.addressText = addressText(AREA_D, index);
    var.count = 1;
    return var;
}

// A write that repeats the last one queued. The first is never matched: a lone one is joined by
// the repetition, which is taken off again.
Operation prepareAddWrite(int queued)
{
    resetDriver();
    for (int i = 0; i < queued; ++i) {
        RW_VAR var = request(i);
        AddListWriteVar(&var, 1);
    }
    return [var = request(queued - 1), queued]() mutable {
        if (AddListWriteVar(&var, 0) > queued)
            PLC_driver.writeList.removeLast();
    };
}

// A read that repeats the last one queued, so that it is not queued again.
Operation prepareAddOnceRead(int queued)
{
    resetDriver();
    for (int i = 0; i < queued; ++i) {
        RW_VAR var = request(i);
        AddListOnceReadVar(&var, 0);
    }
    return [var = request(queued - 1)]() mutable { AddListOnceReadVar(&var, 0); };
}

} // namespace

std::vector<OperationKind> listOperations()
{
    return {{"rebuildAscending", SIZES, REBUILDS, prepareAscending},
            {"rebuildShuffled", SIZES, REBUILDS, prepareShuffled},
            {"rebuildTenStations", SIZES, REBUILDS, prepareTenStations},
            {"addWrite", QUEUED, REPEATS, prepareAddWrite},
            {"addOnceRead", QUEUED, REPEATS, prepareAddOnceRead}};
}
