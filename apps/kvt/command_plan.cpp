// kvt plan: how fast a tag list can be polled, before there is a line.
#include "apps/kvt/commands.h"
#include "apps/kvt/console.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/line_options.h"
#include "apps/kvt/options.h"
#include "apps/kvt/plan_report.h"
#include "driver/records.h"

namespace kvt
{

namespace
{

const QString TURNAROUND = QStringLiteral("turnaround");
const QString OVERHEAD = QStringLiteral("overhead");
const QString WRITES = QStringLiteral("writes");
const QString ASKED = QStringLiteral("asked");
const QString JSON = QStringLiteral("json");

constexpr int SPEEDS[] = {1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};

void addOptions(QCommandLineParser *parser)
{
    addNeededTagsOption(parser);
    addSpeedOptions(parser);
    parser->addOption({TURNAROUND,
                       QStringLiteral("Time of the PLC from a request's last byte to its reply's "
                                      "first, in milliseconds, 0 to 10000 (default: 2)."),
                       QStringLiteral("MS"), QStringLiteral("2")});
    parser->addOption({OVERHEAD,
                       QStringLiteral("Time that host and interface add to each exchange, in "
                                      "microseconds, 0 to 1000000 (default: 200; a USB adapter "
                                      "without low latency: 16000)."),
                       QStringLiteral("US"), QStringLiteral("200")});
    addTimingOptions(parser);
    parser->addOption({WRITES,
                       QStringLiteral("Writes that wait in front of the operator's, 0 to %1 "
                                      "(default: 0).")
                           .arg(QUEUE_LIMIT - 1),
                       QStringLiteral("N"), QStringLiteral("0")});
    parser->addOption({ASKED,
                       QStringLiteral("Scan time that is asked for, in milliseconds, 1 to 3600000 "
                                      "(default: none). The exit status is 1 if it cannot be had."),
                       QStringLiteral("MS")});
    parser->addOption({JSON, QStringLiteral("Print a JSON object.")});
}

bool readSettings(const QCommandLineParser &parser, PlanReport *report)
{
    int turnaround_ms = 0;
    int overhead_us = 0;
    int timeout_ms = 0;
    if (!readSpeedOptions(parser, &report->serial) ||
        !readNumber(parser, TURNAROUND, 0, 10000, &turnaround_ms) ||
        !readNumber(parser, OVERHEAD, 0, 1000000, &overhead_us) ||
        !readTimingOptions(parser, &timeout_ms, &report->settings.retryLimit) ||
        !readNumber(parser, WRITES, 0, QUEUE_LIMIT - 1, &report->settings.writesAhead) ||
        !readNumberIfSet(parser, ASKED, 1, 3600000, &report->asked_ms))
        return false;
    report->settings.turnaround_ns = milliseconds(turnaround_ms);
    report->settings.overhead_ns = microseconds(overhead_us);
    report->settings.engine.defaultTiming.replyTimeout_ns = milliseconds(timeout_ms);
    return true;
}

void makePlans(const QVector<Tag> &tags, PlanReport *report)
{
    report->settings.engine.characterTime_ns = report->serial.characterTime_ns();
    report->plan = planScan(tags, report->settings);
    for (const int baud : SPEEDS) {
        SerialSettings serial = report->serial;
        serial.baud = baud;
        PlanSettings settings = report->settings;
        settings.engine.characterTime_ns = serial.characterTime_ns();
        report->scanAt_ns.insert(baud, planScan(tags, settings).scan_ns);
    }
}

} // namespace

int runPlan(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Predicts from a tag list and the figures of a line: the time of a scan, the longest time "
        "of an operator's write, and the cost of a dead station. Needs no line."));
    addOptions(&parser);
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("plan"), arguments, &exitCode))
        return exitCode;
    PlanReport report;
    QVector<Tag> tags;
    if (!noArguments(parser, QStringLiteral("plan")) || !readSettings(parser, &report) ||
        !readNeededTags(parser, QStringLiteral("plan"), &tags))
        return EXIT_USAGE;
    makePlans(tags, &report);
    printOut(parser.isSet(JSON) ? jsonLine(planToJson(report)) : planText(report));
    return report.asked_ms > 0 && !isAchievable(report) ? EXIT_NO_ANSWER : EXIT_GOOD;
}

} // namespace kvt
