// The sub-commands of kvt. Each takes the words behind its name, prints data on standard output
// and messages on standard error, and returns an ExitCode.
#ifndef KVT_APPS_KVT_COMMANDS_H
#define KVT_APPS_KVT_COMMANDS_H

#include <QStringList>

namespace kvt
{

int runDecode(const QStringList &arguments);
int runDemo(const QStringList &arguments);
int runExplain(const QStringList &arguments);
int runPlan(const QStringList &arguments);
int runPoll(const QStringList &arguments);
int runRead(const QStringList &arguments);
int runReplay(const QStringList &arguments);
int runScan(const QStringList &arguments);
int runSim(const QStringList &arguments);
int runTags(const QStringList &arguments);
int runTune(const QStringList &arguments);
int runWrite(const QStringList &arguments);

} // namespace kvt

#endif
