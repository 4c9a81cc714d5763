#include "apps/kvt/tune_measurement.h"

#include "apps/kvt/host_link.h"

#include <QCoreApplication>
#include <QSet>
#include <QTimer>

#include <limits>
#include <mutex>

namespace kvt
{

namespace
{

constexpr int LOOK_INTERVAL_ms = 20;

// Notes why the line is not there.
class LineWatcher final : public HostEvents
{
public:
    QString error() const // empty while it has not failed
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return error_;
    }

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

QSet<int> stationsOf(const QVector<Tag> &tags)
{
    QSet<int> stations;
    for (const Tag &tag : tags)
        stations.insert(tag.station);
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
int doneOf(const Statistics &statistics, const QSet<int> &stations, int exchanges)
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

int exchangesOf(const MeasurementSettings &settings)
{
    return stationsOf(settings.tags).size() * settings.exchanges;
}

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

    const QSet<int> stations = stationsOf(settings.tags);
    const int all = exchangesOf(settings);
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        const int done = doneOf(link.poller()->statistics(), stations, settings.exchanges);
        if (settings.progress)
            settings.progress(done, all);
        if (!watcher.error().isEmpty())
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
