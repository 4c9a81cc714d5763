// Standard output and standard error.
#ifndef KVT_APPS_KVT_CONSOLE_H
#define KVT_APPS_KVT_CONSOLE_H

#include <QJsonObject>
#include <QString>

namespace kvt
{

/// Writes data to standard output, at once. Characters in it that would steer a terminal are shown
/// as their codes, but for line ends and tabs. The first text that cannot be written quits the
/// event loop, so that a command that runs on ends. Any thread.
void printOut(const QString &text);

/// True when something could not be written to standard output.
bool outputFailed();

/// Returns the exit status of a command that ended with `exitCode`: EXIT_NO_ANSWER, with a message,
/// if all went well but for standard output.
int checkOutput(int exitCode);

/// Returns an object as one line, with its end.
QString jsonLine(const QJsonObject &object);

/// Writes one line, "kvt: text", to standard error. Any thread.
void printError(const QString &text);

/// The same for what happens during a run: the time of day stands before the text.
void printEvent(const QString &text);

/// While it lives, messages are kept, because the terminal is drawn on; at its end they are
/// written. One at a time.
class HeldMessages
{
public:
    HeldMessages();
    ~HeldMessages();
    HeldMessages(const HeldMessages &) = delete;
    HeldMessages &operator=(const HeldMessages &) = delete;

    /// The latest of them; empty while there is none.
    QString latest() const;
};

} // namespace kvt

#endif
