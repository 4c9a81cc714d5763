// The driver linked into the process, for targets that run it a million times.
#ifndef KVT_TESTS_FUZZ_SUPPORT_LINKED_DRIVER_H
#define KVT_TESTS_FUZZ_SUPPORT_LINKED_DRIVER_H

#include "host/driver_library.h"
#include "tests/fuzz/support/fuzz_input.h"
#include "tests/support/driver_fixture.h"

/// The entry points as a host would have them from a library that it has loaded.
inline kvt::DriverApi linkedDriver()
{
    kvt::DriverApi api;
    api.SetComInfo = ::SetComInfo;
    api.FlashLocalRegister = ::FlashLocalRegister;
    api.RegistCallBackFuncIntf = ::RegistCallBackFuncIntf;
    api.QueryFinishFlag = ::QueryFinishFlag;
    api.EnCommStation = ::EnCommStation;
    api.ComCommunication = ::ComCommunication;
    api.DataCom = ::DataCom;
    api.PLCAddressChangeIntef = ::PLCAddressChangeIntef;
    api.AddListReadVar = ::AddListReadVar;
    api.ReCreatReadVarList = ::ReCreatReadVarList;
    api.AddListWriteVar = ::AddListWriteVar;
    api.AddListOnceReadVar = ::AddListOnceReadVar;
    api.GetRegisterData = ::GetRegisterData;
    api.SetRegisterData = ::SetRegisterData;
    return api;
}

/// Runs a target's `Run` over its input, with the driver as it is when it has just been loaded.
template <typename Run>
int runAfresh(const uint8_t *data, size_t size)
{
    static ComInfo ofNobody;
    resetDriver(ofNobody);
    FuzzInput input(data, size);
    Run(&input).run();
    return 0;
}

#endif
