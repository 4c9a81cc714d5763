#include "bench/peers/masters.h"

#include <algorithm>
#include <iterator>

namespace kvt
{

namespace
{

const Master MASTERS[] = {
    {"floor", "bare loop", WireProtocol::Ascii, runFloor},
    {"host", "this host", WireProtocol::Ascii, runHost},
    {"libmodbus", "libmodbus", WireProtocol::ModbusRtu, runLibmodbus},
    {"qt", "QModbusRtuSerialMaster", WireProtocol::ModbusRtu, runQt},
};

} // namespace

const Master *masterNamed(const QString &name)
{
    const Master *const found =
        std::find_if(std::begin(MASTERS), std::end(MASTERS),
                     [&name](const Master &master) { return name == QLatin1String(master.name); });
    return found == std::end(MASTERS) ? nullptr : found;
}

} // namespace kvt
