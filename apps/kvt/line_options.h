// The options of every sub-command that has a line.
#ifndef KVT_APPS_KVT_LINE_OPTIONS_H
#define KVT_APPS_KVT_LINE_OPTIONS_H

#include "host/poller.h"
#include "host/serial_line.h"
#include "host/tcp_line.h"

#include <QCommandLineParser>

#include <memory>

namespace kvt
{

/// The line to the PLC and how it is used, as the command line says.
struct LineOptions {
    bool isTcp = false;    ///< which of the two lines is meant
    SerialSettings serial; ///< speed and format also count for a line behind a TCP server
    TcpSettings tcp;
    int timeout_ms = 0; ///< from a request's last byte to its reply's first; 0: worked out
    int retries = 2;    ///< further attempts at a request
    ReplyChecking replyChecking = ReplyChecking::Auto;
    int commandRetries = 0;        ///< the same for commands without a value; 0 unless asked for
    bool strict = false;           ///< what is doubtful counts as failed
    bool confirm = false;          ///< each reply is followed by a listening pause
    double checkpointShare = 0.01; ///< of the line's time, for listening pauses
    bool json = false;
    QString driver;         ///< path of libKVT.so.1
    QString trace;          ///< file that records the line; empty: none
    int traceSize_MiB = 64; ///< what is recorded has no more, older records go
};

/// Adds --baud and --format, for commands that need to know the speed of a line but not which.
void addSpeedOptions(QCommandLineParser *parser);

/// True when `baud` is one of the usual speeds; else there is a message.
bool checkUsualSpeed(int baud);

/// Reads them. False, with a message that names the option, when a value is wrong.
bool readSpeedOptions(const QCommandLineParser &parser, SerialSettings *serial);

/// What --help says of the time-out that is taken when none is given.
constexpr char USUAL_TIMEOUT[] = "time of the reply at the line's speed, plus 70";

/// Adds --timeout and --retries. `retries` and `timeout` are their defaults; the latter is only
/// shown.
void addTimingOptions(QCommandLineParser *parser, int retries = 2,
                      const char *timeout = USUAL_TIMEOUT);

/// Reads them; leaves `*timeout_ms` alone when there is no --timeout. False, with a message that
/// names the option, when a value is wrong.
bool readTimingOptions(const QCommandLineParser &parser, int *timeout_ms, int *retries);

/// Splits "HOST:PORT"; brackets around an IPv6 address are taken off. False when it is none.
bool splitHostPort(const QString &text, QString *host, int *port);

/// Adds all options of a line. `retries` and `timeout` as for addTimingOptions.
void addLineOptions(QCommandLineParser *parser, int retries = 2,
                    const char *timeout = USUAL_TIMEOUT);

/// Reads them. False, with a message that names the option, when one is wrong or missing.
bool readLineOptions(const QCommandLineParser &parser, LineOptions *options);

/// Returns the line, not yet opened.
std::unique_ptr<Line> makeLine(const LineOptions &options);

/// Returns the line's name, for messages.
QString lineName(const LineOptions &options);

/// Returns the settings of a poller that follow from the options.
PollerSettings pollerSettings(const LineOptions &options);

} // namespace kvt

#endif
