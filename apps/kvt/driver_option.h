// Which driver is loaded.
#ifndef KVT_APPS_KVT_DRIVER_OPTION_H
#define KVT_APPS_KVT_DRIVER_OPTION_H

#include "host/driver_library.h"

#include <QCommandLineParser>

namespace kvt
{

/// The option --driver.
QCommandLineOption driverOption();

/// The path that --driver or the place of this program gives.
QString driverPath(const QCommandLineParser &parser);

/// What is loaded without --driver: libKVT.so.1 beside this program, else the system's.
QString defaultDriverPath();

/// Loads the driver, and the first time names the file that it was loaded from, with its version,
/// on standard error. False, with a message, when it cannot be loaded.
bool loadDriver(const QString &path, DriverLibrary *library);

} // namespace kvt

#endif
