// Standard output and standard error.
#ifndef KVT_APPS_KVT_CONSOLE_H
#define KVT_APPS_KVT_CONSOLE_H

#include <QJsonObject>
#include <QString>

namespace kvt
{

// Both are written on threads of their own, through queues of 1 MiB: a pipe that nobody reads and a
// terminal that was stopped hold nothing else up.

/// Prints data on standard output. Characters in it that would steer a terminal are shown as their
/// codes, but for line ends and tabs. The first text that cannot be written quits the event loop,
/// so that a command that runs on ends. Any thread.
void printOut(const QString &text);

/// True while something that was printed has not been taken.
bool outputIsBusy();

/// True when something could not be written to standard output.
bool outputFailed();

/// Gives what was printed on standard output a moment to be taken. Returns whether all of it was.
bool outputWasTaken();

/// Whether a text that finds the queue full waits for room, as at first, or is dropped and counted,
/// as in a command that has to end within a second of its signal.
void letOutputWait(bool mayWait);

/// Returns how long whoever ends may wait for what is still to be written, in nanoseconds.
qint64 drainTime_ns();

/// Prints a message and makes the exit status EXIT_NO_ANSWER if all went well but for this.
void reportLoss(const QString &text);

/// Waits until all is written, briefly after a signal to stop. Returns the exit status of a command
/// that ended with `exitCode`: EXIT_NO_ANSWER, with a message, if all went well but for its output.
int finishOutput(int exitCode);

/// Returns an object as one line, with its end.
QString jsonLine(const QJsonObject &object);

/// Writes one line, "kvt: text", to standard error. Any thread.
void printError(const QString &text);

/// The same for what happens during a run: the time of day stands before the text.
void printEvent(const QString &text);

/// Writes to standard error as it is, what is drawn on a terminal.
void printProgress(const QString &text);

/// While it lives, messages are kept, because the terminal is drawn on; at its end they are
/// written, the latest hundred of them. One at a time.
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
