// The built library as a host sees it: loaded at run time, its entry points found by name.
#ifndef KVT_TESTS_SUPPORT_LOADED_DRIVER_H
#define KVT_TESTS_SUPPORT_LOADED_DRIVER_H

#include "driver/entry_points.h"

#include <dlfcn.h>

/// Loads the library on construction and unloads it on destruction. Entry points that were not
/// found are null.
class LoadedDriver
{
public:
    explicit LoadedDriver(const char *path) : handle(::dlopen(path, RTLD_NOW | RTLD_LOCAL))
    {
        if (!handle)
            return;
        resolve(setComInfo, "SetComInfo");
        resolve(flashLocalRegister, "FlashLocalRegister");
        resolve(registCallBackFuncIntf, "RegistCallBackFuncIntf");
        resolve(queryFinishFlag, "QueryFinishFlag");
        resolve(enCommStation, "EnCommStation");
        resolve(comCommunication, "ComCommunication");
        resolve(dataCom, "DataCom");
        resolve(plcAddressChangeIntef, "PLCAddressChangeIntef");
        resolve(addListReadVar, "AddListReadVar");
        resolve(reCreatReadVarList, "ReCreatReadVarList");
        resolve(addListWriteVar, "AddListWriteVar");
        resolve(addListOnceReadVar, "AddListOnceReadVar");
        resolve(getRegisterData, "GetRegisterData");
        resolve(setRegisterData, "SetRegisterData");
    }
    ~LoadedDriver()
    {
        if (handle)
            ::dlclose(handle);
    }
    LoadedDriver(const LoadedDriver &) = delete;
    LoadedDriver &operator=(const LoadedDriver &) = delete;

    /// True when the library was loaded and all fourteen entry points are there.
    bool isComplete() const { return handle && missing == 0; }

    void *find(const char *name) const { return ::dlsym(handle, name); }

    decltype(&SetComInfo) setComInfo = nullptr;
    decltype(&FlashLocalRegister) flashLocalRegister = nullptr;
    decltype(&RegistCallBackFuncIntf) registCallBackFuncIntf = nullptr;
    decltype(&QueryFinishFlag) queryFinishFlag = nullptr;
    decltype(&EnCommStation) enCommStation = nullptr;
    decltype(&ComCommunication) comCommunication = nullptr;
    decltype(&DataCom) dataCom = nullptr;
    decltype(&PLCAddressChangeIntef) plcAddressChangeIntef = nullptr;
    decltype(&AddListReadVar) addListReadVar = nullptr;
    decltype(&ReCreatReadVarList) reCreatReadVarList = nullptr;
    decltype(&AddListWriteVar) addListWriteVar = nullptr;
    decltype(&AddListOnceReadVar) addListOnceReadVar = nullptr;
    decltype(&GetRegisterData) getRegisterData = nullptr;
    decltype(&SetRegisterData) setRegisterData = nullptr;

private:
    template <typename Function>
    void resolve(Function &function, const char *name)
    {
        function = reinterpret_cast<Function>(find(name));
        if (!function)
            ++missing;
    }

    void *handle;
    int missing = 0;
};

#endif
