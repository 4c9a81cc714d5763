#include "host/driver_library.h"

#include "driver/loaded_version.h"

#include <QFile>
#include <QStringList>

#include <atomic>
#include <cstring>
#include <dlfcn.h>

namespace kvt
{

namespace
{

std::atomic<bool> driverLoaded{false};

template <typename Function>
void resolve(void *handle, const char *name, Function *function, QStringList *missing)
{
    void *const address = dlsym(handle, name);
    if (address == nullptr)
        missing->append(QLatin1String(name));
    static_assert(sizeof address == sizeof *function, "a function is reached by one pointer");
    std::memcpy(function, &address, sizeof address);
}

QStringList resolveAll(void *handle, DriverApi *api)
{
    QStringList missing;
    resolve(handle, "SetComInfo", &api->SetComInfo, &missing);
    resolve(handle, "FlashLocalRegister", &api->FlashLocalRegister, &missing);
    resolve(handle, "RegistCallBackFuncIntf", &api->RegistCallBackFuncIntf, &missing);
    resolve(handle, "QueryFinishFlag", &api->QueryFinishFlag, &missing);
    resolve(handle, "EnCommStation", &api->EnCommStation, &missing);
    resolve(handle, "ComCommunication", &api->ComCommunication, &missing);
    resolve(handle, "DataCom", &api->DataCom, &missing);
    resolve(handle, "PLCAddressChangeIntef", &api->PLCAddressChangeIntef, &missing);
    resolve(handle, "AddListReadVar", &api->AddListReadVar, &missing);
    resolve(handle, "ReCreatReadVarList", &api->ReCreatReadVarList, &missing);
    resolve(handle, "AddListWriteVar", &api->AddListWriteVar, &missing);
    resolve(handle, "AddListOnceReadVar", &api->AddListOnceReadVar, &missing);
    resolve(handle, "GetRegisterData", &api->GetRegisterData, &missing);
    resolve(handle, "SetRegisterData", &api->SetRegisterData, &missing);
    return missing;
}

QString fileAt(const void *address)
{
    Dl_info place = {};
    return dladdr(address, &place) != 0 ? QFile::decodeName(place.dli_fname) : QString();
}

} // namespace

DriverLibrary::~DriverLibrary()
{
    unload();
}

bool DriverLibrary::load(const QString &path, QString *error)
{
    if (driverLoaded.exchange(true)) {
        *error = QStringLiteral("a driver is loaded already; a process can have only one");
        return false;
    }
    handle_ = dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        driverLoaded = false;
        *error = QString::fromLocal8Bit(dlerror()); // NOLINT(concurrency-mt-unsafe): of this thread
        return false;
    }
    const QStringList missing = resolveAll(handle_, &api_);
    if (missing.isEmpty()) {
        const void *const entryPoint = dlsym(handle_, "SetComInfo");
        version_ = kvtLoadedVersion(entryPoint);
        file_ = fileAt(entryPoint);
        return true;
    }
    unload();
    *error = QStringLiteral("%1: not the driver, it lacks %2")
                 .arg(path, missing.join(QLatin1String(", ")));
    return false;
}

QString DriverLibrary::versionText() const
{
    return version_ == 0 ? QStringLiteral("unknown")
                         : QStringLiteral("%1.%2.%3")
                               .arg(version_ / 10000)
                               .arg(version_ / 100 % 100)
                               .arg(version_ % 100);
}

void DriverLibrary::unload()
{
    if (handle_ == nullptr)
        return;
    api_ = DriverApi();
    version_ = 0;
    file_.clear();
    dlclose(handle_);
    handle_ = nullptr;
    driverLoaded = false;
}

} // namespace kvt
