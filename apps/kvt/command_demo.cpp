// kvt demo: the whole system at work, with a simulated PLC on a pseudo-terminal.
#include "apps/kvt/commands.h"
#include "apps/kvt/common/counted.h"
#include "apps/kvt/console.h"
#include "apps/kvt/demo_witness.h"
#include "apps/kvt/driver_option.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/options.h"
#include "apps/kvt/poll_output.h"
#include "apps/kvt/run_end.h"
#include "apps/kvt/stop_signal.h"
#include "host/poller.h"
#include "host/serial_line.h"
#include "simulator/line_speed.h"
#include "simulator/pty_port.h"
#include "tags/tag_elements.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int BAUD = 38400;
constexpr int BITS_PER_BYTE = 10;
constexpr int WRITE_INTERVAL_ms = 200;
constexpr int SHOW_INTERVAL_ms = 500;

struct DemoOptions {
    QString driver;
    QString tagFile;
    int seconds = 0; // 0: until Ctrl-C
};

// Those that a number stands for, whatever it is.
bool takesAnyNumber(const Tag &tag)
{
    return tag.form.type == ValueType::Bool || isOneElement(tag.form, tag.area);
}

// The first such tag of each area that can be written; their values stop moving by themselves then.
QVector<int> tagsToWrite(const QVector<Tag> &tags)
{
    QVector<int> result;
    for (const Area area : {Area::X, Area::D}) {
        const auto found = std::find_if(tags.begin(), tags.end(), [area](const Tag &tag) {
            return tag.area == area && takesAnyNumber(tag);
        });
        if (found != tags.end())
            result.append(static_cast<int>(found - tags.begin()));
    }
    return result;
}

QByteArray bytesOf(const Tag &tag, int value)
{
    QByteArray bytes(valueSize(tag.area), static_cast<char>(value & 0xFF));
    if (bytes.size() > 1)
        bytes[1] = static_cast<char>((value >> 8) & 0xFF);
    return bytes;
}

PlcConfig plcConfig()
{
    PlcConfig config;
    config.byteTime_ns = byteTime_ns(BAUD, BITS_PER_BYTE);
    config.turnaround_ns = milliseconds(2);
    return config;
}

std::unique_ptr<Line> lineTo(const QString &device)
{
    SerialSettings settings;
    settings.path = device;
    settings.baud = BAUD;
    return std::make_unique<SerialLine>(settings);
}

bool isEveryTagGood(const Poller &poller)
{
    const QVector<TagValue> values = poller.values();
    return std::all_of(values.begin(), values.end(), [](const TagValue &value) {
        return value.quality == Quality::Good || value.writePending;
    });
}

// A demonstration while it runs.
class Demo
{
public:
    Demo(const DriverApi &api, const QVector<Tag> &tags)
        : tags_(tags), writeTargets_(tagsToWrite(tags)), plc_(tags, plcConfig(), 1),
          runner_(&plc_, &port_), witness_(tags, &runner_), alarms_(tags),
          output_(tags, alarms_,
                  outputIsScreen() ? PollOutput::Form::Table : PollOutput::Form::Lines),
          api_(api)
    {
    }

    int run(int seconds);

private:
    void writeNext();
    void show();
    int summarize(bool everyTagGood) const;

    QVector<Tag> tags_;
    QVector<int> writeTargets_;
    SimulatedPlc plc_;
    PtyPort port_;
    PlcRunner runner_;
    DemoWitness witness_;
    AlarmTexts alarms_;
    PollOutput output_;
    qint64 startedAt_ns_ = 0;
    DriverApi api_;
    std::unique_ptr<Poller> poller_;
    int writes_ = 0;
};

int Demo::run(int seconds)
{
    const StopSignal stopSignal;
    QString error;
    if (!runner_.start(&error)) {
        printError(QStringLiteral("no pseudo-terminal for the simulated PLC: %1").arg(error));
        return EXIT_NO_LINE;
    }
    poller_ =
        std::make_unique<Poller>(api_, PollerSettings(), tags_, lineTo(port_.name()), &witness_);
    startedAt_ns_ = monotonicNow_ns();
    poller_->start();

    QTimer writeTimer;
    QObject::connect(&writeTimer, &QTimer::timeout, [this] { writeNext(); });
    writeTimer.start(WRITE_INTERVAL_ms);
    QTimer showTimer;
    QObject::connect(&showTimer, &QTimer::timeout, [this] { show(); });
    showTimer.start(SHOW_INTERVAL_ms);
    quitEventLoopAfter(seconds);
    QCoreApplication::exec();

    const bool everyTagGood = isEveryTagGood(*poller_);
    show();
    poller_->stop();
    output_.finish();
    return summarize(everyTagGood);
}

