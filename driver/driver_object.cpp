#include "driver/driver_object.h"

#include "driver/record_layout.h"

Modbus_RTU_Master PLC_driver;

void *LB = nullptr;
void *LW = nullptr;
void *RWI = nullptr;

void passRetValue(const RW_VAR &from, RW_VAR &to)
{
    to = from;
    to.data.clear();
}
