// kvt poll: the cyclic poll of a tag list.
#include "apps/kvt/commands.h"
#include "apps/kvt/common/counted.h"
#include "apps/kvt/console.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/host_link.h"
#include "apps/kvt/options.h"
#include "apps/kvt/poll_output.h"
#include "apps/kvt/poll_watcher.h"
#include "apps/kvt/run_end.h"
#include "apps/kvt/statistics_text.h"
#include "apps/kvt/stop_signal.h"
#include "host/statistics_json.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int MOST_SCANS = 1000000000;

struct PollOptions {
    LineOptions line;
    int seconds = 0; // 0: until Ctrl-C
    int cycles = 0;  // 0: any number
    int interval_ms = 500;
    int stale_ms = 5000; // age at which a value is no longer good
};

PollOutput::Form formOf(const PollOptions &options)
{
    if (options.line.json)
        return PollOutput::Form::Json;
    return outputIsScreen() ? PollOutput::Form::Table : PollOutput::Form::Lines;
}

// A poll while it runs.
class Poll
{
public:
    Poll(const PollOptions &options, const QVector<Tag> &tags)
        : options_(options), tags_(tags), lineName_(lineName(options.line)), form_(formOf(options)),
          alarms_(tags), watcher_(tags, alarms_, options.cycles, form_ != PollOutput::Form::Table,
                                  options.line.isTcp),
          output_(tags, alarms_, form_, [this](const QVector<int> &seen) { acknowledge(seen); })
    {
    }

    int run();

private:
    QVector<TagValue> show(const QJsonObject &summary = QJsonObject());
    void showUnlessStuck();
    void acknowledge(const QVector<int> &tags);
    int conclude();
    int judge(const QVector<TagValue> &values) const;
    qint64 limitingCharacterTime_ns() const;
    QJsonObject summary() const;
    void printSummary() const;
    void reportDoubtfulReplies() const;

    PollOptions options_;
    QVector<Tag> tags_;
    QString lineName_;
    PollOutput::Form form_;
    AlarmTexts alarms_;
    PollWatcher watcher_;
    EchoReport echo_;
    PollOutput output_;
    HostLink link_;
    qint64 startedAt_ns_ = 0;
    int skipped_ = 0; // outputs
};

int Poll::run()
{
    const StopSignal stopSignal;
    if (!link_.load(options_.line))
        return EXIT_USAGE;
    PollerSettings settings = pollerSettings(options_.line);
    settings.session.staleAfter_ns = milliseconds(options_.stale_ms);
    link_.connect(options_.line, settings, tags_, &watcher_);
    watcher_.lastScanDone = [this] { link_.poller()->endRequests(); };
    startedAt_ns_ = monotonicNow_ns();
    link_.poller()->start();

    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [this] { showUnlessStuck(); });
    timer.start(options_.interval_ms);
    quitEventLoopAfter(options_.seconds);
    QCoreApplication::exec();
    timer.stop();
    return conclude();
}

// Who is slow to read gets the latest values later, not all of them one after the other.
void Poll::showUnlessStuck()
{
    if (outputIsBusy())
        ++skipped_;
    else
        show();
}

void Poll::acknowledge(const QVector<int> &tags)
{
    for (const int tag : tags)
        link_.poller()->acknowledgeAlarm(tag);
    showUnlessStuck();
}

// Returns the values that it has shown.
QVector<TagValue> Poll::show(const QJsonObject &summary)
{
    const Poller &poller = *link_.poller();
    const QVector<TagValue> values = poller.values();
    const qint64 now_ns = monotonicNow_ns(); // no earlier than any of the values
    const StationStatistics total = poller.statistics().total;
    echo_.look(total);
    PollState state;
    state.line = lineName_;
    state.lineIsUp = watcher_.isUp();
    state.lineError = watcher_.lineError();
    state.scans = watcher_.scans();
    state.exchanges = total.exchanges;
    state.elapsed_ns = now_ns - startedAt_ns_;
    output_.show({values, watcher_.results(), now_ns, watcher_.stationsOff(), poller.alarms()},
                 state, summary);
    return values;
}

int Poll::conclude()
{
    if (!watcher_.wasUp() && !watcher_.lineError().isEmpty()) {
        printError(QStringLiteral("%1: %2").arg(lineName_, watcher_.lineError()));
        return EXIT_NO_LINE;
    }
    // The last reading of the last scan may be on its way to the values.
    link_.poller()->stop();
    const QVector<TagValue> values = show(summary());
    output_.finish();
    if (!options_.line.json)
        printSummary();
    reportDoubtfulReplies();
    if (skipped_ > 0)
        printEvent(counted(skipped_, "output was left out, nobody read those before in time",
                           "outputs were left out, nobody read those before in time"));
    return judge(values);
}