void Demo::writeNext()
{
    if (writeTargets_.isEmpty())
        return;
    const int tag = writeTargets_.at(writes_ % writeTargets_.size());
    const int range = tags_.at(tag).area == Area::X ? 2 : 65536;
    const int value = (writes_ / writeTargets_.size() + 1) % range;
    if (!witness_.expectWrite(tag, value))
        return;
    ++writes_;
    poller_->write(tag, bytesOf(tags_.at(tag), value));
}

void Demo::show()
{
    const Statistics statistics = poller_->statistics();
    const QVector<TagValue> values = poller_->values();
    const qint64 now_ns = monotonicNow_ns(); // no earlier than any of the values
    PollState state;
    state.line = QStringLiteral("%1 at %2 baud").arg(port_.name()).arg(BAUD);
    state.scans = static_cast<int>(statistics.scan.times().count());
    state.exchanges = statistics.total.exchanges;
    state.more = QStringLiteral(", ") +
                 counted(witness_.writesConfirmed(), "write confirmed", "writes confirmed");
    state.elapsed_ns = now_ns - startedAt_ns_;
    output_.show({values, witness_.results(), now_ns, QSet<int>()}, state);
}

int Demo::summarize(bool everyTagGood) const
{
    const StationStatistics total = poller_->statistics().total;
    const quint64 good = total.outcomes.at(static_cast<size_t>(Outcome::Success)) +
                         total.outcomes.at(static_cast<size_t>(Outcome::SuccessNotStored));
    printOut(
        QStringLiteral("\nexchanges %1, values read %2, writes confirmed %3, of these read back "
                       "%4, failures %5\n")
            .arg(total.exchanges)
            .arg(witness_.valuesRead())
            .arg(witness_.writesConfirmed())
            .arg(witness_.writesReadBack())
            .arg(total.exchanges - good));
    QString fault;
    if (!everyTagGood)
        fault = QStringLiteral("not every tag has a good value");
    else if (witness_.writesFailed() > 0)
        fault = QStringLiteral("%1 of the writes failed").arg(witness_.writesFailed());
    else if (witness_.writesConfirmed() == 0 || witness_.writesReadBack() == 0)
        fault = QStringLiteral("no write was confirmed and read back");
    if (!fault.isEmpty())
        printError(QStringLiteral("values did not go both ways: %1").arg(fault));
    return fault.isEmpty() ? EXIT_GOOD : EXIT_NO_ANSWER;
}

int runWith(const DemoOptions &options)
{
    QVector<Tag> tags;
    if (!readPollableTags(options.tagFile, &tags))
        return EXIT_USAGE;
    DriverLibrary library;
    if (!loadDriver(options.driver, &library))
        return EXIT_USAGE;
    return Demo(library.api(), tags).run(options.seconds);
}

} // namespace

int runDemo(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Starts a simulated PLC on a pseudo-terminal, polls the tags of a list through "
        "the driver, writes values meanwhile and shows what is read. Runs until Ctrl-C "
        "and ends with a summary. The exit status is 0 only if values went both ways."));
    parser.addOption(driverOption());
    parser.addOption({QStringLiteral("tags"), QStringLiteral("Tag list (default: a sample)."),
                      QStringLiteral("FILE"), QStringLiteral(":/plant.csv")});
    addSecondsOption(&parser);
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("demo"), arguments, &exitCode))
        return exitCode;

    if (!noArguments(parser, QStringLiteral("demo")))
        return EXIT_USAGE;
    DemoOptions options;
    options.driver = driverPath(parser);
    options.tagFile = parser.value(QStringLiteral("tags"));
    if (!readSecondsOption(parser, &options.seconds))
        return EXIT_USAGE;
    return runWith(options);
}

} // namespace kvt
