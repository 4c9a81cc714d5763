#include "apps/kvt/sim_options.h"

#include "apps/kvt/character_format.h"
#include "apps/kvt/console.h"
#include "apps/kvt/line_options.h"
#include "apps/kvt/options.h"
#include "apps/kvt/run_end.h"
#include "host/host_time.h"
#include "simulator/fault_text.h"
#include "simulator/line_speed.h"

#include <QRegularExpression>

#include <algorithm>

namespace kvt
{

namespace
{

const QString PTY = QStringLiteral("pty");
const QString SERIAL = QStringLiteral("serial");
const QString TCP = QStringLiteral("tcp");
const QString TAGS = QStringLiteral("tags");
const QString BAUD = QStringLiteral("baud");
const QString TURNAROUND = QStringLiteral("turnaround");
const QString FAULTS = QStringLiteral("faults");
const QString VALUES = QStringLiteral("values");
const QString VALUE = QStringLiteral("value");
const QString SEED = QStringLiteral("seed");

constexpr int HARDWARE_BAUD = 9600; // of a serial port without --baud

// In the order of SignalKind.
const QStringList VALUE_NAMES = {QStringLiteral("constant"), QStringLiteral("counter"),
                                 QStringLiteral("ramp"),     QStringLiteral("sine"),
                                 QStringLiteral("walk"),     QStringLiteral("serial"),
                                 QStringLiteral("step"),     QStringLiteral("mixed")};

bool readTcpPort(const QString &text, SimOptions *options)
{
    const int colon = text.lastIndexOf(QLatin1Char(':'));
    bool isNumber = false;
    options->port = text.mid(colon + 1).toUShort(&isNumber);
    if (colon >= 0)
        options->address = text.left(colon);
    if (!isNumber || options->address.isEmpty())
        printError(QStringLiteral("--tcp: \"%1\" is not [ADDRESS:]PORT with a port from 0 to 65535")
                       .arg(text));
    return isNumber && !options->address.isEmpty();
}

bool readLine(const QCommandLineParser &parser, SimOptions *options)
{
    const int lines = int(parser.isSet(PTY)) + int(parser.isSet(SERIAL)) + int(parser.isSet(TCP));
    if (lines > 1) {
        printError(QStringLiteral("name one line: --pty, --serial or --tcp"));
        return false;
    }
    if (parser.isSet(TCP)) {
        options->line = SimOptions::Line::Tcp;
        return readTcpPort(parser.value(TCP), options);
    }
    options->line = parser.isSet(SERIAL) ? SimOptions::Line::Serial : SimOptions::Line::Pty;
    options->device = parser.value(parser.isSet(SERIAL) ? SERIAL : PTY);
    return true;
}

bool readSpeed(const QCommandLineParser &parser, SimOptions *options)
{
    int baud = 0;
    CharacterFormat format;
    if (!readFormatOption(parser, &format) || !readNumber(parser, BAUD, 0, 4000000, &baud))
        return false;
    format.copyTo(&options->serial);
    if (options->line == SimOptions::Line::Serial) {
        options->serial.baud = baud > 0 ? baud : HARDWARE_BAUD;
        return checkUsualSpeed(options->serial.baud);
    }
    options->plc.byteTime_ns = byteTime_ns(baud, options->serial.bitsPerByte());
    return true;
}

bool readBehaviour(const QCommandLineParser &parser, SimOptions *options)
{
    const FaultTextResult faults = parseFaults(parser.value(FAULTS));
    if (!faults.error.isEmpty()) {
        printError(QStringLiteral("--faults: %1").arg(faults.error));
        return false;
    }
    options->plc.faults = faults.rules;
    const int kind = VALUE_NAMES.indexOf(parser.value(VALUES));
    if (kind < 0) {
        printError(QStringLiteral("--values: \"%1\" is none of %2")
                       .arg(parser.value(VALUES), VALUE_NAMES.join(QStringLiteral(", "))));
        return false;
    }
    options->plc.signalPlan.all = static_cast<SignalKind>(kind);
    int turnaround_ms = 0;
    int seed = 0;
    if (!readNumber(parser, TURNAROUND, 0, 10000, &turnaround_ms) ||
        !readNumber(parser, SEED, 0, 2147483647, &seed))
        return false;
    options->plc.turnaround_ns = milliseconds(turnaround_ms);
    options->seed = static_cast<quint64>(seed);
    return true;
}

// Returns the rule of "TAG=KIND:LOW..HIGH:TIME" and its tag, or says what is wrong with it. A name
// may have all of these signs in it.
QString readRule(const QString &text, const QVector<Tag> &tags, SignalPlan *plan)
{
    static const QRegularExpression form(
        QStringLiteral("\\A(.*)=([a-z]+)(?::(.+)\\.\\.([^:]+)(?::([0-9]+)(ms|s))?)?\\z"));
    const QRegularExpressionMatch match = form.match(text);
    const int kind = VALUE_NAMES.indexOf(match.captured(2));
    if (!match.hasMatch() || kind < 0)
        return QStringLiteral("it is not TAG=KIND[:LOW..HIGH[:TIME]] with a kind of %1")
            .arg(VALUE_NAMES.mid(0, 5).join(QStringLiteral(", ")) + QStringLiteral(" and step"));
    const auto tag = std::find_if(tags.begin(), tags.end(),
                                  [&](const Tag &one) { return one.name == match.captured(1); });
    if (tag == tags.end())
        return QStringLiteral("there is no tag \"%1\"").arg(match.captured(1));
    const qint64 unit_ns = match.captured(6) == QLatin1String("s") ? seconds(1) : milliseconds(1);
    const SignalRule rule{static_cast<SignalKind>(kind), match.captured(3), match.captured(4),
                          std::min<qint64>(match.captured(5).toLongLong(), 1000000) * unit_ns};
    plan->byTag.insert(tag->name, rule);
    return signalFault(rule, *tag);
}

bool readRules(const QCommandLineParser &parser, SimOptions *options)
{
    for (const QString &text : parser.values(VALUE)) {
        const QString fault = readRule(text, options->tags, &options->plc.signalPlan);
        if (fault.isEmpty())
            continue;
        printError(QStringLiteral("--value: \"%1\": %2").arg(text, fault));
        return false;
    }
    return true;
}

void addSimulatedLine(QCommandLineParser *parser)
{
    parser->addOption({PTY,
                       QStringLiteral("Use a pseudo-terminal and make a symbolic link to it "
                                      "(default: a pseudo-terminal without a link)."),
                       QStringLiteral("LINK")});
    parser->addOption(
        {SERIAL, QStringLiteral("Use a serial port of this machine."), QStringLiteral("DEV")});
    parser->addOption({TCP,
                       QStringLiteral("Listen at an IPv4 address (default: 127.0.0.1), port 0 to "
                                      "65535; 0 takes a free one."),
                       QStringLiteral("[ADDRESS:]PORT")});
    parser->addOption({BAUD,
                       QStringLiteral("Bits per second, 0 to 4000000. A pseudo-terminal and TCP "
                                      "keep the pace of this speed; 0 is as fast as can be "
                                      "(default: 0). A serial port takes one of the usual speeds "
                                      "from 1200 on (default: 9600)."),
                       QStringLiteral("N"), QStringLiteral("0")});
    addFormatOption(parser);
}

} // namespace

void addSimOptions(QCommandLineParser *parser)
{
    addSimulatedLine(parser);
    parser->addOption({TAGS,
                       QStringLiteral("Tag list that says which cells exist (default: a sample "
                                      "of three stations)."),
                       QStringLiteral("FILE"), QStringLiteral(":/plant.csv")});
    parser->addOption({TURNAROUND,
                       QStringLiteral("Time from a request's last byte to its reply's first, in "
                                      "milliseconds, 0 to 10000 (default: 0)."),
                       QStringLiteral("MS"), QStringLiteral("0")});
    parser->addOption(
        {FAULTS,
         QStringLiteral(
             "Rules NAME=WHEN[:DURATION[~JITTER]][@STATION], separated by commas. NAME is "
             "noreply, refuse, truncate, extra, badend, flip, foreign, duplicate, echo, delay, "
             "late, silence or break; WHEN is 0.5%, every100, 7 or 5-20 (exchanges, from 1); "
             "durations are 300us, 80ms, 2s. For example late=1%:80ms,noreply=0.5%@3 "
             "(default: none). \"man kvt-sim\" describes each fault."),
         QStringLiteral("RULES")});
    parser->addOption({VALUES,
                       QStringLiteral("How values move from one read to the next, those of "
                                      "several elements as time goes by: %1 (default: mixed). A "
                                      "written value stays.")
                           .arg(VALUE_NAMES.join(QStringLiteral(", "))),
                       QStringLiteral("KIND"), QStringLiteral("mixed")});
    parser->addOption({VALUE,
                       QStringLiteral("How one tag's value moves as time goes by, all its words "
                                      "at once: constant, counter, ramp, sine, walk or step, "
                                      "within a range of values as they are entered, once around "
                                      "in a time such as 500ms, 20s (default: 60s). For example "
                                      "level=sine:0..100:20s. May be repeated."),
                       QStringLiteral("TAG=KIND[:LOW..HIGH[:TIME]]")});
    parser->addOption({SEED,
                       QStringLiteral("Start of the random numbers for values and faults, 0 to "
                                      "2147483647 (default: 1)."),
                       QStringLiteral("N"), QStringLiteral("1")});
    addSecondsOption(parser);
    parser->addOption({QStringLiteral("log"), QStringLiteral("Print a line for each exchange.")});
    parser->addOption({QStringLiteral("json"), QStringLiteral("Print one JSON object per line.")});
}

bool readSimOptions(const QCommandLineParser &parser, SimOptions *options)
{
    options->log = parser.isSet(QStringLiteral("log"));
    options->json = parser.isSet(QStringLiteral("json"));
    return readSecondsOption(parser, &options->seconds) && readLine(parser, options) &&
           readSpeed(parser, options) && readBehaviour(parser, options) &&
           readTags(parser.value(TAGS), &options->tags) && readRules(parser, options);
}

} // namespace kvt
