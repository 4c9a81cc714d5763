// The driver as a host sees it: a shared library loaded at run time and its fourteen entry points.
#ifndef KVT_HOST_DRIVER_LIBRARY_H
#define KVT_HOST_DRIVER_LIBRARY_H

#include "driver/entry_points.h"

namespace kvt
{

/// The entry points of a loaded driver, each under its own name.
struct DriverApi {
    decltype(&::SetComInfo) SetComInfo = nullptr;
    decltype(&::FlashLocalRegister) FlashLocalRegister = nullptr;
    decltype(&::RegistCallBackFuncIntf) RegistCallBackFuncIntf = nullptr;
    decltype(&::QueryFinishFlag) QueryFinishFlag = nullptr;
    decltype(&::EnCommStation) EnCommStation = nullptr;
    decltype(&::ComCommunication) ComCommunication = nullptr;
    decltype(&::DataCom) DataCom = nullptr;
    decltype(&::PLCAddressChangeIntef) PLCAddressChangeIntef = nullptr;
    decltype(&::AddListReadVar) AddListReadVar = nullptr;
    decltype(&::ReCreatReadVarList) ReCreatReadVarList = nullptr;
    decltype(&::AddListWriteVar) AddListWriteVar = nullptr;
    decltype(&::AddListOnceReadVar) AddListOnceReadVar = nullptr;
    decltype(&::GetRegisterData) GetRegisterData = nullptr;
    decltype(&::SetRegisterData) SetRegisterData = nullptr;
};

/// Loads the driver and unloads it again. The driver keeps all its state in one object, so a
/// process can have one at a time. Any one thread.
class DriverLibrary
{
public:
    DriverLibrary() = default;
    ~DriverLibrary();
    DriverLibrary(const DriverLibrary &) = delete;
    DriverLibrary &operator=(const DriverLibrary &) = delete;

    /// Loads the library at `path` and resolves its entry points. On failure returns false, sets
    /// `*error` (not null) and leaves nothing loaded: the loader's own reason, every entry point
    /// that is missing, or that a driver is loaded already.
    bool load(const QString &path, QString *error);

    /// Unloads the driver; what `api` returned may not be called any more. Does nothing when none
    /// is loaded.
    void unload();

    bool isLoaded() const { return handle_ != nullptr; }

    /// Version of the loaded driver as KVT_VERSION codes it; 0 when it does not tell.
    int version() const { return version_; }

    /// The same as text: "1.0.0", or "unknown".
    QString versionText() const;

    /// The file that was loaded, as the system's loader names it; empty while none is.
    QString file() const { return file_; }

    /// The entry points; all null until `load` has succeeded.
    const DriverApi &api() const { return api_; }

private:
    void *handle_ = nullptr;
    int version_ = 0;
    QString file_;
    DriverApi api_;
};

} // namespace kvt

#endif
