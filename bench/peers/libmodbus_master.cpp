#include "bench/peers/masters.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <modbus.h>

namespace kvt
{

bool runLibmodbus(const MasterLine &line, Meter *meter)
{
    const QByteArray device = line.device.toLocal8Bit();
    const std::unique_ptr<modbus_t, decltype(&modbus_free)> bus(
        modbus_new_rtu(device.constData(), line.baud, 'N', 8, 1), modbus_free);
    if (!bus || modbus_set_slave(bus.get(), 1) != 0 || modbus_connect(bus.get()) != 0) {
        std::fprintf(stderr, "libmodbus: %s\n", modbus_strerror(errno));
        return false;
    }
    std::uint16_t value = 0;
    do {
        if (modbus_read_registers(bus.get(), 0, 1, &value) != 1) {
            std::fprintf(stderr, "libmodbus: %s\n", modbus_strerror(errno));
            return false;
        }
    } while (meter->transactionEnded(value));
    modbus_close(bus.get());
    return true;
}

} // namespace kvt
