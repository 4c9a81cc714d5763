#include "apps/kvt/console.h"

#include <cstdio>

#include <unistd.h>

namespace kvt
{

void printOut(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

void printError(const QString &text)
{
    std::fprintf(stderr, "kvt: %s\n", text.toUtf8().constData());
}

bool outputIsTerminal()
{
    return isatty(STDOUT_FILENO) == 1;
}

} // namespace kvt
