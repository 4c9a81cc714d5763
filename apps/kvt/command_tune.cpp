// kvt tune: measures a line and recommends its time-out.
#include "apps/kvt/commands.h"
#include "apps/kvt/console.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/options.h"
#include "apps/kvt/stop_signal.h"
#include "apps/kvt/tune_measurement.h"
#include "apps/kvt/tune_report.h"

#include <algorithm>

namespace kvt
{

namespace
{

const QString TAGS = QStringLiteral("tags");
const QString EXCHANGES = QStringLiteral("exchanges");
const QString MARGIN = QStringLiteral("margin");
const int LONG_TIMEOUT_ms = 1000;

struct TuneOptions {
    MeasurementSettings measurement;
    int margin_percent = 50;
};

// The stations that never answered are taken out of the tags.
QVector<int> removeSilentStations(const Statistics &statistics, QVector<Tag> *tags)
{
    QVector<int> silent;
    for (auto station = statistics.stations.begin(); station != statistics.stations.end();
         ++station)
        if (station->replyTime.count() == 0)
            silent.append(station.key());
    tags->erase(std::remove_if(tags->begin(), tags->end(),
                               [&](const Tag &tag) { return silent.contains(tag.station); }),
                tags->end());
    return silent;
}

TuneTrial trialOf(int timeout_ms, const Statistics &statistics)
{
    const StationStatistics &total = statistics.total;
    TuneTrial trial;
    trial.timeout_ms = timeout_ms;
    trial.attempts = total.attempts;
    trial.failures = total.attempts - total.replyTime.count();
    trial.scan_ns = statistics.scan.times().mean_ns();
    return trial;
}

// Tries the settings one after the other, until all are done or one is cut short.
Measurement::End runTrials(MeasurementSettings settings, TuneReport *report)
{
    settings.line.trace.clear(); // it holds the first measurement
    settings.giveUpStations = false;
    const QVector<int> timeouts_ms =
        timeoutsToTry_ms(slowestReply_ns(report->first), report->margin_percent);
    // A reply that comes too late must not be taken for the answer to a later request.
    settings.quiet_ms = timeouts_ms.last();
    report->quiet_ms = settings.quiet_ms;
    for (const int timeout_ms : timeouts_ms) {
        settings.timeout_ms = timeout_ms;
        const Measurement measurement = measure(settings);
        if (measurement.end == Measurement::End::NoLine)
            printError(
                QStringLiteral("%1: %2").arg(lineName(settings.line), measurement.lineError));
        if (measurement.end != Measurement::End::Complete)
            return measurement.end;
        report->trials.append(trialOf(timeout_ms, measurement.statistics));
    }
    return Measurement::End::Complete;
}

int tune(const TuneOptions &options)
{
    const StopSignal stopSignal;
    MeasurementSettings settings = options.measurement;
    const Measurement first = measure(settings);
    if (first.end == Measurement::End::NoDriver)
        return EXIT_USAGE;
    if (first.end == Measurement::End::NoLine) {
        printError(QStringLiteral("%1: %2").arg(lineName(settings.line), first.lineError));
        return EXIT_NO_LINE;
    }
    TuneReport report;
    report.margin_percent = options.margin_percent;
    report.first = first.statistics;
    Measurement::End end = first.end;
    if (end == Measurement::End::Complete)
        report.silentStations = removeSilentStations(first.statistics, &settings.tags);
    if (end == Measurement::End::Complete && !settings.tags.isEmpty())
        end = runTrials(settings, &report);
    report.complete = end == Measurement::End::Complete;
    recommend(&report);
    printOut(settings.line.json ? jsonLine(tuneToJson(report)) : tuneText(report));
    if (end == Measurement::End::NoLine)
        return EXIT_NO_LINE;
    return report.silentStations.isEmpty() && report.timeout_ms > 0 ? EXIT_GOOD : EXIT_NO_ANSWER;
}

void addOptions(QCommandLineParser *parser)
{
    addLineOptions(parser, 0, "1000");
    parser->addOption(
        {TAGS, QStringLiteral("Tag list, a CSV file. Needed."), QStringLiteral("FILE")});
    parser->addOption({EXCHANGES,
                       QStringLiteral("Exchanges with each station at each setting, 1 to 100000 "
                                      "(default: 50)."),
                       QStringLiteral("N"), QStringLiteral("50")});
    parser->addOption({MARGIN,
                       QStringLiteral("Margin on top of the slowest reply, in per cent, 0 to 1000 "
                                      "(default: 50)."),
                       QStringLiteral("PERCENT"), QStringLiteral("50")});
}

bool readOptions(const QCommandLineParser &parser, TuneOptions *options)
{
    if (!parser.isSet(TAGS)) {
        printError(QStringLiteral("tune: --tags FILE is missing"));
        return false;
    }
    MeasurementSettings &measurement = options->measurement;
    if (!readNumber(parser, EXCHANGES, 1, 100000, &measurement.exchanges) ||
        !readNumber(parser, MARGIN, 0, 1000, &options->margin_percent) ||
        !readLineOptions(parser, &measurement.line))
        return false;
    measurement.timeout_ms =
        measurement.line.timeout_ms > 0 ? measurement.line.timeout_ms : LONG_TIMEOUT_ms;
    return readPollableTags(parser.value(TAGS), &measurement.tags);
}

} // namespace

int runTune(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Measures how long each station of a tag list takes to answer, first with a long time-out "
        "(--timeout), then tries shorter and longer ones, prints the "
        "share of attempts that failed with each, and recommends a setting. Every request is "
        "attempted once, whatever --retries says. --trace records the first measurement."));
    addOptions(&parser);
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("tune"), arguments, &exitCode))
        return exitCode;
    TuneOptions options;
    if (!noArguments(parser, QStringLiteral("tune")) || !readOptions(parser, &options))
        return EXIT_USAGE;
    return tune(options);
}

} // namespace kvt
