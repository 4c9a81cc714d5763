#include "apps/kvt/tune_measurement.h"

#include "apps/kvt/host_link.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <limits>
#include <mutex>

namespace kvt
{

namespace
{

const int LOOK_INTERVAL_ms = 20;

// Notes whether the line was ever up.
class LineWatcher final : public HostEvents
{
public:
    bool hasFailed() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return !error_.isEmpty();
    }
    QString error() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return error_;
    }

    void stationSwitched(int, bool) override {}
    void writeChanged(const WriteReport &) override {}
    void onceReadEnded(int, int, bool) override {}
    void tagRead(int, const Reading &) override {}
    void lineChanged(bool up, const QString &reason) override
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!up)
            error_ = reason;
    }

private:
    mutable std::mutex mutex_;
    QString error_;
};

QVector<int> stationsOf(const QVector<Tag> &tags)
{
    QVector<int> stations;
    for (const Tag &tag : tags)
        if (!stations.contains(tag.station))
            stations.append(tag.station);
    return stations;
}

PollerSettings settingsOf(const MeasurementSettings &settings)
{
    PollerSettings result = pollerSettings(settings.line);
    result.session.retryLimit = 0;
    result.session.engine.defaultTiming.replyTimeout_ns = milliseconds(settings.timeout_ms);
    result.session.engine.defaultTiming.quietTime_ns = milliseconds(settings.quiet_ms);
    if (!settings.giveUpStations)
        result.session.supervisor.failuresToSwitchOff = std::numeric_limits<int>::max();
    return result;
}

// Exchanges done of those that are wanted. A station that was given up has had all that it gets.
int doneOf(const Statistics &statistics, const QVector<int> &stations, int exchanges)
{
    int done = 0;
    for (const int number : stations) {
        const StationStatistics station = statistics.stations.value(number);
        done += station.stateChanges > 0 || station.attempts >= static_cast<quint64>(exchanges)
                    ? exchanges
                    : static_cast<int>(station.attempts);
    }
    return done;
}

} // namespace

Measurement measure(const MeasurementSettings &settings)
{
    Measurement measurement;
    measurement.end = Measurement::End::Interrupted;
    LineWatcher watcher;
    HostLink link;
    if (!link.load(settings.line)) {
        measurement.end = Measurement::End::NoDriver;
        return measurement;
    }
    link.connect(settings.line, settingsOf(settings), settings.tags, &watcher);
    link.poller()->start();

    const QVector<int> stations = stationsOf(settings.tags);
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        const int all = stations.size() * settings.exchanges;
        const int done = doneOf(link.poller()->statistics(), stations, settings.exchanges);
        if (settings.progress)
            settings.progress(done, all);
        if (watcher.hasFailed())
            measurement.end = Measurement::End::NoLine;
        else if (done == all)
            measurement.end = Measurement::End::Complete;
        else
            return;
        QCoreApplication::quit();
    });
    timer.start(LOOK_INTERVAL_ms);
    QCoreApplication::exec();
    timer.stop();
    link.poller()->stop();
    measurement.lineError = watcher.error();
    measurement.statistics = link.poller()->statistics();
    return measurement;
}

} // namespace kvt
