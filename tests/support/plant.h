// A simulated plant behind a real line, and a host that polls it through the built library.
#ifndef KVT_TESTS_SUPPORT_PLANT_H
#define KVT_TESTS_SUPPORT_PLANT_H

#include "host/driver_library.h"
#include "host/poller.h"
#include "simulator/plc_runner.h"
#include "tests/support/event_recorder.h"

#include <QTest>

#include <memory>

/// The PLC of `tags`, all of its signals constant, on a `Port` of the simulator.
template <class Port>
class Plant
{
public:
    template <class... PortArguments>
    explicit Plant(const QVector<kvt::Tag> &plantTags, PortArguments... portArguments)
        : tags(plantTags), plc(tags, constantValues(), 1), port(portArguments...),
          runner(&plc, &port)
    {
        QString error;
        ready = library.load(QStringLiteral(KVT_LIBRARY), &error) && runner.start(&error);
        if (!ready)
            qWarning("%s", qPrintable(error));
    }

    /// Starts a host that polls all tags over `line`.
    void startHost(std::unique_ptr<kvt::Line> line)
    {
        poller = std::make_unique<kvt::Poller>(library.api(), kvt::PollerSettings(), tags,
                                               std::move(line), &recorder);
        poller->start();
    }

    /// Waits until `reached` holds of what the host has reported; false after the recorder's limit.
    template <class Reached>
    bool waitFor(Reached reached)
    {
        return recorder.waitFor(reached);
    }

    /// Waits until the host has said that the line is down.
    bool waitUntilDown()
    {
        return waitFor(
            [](const RecordedEvents &events) { return events.lineStates.contains(false); });
    }

    /// Unplugs the PLC, plugs it in again, and waits until `reading` holds of what came after that;
    /// prints how long it took.
    template <class Reading>
    bool readsAgainAfterABreak(Reading reading)
    {
        if (!runner.setPlugged(false) || !waitUntilDown())
            return false;
        recorder.clear();
        const qint64 plugged_ns = kvt::monotonicNow_ns();
        if (!runner.setPlugged(true) || !waitFor(reading))
            return false;
        const qint64 recovery_ns = recorder.events().readings.first().at_ns - plugged_ns;
        qInfo("reading again after %lld ms", static_cast<long long>(recovery_ns / 1000000));
        return true;
    }

    /// Fails the test unless the host of a line that breaks three times begins again each time, and
    /// counts the breaks and nothing else. `reading` as above.
    template <class Reading>
    void checkThatPollingOutlivesBreaks(Reading reading)
    {
        QVERIFY(waitFor(reading));
        for (int time = 0; time < 3; ++time)
            QVERIFY(readsAgainAfterABreak(reading));
        const kvt::Statistics statistics = poller->statistics();
        QCOMPARE(statistics.lineFailures, quint64(3));
        QCOMPARE(statistics.total.stateChanges, quint64(0));
        QCOMPARE(statistics.total.exchanges,
                 statistics.total.outcomes.at(size_t(kvt::Outcome::Success)));
        QVERIFY(recorder.events().switches.isEmpty());
    }

    QVector<kvt::Tag> tags;
    kvt::SimulatedPlc plc;
    Port port;
    kvt::PlcRunner runner;
    kvt::DriverLibrary library;
    EventRecorder recorder;
    std::unique_ptr<kvt::Poller> poller; // destroyed before the driver is unloaded
    bool ready = false;

private:
    static kvt::PlcConfig constantValues()
    {
        kvt::PlcConfig config;
        config.signalPlan.all = kvt::SignalKind::Constant;
        return config;
    }
};

#endif
