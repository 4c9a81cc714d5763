#include "tests/fuzz/support/quiet_console.h"

#include "apps/kvt/console.h"

#include <utility>

namespace
{

QString errors;

} // namespace

QString takePrintedErrors()
{
    return std::exchange(errors, QString());
}

void kvt::printError(const QString &text)
{
    errors += text + QLatin1Char('\n');
}

void kvt::printOut(const QString &) {}
