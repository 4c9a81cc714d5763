#include "apps/kvt/driver_option.h"

#include "apps/kvt/console.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <utility>

namespace kvt
{

QCommandLineOption driverOption()
{
    return {QStringLiteral("driver"),
            QStringLiteral("The driver to load; a name without / is looked for where the system "
                           "finds libraries, not in this folder (default: libKVT.so.1 beside this "
                           "program, else where the system finds it)."),
            QStringLiteral("PATH")};
}

QString driverPath(const QCommandLineParser &parser)
{
    if (parser.isSet(QStringLiteral("driver")))
        return parser.value(QStringLiteral("driver"));
    return defaultDriverPath();
}

QString defaultDriverPath()
{
    const QString name = QStringLiteral("libKVT.so.1");
    const QString beside =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/") + name;
    return QFileInfo::exists(beside) ? QDir::cleanPath(beside) : name;
}

bool loadDriver(const QString &path, DriverLibrary *library)
{
    QString error;
    if (library->load(path, &error)) {
        // Worth a message, but not one for each line of many that is opened.
        static bool named = false;
        if (!std::exchange(named, true))
            printError(QStringLiteral("driver %1, version %2")
                           .arg(library->file(), library->versionText()));
        return true;
    }
    if (!path.contains(QLatin1Char('/')) && QFileInfo::exists(path))
        error += QStringLiteral("; the file in this folder is ./%1").arg(path);
    printError(QStringLiteral("--driver: %1").arg(error));
    return false;
}

} // namespace kvt
