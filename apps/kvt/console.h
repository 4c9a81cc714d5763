// Standard output and standard error.
#ifndef KVT_APPS_KVT_CONSOLE_H
#define KVT_APPS_KVT_CONSOLE_H

#include <QString>

namespace kvt
{

/// Writes data to standard output, at once.
void printOut(const QString &text);

/// Writes one line, "kvt: text", to standard error.
void printError(const QString &text);

/// True when standard output is a terminal, so that it can be drawn on.
bool outputIsTerminal();

} // namespace kvt

#endif
