#include "apps/kvt/console.h"

#include <QJsonDocument>

#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

namespace kvt
{

void printOut(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fflush(stdout);
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
