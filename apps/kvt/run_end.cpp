#include "apps/kvt/run_end.h"

#include "apps/kvt/options.h"

#include <QCoreApplication>
#include <QTimer>

namespace kvt
{

namespace
{

const QString SECONDS = QStringLiteral("seconds");

constexpr int LONGEST_s = 1000000;

} // namespace

void addSecondsOption(QCommandLineParser *parser)
{
    parser->addOption({SECONDS,
                       QStringLiteral("End after so many seconds, 1 to %1 (default: run until "
                                      "Ctrl-C).")
                           .arg(LONGEST_s),
                       QStringLiteral("N")});
}

bool readSecondsOption(const QCommandLineParser &parser, int *seconds)
{
    *seconds = 0;
    return readNumberIfSet(parser, SECONDS, 1, LONGEST_s, seconds);
}

void quitEventLoop()
{
    if (QCoreApplication::instance() != nullptr)
        QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                                  Qt::QueuedConnection);
}

void quitEventLoopAfter(int seconds)
{
    if (seconds > 0)
        QTimer::singleShot(std::chrono::seconds(seconds), QCoreApplication::instance(),
                           &QCoreApplication::quit);
}

} // namespace kvt