// What counts is the end: values that were good once are no proof that the PLC still answers.
int Poll::judge(const QVector<TagValue> &values) const
{
    const auto bad = std::count_if(values.begin(), values.end(), [this](const TagValue &value) {
        const bool tolerated = !options_.line.strict && value.quality == Quality::Doubtful;
        return value.quality != Quality::Good && !tolerated;
    });
    const bool anyGood = std::any_of(values.begin(), values.end(), [](const TagValue &value) {
        return value.quality == Quality::Good;
    });
    const QString lineError = watcher_.lineError();
    if (!lineError.isEmpty())
        printEvent(QStringLiteral("the line is still down: %1").arg(lineError));
    if (bad > 0)
        printEvent(QStringLiteral("%1 of %2 %3 no good value")
                       .arg(bad)
                       .arg(counted(tags_.size(), "tag", "tags"),
                            bad == 1 ? QStringLiteral("has") : QStringLiteral("have")));
    else if (!anyGood)
        printEvent(QStringLiteral("no tag has more than a doubtful value"));
    return bad > 0 || !anyGood || !lineError.isEmpty() ? EXIT_NO_ANSWER : EXIT_GOOD;
}

// Use of the line makes sense only where its speed limits it, which a pseudo-terminal's does not.
qint64 Poll::limitingCharacterTime_ns() const
{
    const Poller &poller = *link_.poller();
    return options_.line.isTcp || poller.lineIsPaced() ? poller.characterTime_ns() : 0;
}

QJsonObject Poll::summary() const
{
    QJsonObject object = statisticsToJson(link_.poller()->statistics(), monotonicNow_ns(),
                                          limitingCharacterTime_ns());
    object.insert(QStringLiteral("scans"), watcher_.scans());
    return object;
}

void Poll::printSummary() const
{
    printOut(QStringLiteral("\nscans %1, ").arg(watcher_.scans()) +
             statisticsText(link_.poller()->statistics(), monotonicNow_ns(),
                            limitingCharacterTime_ns()));
}

void Poll::reportDoubtfulReplies() const
{
    const quint64 count = link_.poller()->statistics().total.doubtfulTaken;
    if (count == 0)
        return;
    printEvent(counted(static_cast<qint64>(count),
                       "reply does not look like the station's own and was taken as",
                       "replies do not look like the station's own and were taken as") +
               QStringLiteral(" doubtful: --reply-check refuse drops such replies"));
}

void addOptions(QCommandLineParser *parser)
{
    addLineOptions(parser);
    addNeededTagsOption(parser);
    addSecondsOption(parser);
    parser->addOption({QStringLiteral("cycles"),
                       QStringLiteral("End after so many scans of all tags, 1 to %1 (default: "
                                      "any number).")
                           .arg(MOST_SCANS),
                       QStringLiteral("N")});
    parser->addOption({QStringLiteral("interval"),
                       QStringLiteral("Time from one output to the next, in milliseconds, 20 to "
                                      "3600000 (default: 500). The poll itself is as fast as the "
                                      "line; what changes and changes back between two outputs "
                                      "is not seen, in a pipe either."),
                       QStringLiteral("MS"), QStringLiteral("500")});
    parser->addOption({QStringLiteral("stale"),
                       QStringLiteral("Age at which a value is no longer good but stale, in "
                                      "milliseconds, 100 to 3600000 (default: 5000); of a tag "
                                      "with an interval three of them, if that is more. Raise it "
                                      "where a scan takes longer."),
                       QStringLiteral("MS"), QStringLiteral("5000")});
}

bool readOptions(const QCommandLineParser &parser, PollOptions *options)
{
    return readSecondsOption(parser, &options->seconds) &&
           readNumberIfSet(parser, QStringLiteral("cycles"), 1, MOST_SCANS, &options->cycles) &&
           readNumber(parser, QStringLiteral("interval"), 20, 3600000, &options->interval_ms) &&
           readNumber(parser, QStringLiteral("stale"), 100, 3600000, &options->stale_ms) &&
           readLineOptions(parser, &options->line);
}

} // namespace

int runPoll(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Polls the tags of a list without pause and shows value, quality, age and the result of "
        "the latest reading: as a table on a terminal, as lines for what has changed in a pipe, "
        "or as one JSON object per line. Ends with a summary. The exit status is 0 if the line is "
        "up at the end and the value of every tag good: its latest reading did not fail and is no "
        "older than --stale or three intervals of the tag."));
    addOptions(&parser);
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("poll"), arguments, &exitCode))
        return exitCode;
    PollOptions options;
    QVector<Tag> tags;
    if (!noArguments(parser, QStringLiteral("poll")) || !readOptions(parser, &options) ||
        !readNeededTags(parser, QStringLiteral("poll"), &tags))
        return EXIT_USAGE;
    return Poll(options, tags).run();
}

} // namespace kvt
