// The sub-commands of kvt. Each takes the words behind its name, prints data on standard output
// and messages on standard error, and returns an ExitCode.
#ifndef KVT_APPS_KVT_COMMANDS_H
#define KVT_APPS_KVT_COMMANDS_H

#include <QStringList>

namespace kvt
{

int runDemo(const QStringList &arguments);

} // namespace kvt

#endif
