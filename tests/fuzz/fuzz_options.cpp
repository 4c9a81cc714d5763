// The command line of kvt: any words for the options of a line, of the simulated PLC and of a
// target. Either all values are within the ranges that --help names, or a message says which is
// not.
#include "apps/kvt/line_options.h"
#include "apps/kvt/options.h"
#include "apps/kvt/sim_options.h"
#include "apps/kvt/target.h"
#include "tags/tag_address.h"
#include "tests/fuzz/support/fuzz_input.h"
#include "tests/fuzz/support/promise.h"
#include "tests/fuzz/support/quiet_console.h"

#include <QCoreApplication>

namespace
{

QCommandLineParser &lineParser()
{
    static QCommandLineParser parser;
    static const bool added = (kvt::addLineOptions(&parser), true);
    Q_UNUSED(added);
    return parser;
}

QCommandLineParser &simParser()
{
    static QCommandLineParser parser;
    static const bool added = (kvt::addSimOptions(&parser), true);
    Q_UNUSED(added);
    return parser;
}

QCommandLineParser &targetParser()
{
    static QCommandLineParser parser;
    static const bool added = (kvt::addTargetOptions(&parser, QStringLiteral("any")), true);
    Q_UNUSED(added);
    return parser;
}

// Words that are taken are good, and words that are not are named.
void checkMessage(bool good)
{
    const QString errors = takePrintedErrors();
    require(good == errors.isEmpty(), "a message says what is wrong, and only then");
    require(good || errors.size() > 8, "a message says something");
}

void checkSerial(const kvt::SerialSettings &serial)
{
    require(serial.baud >= 1200 && serial.baud <= 4000000, "speeds are real speeds");
    require(serial.dataBits == 7 || serial.dataBits == 8, "characters have 7 or 8 bits");
    require(serial.stopBits == 1 || serial.stopBits == 2, "and 1 or 2 stop bits");
    require(serial.characterTime_ns() > 0, "a character takes some time");
}

void checkLine(const QStringList &words)
{
    QCommandLineParser &parser = lineParser();
    if (!parser.parse(words))
        return;
    kvt::LineOptions options;
    const bool good = kvt::readLineOptions(parser, &options);
    checkMessage(good);
    if (!good)
        return;
    checkSerial(options.serial);
    require(options.timeout_ms >= 0 && options.timeout_ms <= 60000, "time-outs are in range");
    require(options.retries >= 0 && options.retries <= 100, "attempts are in range");
    require(options.checkpointShare >= 0 && options.checkpointShare <= 0.5, "so is the share");
    require(!options.confirm || options.checkpointShare > 0, "confirming needs pauses");
    require(options.traceSize_MiB >= 1 && options.traceSize_MiB <= 65536, "so is the size");
    require(!kvt::lineName(options).isEmpty(), "a line has a name");
    const kvt::PollerSettings settings = kvt::pollerSettings(options);
    require(settings.session.engine.replyTimeout_ns(1, 8) > 0, "a reply is waited for");
}

void checkSim(const QStringList &words)
{
    QCommandLineParser &parser = simParser();
    // A tag list is a file, which is not this target's affair.
    if (!parser.parse(words) || parser.isSet(QStringLiteral("tags")))
        return;
    kvt::SimOptions options;
    const bool good = kvt::readSimOptions(parser, &options);
    checkMessage(good);
    if (!good)
        return;
    require(options.seconds >= 0 && options.seconds <= 1000000, "a run has an end or none");
    require(options.plc.byteTime_ns >= 0 && options.plc.turnaround_ns >= 0, "time goes forward");
    require(options.plc.turnaround_ns <= Q_INT64_C(10000000000), "turnarounds are in range");
}

void checkTarget(const QStringList &words)
{
    QCommandLineParser &parser = targetParser();
    if (!parser.parse(words) || parser.isSet(QStringLiteral("tags")))
        return;
    QVector<kvt::Tag> tags;
    const bool good = kvt::readTargets(parser, parser.positionalArguments(), &tags);
    checkMessage(good);
    if (!good)
        return;
    require(!tags.isEmpty(), "a target is something");
    for (const kvt::Tag &tag : tags) {
        kvt::TagAddress address;
        require(kvt::parseTagAddress(tag.area, tag.address, &address).isEmpty(),
                "addresses that are taken are good");
        require(tag.station >= 0 && tag.station <= 255, "stations are 0 to 255");
    }
}

void checkHostPort(const QString &text)
{
    QString host;
    int port = 0;
    if (!kvt::splitHostPort(text, &host, &port))
        return;
    require(!host.isEmpty() && port >= 0 && port <= 65535, "a server has a name and a port");
    require(text.endsWith(QLatin1Char(':') + QString::number(port)) ||
                text.mid(text.lastIndexOf(QLatin1Char(':')) + 1).toInt() == port,
            "the port is the one that was named");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static int count = 1;
    static char name[] = "kvt";
    static char *names[] = {name, nullptr};
    static QCoreApplication application(count, names);
    FuzzInput input(data, size);
    const int kind = input.below(4);
    const QString text = QString::fromUtf8(input.rest());
    const QStringList words = QStringLiteral("kvt\n").append(text).split(QLatin1Char('\n'));
    if (kind == 0)
        checkLine(words);
    else if (kind == 1)
        checkSim(words);
    else if (kind == 2)
        checkTarget(words);
    else
        checkHostPort(text);
    return 0;
}
