// kvt tune: measures a line and recommends its time-out.
#include "apps/kvt/commands.h"
#include "apps/kvt/console.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/line_findings.h"
#include "apps/kvt/options.h"
#include "apps/kvt/outcome_text.h"
#include "apps/kvt/progress_bar.h"
#include "apps/kvt/stop_signal.h"
#include "apps/kvt/tune_measurement.h"
#include "apps/kvt/tune_report.h"

#include <algorithm>

namespace kvt
{

namespace
{

const QString EXCHANGES = QStringLiteral("exchanges");
const QString MARGIN = QStringLiteral("margin");
constexpr int MOST_TRIALS = 6; // of timeoutsToTry_ms
constexpr int LONG_TIMEOUT_ms = 1000;

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

// Shows how far the measurement and its trials have come, and how long they may still take.
class TuneProgress
{
public:
    /// The measurement and its trials have the same number of exchanges, about.
    explicit TuneProgress(int exchanges)
        : exchanges_(exchanges), bar_((1 + MOST_TRIALS) * exchanges),
          startedAt_ns_(monotonicNow_ns())
    {
    }

    /// `run` is 0 for the measurement, then counts the trials in such a way that MOST_TRIALS is the
    /// last one.
    std::function<void(int, int)> ofRun(int run, const QString &what)
    {
        return [this, run, what](int done, int all) {
            const int steps =
                run * exchanges_ + static_cast<int>(static_cast<qint64>(exchanges_) * done / all);
            bar_.show(steps, what + timeLeft(steps));
        };
    }

    void clear() { bar_.clear(); }

private:
    // Nothing is known at the start; trials that fail take longer than the average.
    QString timeLeft(int steps) const
    {
        if (steps < exchanges_ / 10 + 1)
            return QString();
        const qint64 taken_ns = monotonicNow_ns() - startedAt_ns_;
        const qint64 left = (1 + MOST_TRIALS) * exchanges_ - steps;
        return QStringLiteral(", about %1 left").arg(roughTimeText(taken_ns / steps * left));
    }

    int exchanges_;
    ProgressBar bar_;
    qint64 startedAt_ns_;
};

// Tries the settings one after the other, until all are done or one is cut short.
Measurement::End runTrials(MeasurementSettings settings, TuneProgress *progress, TuneReport *report)
{
    settings.line.trace.clear(); // it holds the first measurement
    settings.giveUpStations = false;
    const QVector<int> timeouts_ms =
        timeoutsToTry_ms(slowestReply_ns(report->first), report->margin_percent);
    // A reply that comes too late must not be taken for the answer to a later request.
    settings.quiet_ms = timeouts_ms.last();
    report->quiet_ms = settings.quiet_ms;
    int run = MOST_TRIALS - timeouts_ms.size();
    for (const int timeout_ms : timeouts_ms) {
        settings.timeout_ms = timeout_ms;
        settings.progress =
            progress->ofRun(++run, QStringLiteral("time-out %1 ms").arg(timeout_ms));
        const Measurement measurement = measure(settings);
        if (measurement.end != Measurement::End::Complete)
            progress->clear();
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
    TuneProgress progress(exchangesOf(settings));
    settings.progress = progress.ofRun(0, QStringLiteral("reply times"));
    const Measurement first = measure(settings);
    if (first.end != Measurement::End::Complete)
        progress.clear();
    if (first.end == Measurement::End::NoDriver)
        return EXIT_USAGE;
    if (first.end == Measurement::End::NoLine) {
        printError(QStringLiteral("%1: %2").arg(lineName(settings.line), first.lineError));
        return EXIT_NO_LINE;
    }
    EchoReport().look(first.statistics.total);
    TuneReport report;
    report.margin_percent = options.margin_percent;
    report.first = first.statistics;
    Measurement::End end = first.end;
    if (end == Measurement::End::Complete)
        report.silentStations = removeSilentStations(first.statistics, &settings.tags);
    if (end == Measurement::End::Complete && !settings.tags.isEmpty())
        end = runTrials(settings, &progress, &report);
    progress.clear();
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
    addNeededTagsOption(parser);
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
    MeasurementSettings &measurement = options->measurement;
    if (!readNumber(parser, EXCHANGES, 1, 100000, &measurement.exchanges) ||
        !readNumber(parser, MARGIN, 0, 1000, &options->margin_percent) ||
        !readLineOptions(parser, &measurement.line))
        return false;
    measurement.timeout_ms =
        measurement.line.timeout_ms > 0 ? measurement.line.timeout_ms : LONG_TIMEOUT_ms;
    return readNeededTags(parser, QStringLiteral("tune"), &measurement.tags);
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
