// The masters of the comparison. Each reads one word again and again until its meter has enough.
#ifndef KVT_BENCH_PEERS_MASTERS_H
#define KVT_BENCH_PEERS_MASTERS_H

#include "bench/peers/meter.h"
#include "bench/peers/wire.h"

#include <QString>

namespace kvt
{

/// What a master is told of its line.
struct MasterLine {
    QString device;
    int baud = 0;       ///< what the master is told, whether the slave keeps to it or not
    bool paced = false; ///< the slave does
};

/// One master. The functions return false, having said why on standard error, when a transaction
/// failed.
struct Master {
    const char *name;
    const char *title; ///< for a table
    WireProtocol protocol;
    bool (*run)(const MasterLine &line, Meter *meter);
};

/// The least that a program can do: write, poll, read, in a loop.
bool runFloor(const MasterLine &line, Meter *meter);

/// This project's host with the driver, loaded as in any host.
bool runHost(const MasterLine &line, Meter *meter);

/// libmodbus, RTU.
bool runLibmodbus(const MasterLine &line, Meter *meter);

/// QModbusRtuSerialMaster of Qt's serial bus module.
bool runQt(const MasterLine &line, Meter *meter);

/// The master of that name, null when there is none.
const Master *masterNamed(const QString &name);

} // namespace kvt

#endif
