#include "apps/kvt/console.h"

#include "apps/kvt/exit_codes.h"
#include "apps/kvt/wall_clock.h"

#include <QCoreApplication>
#include <QJsonDocument>

#include <atomic>
#include <cerrno>
#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

namespace kvt
{

namespace
{

std::atomic<int> outputError{0}; // errno of the first text that was lost

}

void printOut(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<size_t>(bytes.size());
    const bool written =
        std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
    int none = 0;
    if (!written && outputError.compare_exchange_strong(none, errno))
        QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                                  Qt::QueuedConnection);
}

bool outputFailed()
{
    return outputError != 0;
}

int checkOutput(int exitCode)
{
    if (!outputFailed())
        return exitCode;
    printError(QStringLiteral("standard output: %1").arg(qt_error_string(outputError)));
    return exitCode == EXIT_GOOD ? EXIT_NO_ANSWER : exitCode;
}

QString jsonLine(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) +
           QLatin1Char('\n');
}

void printError(const QString &text)
{
    std::fprintf(stderr, "kvt: %s\n", text.toUtf8().constData());
}

void printEvent(const QString &text)
{
    printError(isoNow() + QLatin1Char(' ') + text);
}

bool outputIsTerminal()
{
    return isatty(STDOUT_FILENO) == 1;
}

int terminalHeight()
{
    winsize size = {};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0;
    return known ? size.ws_row : 24;
}

bool errorIsTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

bool outputTakesColour()
{
    return outputIsTerminal() && qEnvironmentVariableIsEmpty("NO_COLOR");
}

} // namespace kvt
