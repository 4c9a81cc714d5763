// When a command that runs on ends.
#ifndef KVT_APPS_KVT_RUN_END_H
#define KVT_APPS_KVT_RUN_END_H

#include <QCommandLineParser>

namespace kvt
{

/// Adds --seconds.
void addSecondsOption(QCommandLineParser *parser);

/// Reads it: 1 to 1000000, or 0 when it is not given. False, with a message that names it, when it
/// is wrong.
bool readSecondsOption(const QCommandLineParser &parser, int *seconds);

/// Quits the event loop. Any thread; nothing happens while there is no application.
void quitEventLoop();

/// Quits it after so many seconds; never if that is 0. In the thread of the event loop.
void quitEventLoopAfter(int seconds);

} // namespace kvt

#endif
