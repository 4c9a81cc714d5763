#include "apps/kvt/line_options.h"

#include "apps/kvt/character_format.h"
#include "apps/kvt/console.h"
#include "apps/kvt/driver_option.h"
#include "apps/kvt/options.h"

namespace kvt
{

namespace
{

const QString SERIAL = QStringLiteral("serial");
const QString TCP = QStringLiteral("tcp");
const QString BAUD = QStringLiteral("baud");
const QString TIMEOUT = QStringLiteral("timeout");
const QString RETRIES = QStringLiteral("retries");
const QString REPLY_CHECK = QStringLiteral("reply-check");
const QString JSON = QStringLiteral("json");
const QString CHECKPOINTS = QStringLiteral("checkpoints");
const QString CONFIRM = QStringLiteral("confirm");
const QString STRICT = QStringLiteral("strict");
const QString TRACE = QStringLiteral("trace");
const QString TRACE_SIZE = QStringLiteral("trace-size");

constexpr int LONGEST_TIMEOUT_ms = 60000;
constexpr int MOST_RETRIES = 100;

bool readSerial(const QCommandLineParser &parser, LineOptions *options)
{
    options->serial.path = parser.value(SERIAL);
    const QString error = options->serial.error();
    if (!error.isEmpty())
        printError(QStringLiteral("--serial: %1").arg(error));
    return error.isEmpty();
}

bool readTcp(const QCommandLineParser &parser, LineOptions *options)
{
    options->isTcp = true;
    if (!splitHostPort(parser.value(TCP), &options->tcp.host, &options->tcp.port) ||
        options->tcp.port == 0) {
        printError(QStringLiteral("--tcp: \"%1\" is not HOST:PORT with a port from 1 to 65535")
                       .arg(parser.value(TCP)));
        return false;
    }
    // The speed of the line behind the server is known only if it is told.
    if (parser.isSet(BAUD))
        options->tcp.characterTime_ns = options->serial.characterTime_ns();
    return true;
}

bool readReplyCheck(const QCommandLineParser &parser, LineOptions *options)
{
    // In the order of ReplyChecking.
    const QStringList words = {QStringLiteral("off"), QStringLiteral("count"),
                               QStringLiteral("auto"), QStringLiteral("refuse")};
    const int found = words.indexOf(parser.value(REPLY_CHECK));
    if (found < 0)
        printError(QStringLiteral("--reply-check: \"%1\" is not off, count, auto or refuse")
                       .arg(parser.value(REPLY_CHECK)));
    else
        options->replyChecking = static_cast<ReplyChecking>(found);
    return found >= 0;
}

bool readProofOptions(const QCommandLineParser &parser, LineOptions *options)
{
    int percent = 0;
    if (!readNumber(parser, CHECKPOINTS, 0, 50, &percent))
        return false;
    options->checkpointShare = percent / 100.0;
    options->confirm = parser.isSet(CONFIRM);
    options->strict = parser.isSet(STRICT);
    if (options->confirm && percent == 0)
        printError(QStringLiteral("--confirm: nothing can be confirmed with --checkpoints 0"));
    return !options->confirm || percent > 0;
}

} // namespace

void addSpeedOptions(QCommandLineParser *parser)
{
    parser->addOption({BAUD,
                       QStringLiteral("Speed in bits per second, one of the usual speeds from "
                                      "1200 to 4000000 (default: 9600)."),
                       QStringLiteral("N"), QStringLiteral("9600")});
    addFormatOption(parser);
}

bool checkUsualSpeed(int baud)
{
    SerialSettings speed;
    speed.path = QStringLiteral("-"); // only the speed is looked at here
    speed.baud = baud;
    if (!speed.error().isEmpty())
        printError(QStringLiteral("--baud: %1").arg(speed.error()));
    return speed.error().isEmpty();
}

bool readSpeedOptions(const QCommandLineParser &parser, SerialSettings *serial)
{
    if (!readNumber(parser, BAUD, 1200, 4000000, &serial->baud))
        return false;
    if (!checkUsualSpeed(serial->baud))
        return false;
    CharacterFormat format;
    if (!readFormatOption(parser, &format))
        return false;
    format.copyTo(serial);
    return true;
}

void addTimingOptions(QCommandLineParser *parser, int retries, const char *timeout)
{
    parser->addOption({TIMEOUT,
                       QStringLiteral("Longest wait for a reply to begin, in milliseconds, 1 to "
                                      "60000 (default: %1).")
                           .arg(QLatin1String(timeout)),
                       QStringLiteral("MS")});
    parser->addOption(
        {RETRIES,
         QStringLiteral("Further attempts at a request that failed or was refused, 0 to 100 "
                        "(default: %1).")
             .arg(retries),
         QStringLiteral("N"), QString::number(retries)});
}

bool readTimingOptions(const QCommandLineParser &parser, int *timeout_ms, int *retries)
{
    return readNumberIfSet(parser, TIMEOUT, 1, LONGEST_TIMEOUT_ms, timeout_ms) &&
           readNumber(parser, RETRIES, 0, MOST_RETRIES, retries);
}

bool splitHostPort(const QString &text, QString *host, int *port)
{
    const int colon = text.lastIndexOf(QLatin1Char(':'));
    bool isNumber = false;
    *port = text.mid(colon + 1).toUShort(&isNumber);
    *host = text.left(qMax(colon, 0));
    if (host->startsWith(QLatin1Char('[')) && host->endsWith(QLatin1Char(']')))
        *host = host->mid(1, host->size() - 2);
    return isNumber && !host->isEmpty();
}

void addLineOptions(QCommandLineParser *parser, int retries, const char *timeout)
{
    parser->addOption({SERIAL,
                       QStringLiteral("The line: a serial port or a pseudo-terminal, e.g. "
                                      "/dev/ttyUSB0."),
                       QStringLiteral("DEV")});
    addSpeedOptions(parser);
    parser->addOption({TCP,
                       QStringLiteral("The line: a serial device server, port 1 to 65535. With "
                                      "--baud, the speed behind it goes into the time-outs."),
                       QStringLiteral("HOST:PORT")});
    addTimingOptions(parser, retries, timeout);
    parser->addOption(
        {REPLY_CHECK,
         QStringLiteral("Replies that do not begin with ACK or NAK and the station's number, or "
                        "whose data are no digits: off takes them unseen, count takes them as "
                        "doubtful, refuse fails the attempt, auto does so with a station that has "
                        "once answered properly, and takes them as doubtful from any other "
                        "(default: auto)."),
         QStringLiteral("HOW"), QStringLiteral("auto")});
    parser->addOption({CHECKPOINTS,
                       QStringLiteral("Percentage of the line's time for pauses in which a reply "
                                      "would be heard that is one too many, 0 (none) to 50 "
                                      "(default: 1)."),
                       QStringLiteral("N"), QStringLiteral("1")});
    parser->addOption({CONFIRM, QStringLiteral("Pause behind each reply, and take its value only "
                                               "if nothing was heard.")});
    parser->addOption({STRICT, QStringLiteral("A doubtful value counts as a failure.")});
    parser->addOption({JSON, QStringLiteral("Print JSON.")});
    parser->addOption(
        {TRACE,
         QStringLiteral("Record all bytes and verdicts in this file. A trace that is there is "
                        "replaced, anything else left alone."),
         QStringLiteral("FILE")});
    parser->addOption(
        {TRACE_SIZE,
         QStringLiteral("Greatest size of the trace in MiB, 1 to 65536 (default: 64). "
                        "The newest records are kept; the older half is in FILE.1."),
         QStringLiteral("MIB"), QStringLiteral("64")});
    parser->addOption(driverOption());
}

bool readLineOptions(const QCommandLineParser &parser, LineOptions *options)
{
    if (parser.isSet(SERIAL) == parser.isSet(TCP)) {
        printError(QStringLiteral("name one line: --serial DEV or --tcp HOST:PORT"));
        return false;
    }
    options->json = parser.isSet(JSON);
    options->driver = driverPath(parser);
    options->trace = parser.value(TRACE);
    if (!readSpeedOptions(parser, &options->serial) ||
        !readTimingOptions(parser, &options->timeout_ms, &options->retries) ||
        !readReplyCheck(parser, options) || !readProofOptions(parser, options) ||
        !readNumber(parser, TRACE_SIZE, 1, 65536, &options->traceSize_MiB))
        return false;
    if (parser.isSet(RETRIES))
        options->commandRetries = options->retries;
    return parser.isSet(TCP) ? readTcp(parser, options) : readSerial(parser, options);
}

std::unique_ptr<Line> makeLine(const LineOptions &options)
{
    if (options.isTcp)
        return std::make_unique<TcpLine>(options.tcp);
    return std::make_unique<SerialLine>(options.serial);
}

QString lineName(const LineOptions &options)
{
    return makeLine(options)->name();
}

PollerSettings pollerSettings(const LineOptions &options)
{
    PollerSettings settings;
    settings.session.retryLimit = options.retries;
    settings.session.commandRetryLimit = options.commandRetries;
    settings.session.engine.replyChecking = options.replyChecking;
    settings.session.engine.confirm = options.confirm;
    settings.session.engine.checkpointShare = options.checkpointShare;
    settings.session.engine.defaultTiming.replyTimeout_ns = milliseconds(options.timeout_ms);
    return settings;
}

} // namespace kvt
