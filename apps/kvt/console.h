// Standard output and standard error.
#ifndef KVT_APPS_KVT_CONSOLE_H
#define KVT_APPS_KVT_CONSOLE_H

#include <QJsonObject>
#include <QString>

namespace kvt
{

/// Writes data to standard output, at once. The first text that cannot be written quits the event
/// loop, so that a command that runs on ends. Any thread.
void printOut(const QString &text);

/// True when something could not be written to standard output.
bool outputFailed();

/// Returns the exit status of a command that ended with `exitCode`: EXIT_NO_ANSWER, with a message,
/// if all went well but for standard output.
int checkOutput(int exitCode);

/// Returns an object as one line, with its end.
QString jsonLine(const QJsonObject &object);

/// Writes one line, "kvt: text", to standard error.
void printError(const QString &text);

/// The same for what happens during a run: the time of day stands before the text.
void printEvent(const QString &text);

/// True when standard output is a terminal, so that it can be drawn on.
bool outputIsTerminal();

/// Number of lines that the terminal at standard output has; 24 when it does not say.
int terminalHeight();

/// True when standard error is a terminal.
bool errorIsTerminal();

/// True when standard output may be coloured: it is a terminal, and NO_COLOR is not set.
bool outputTakesColour();

} // namespace kvt

#endif
