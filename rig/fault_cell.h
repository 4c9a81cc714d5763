// One cell of the fault matrix: a fault, a kind of request, and the settings of the host.
#ifndef KVT_RIG_FAULT_CELL_H
#define KVT_RIG_FAULT_CELL_H

#include "rig/cell_witness.h"
#include "rig/fault_kinds.h"

namespace kvt
{

/// The requests that a fault is committed at.
enum class RequestOfCell {
    ReadX,
    ReadD,
    ReadC,
    OnceRead,
    WriteX,
    WriteD,
    Command,
    RemoteRead,
    RemoteWrite
};
constexpr int REQUESTS_OF_CELL = 9;

/// What a person has chosen.
enum class CellSettings { Default, Confirm, Off, Count, Refuse };
constexpr int CELL_SETTINGS = 5;

/// Which cell.
struct FaultCell {
    int fault = 0; ///< of `faultsOfLine`
    RequestOfCell request = RequestOfCell::ReadD;
    CellSettings settings = CellSettings::Default;
    bool paced = true; ///< a line at 38,400 baud; false: one that hands bytes over at once
};

/// What came out of it.
struct CellResult {
    FaultCell cell;
    int strikes = 0;
    Findings findings;
    QString error; ///< not empty: the cell could not be run
};

/// Returns "read X" and the like, "default" and the like.
QString requestName(RequestOfCell request);
QString settingsName(CellSettings settings);

/// Runs a cell. `driverPath` is that of libKVT.so.1. Equal seeds make equal runs.
CellResult runFaultCell(const FaultCell &cell, const QString &driverPath, quint64 seed);

} // namespace kvt

#endif
