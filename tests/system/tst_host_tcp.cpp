// A host and a simulated PLC on a real TCP connection.
#include "host/driver_library.h"
#include "host/poller.h"
#include "host/tcp_line.h"
#include "simulator/plc_runner.h"
#include "simulator/tcp_port.h"
#include "tests/support/event_recorder.h"

#include <QtTest>

using namespace kvt;

namespace
{

QVector<Tag> plantTags()
{
    return {
        {QStringLiteral("level"), Area::D, QStringLiteral("5.2.1"), 1, ValueType::U16, QString()},
        {QStringLiteral("recipe"), Area::C, QStringLiteral("7.0.1.4"), 2, ValueType::U8, QString()},
    };
}

PlcConfig constantValues()
{
    PlcConfig config;
    config.signalPlan.all = SignalKind::Constant;
    return config;
}

/// A plant behind a TCP port and a host that polls it.
class Plant
{
public:
    Plant() : plc(plantTags(), constantValues(), 1), runner(&plc, &port)
    {
        QString error;
        ready = library.load(QStringLiteral(KVT_LIBRARY), &error) && runner.start(&error);
        if (!ready)
            qWarning("%s", qPrintable(error));
    }

    void startHost()
    {
        TcpSettings tcp;
        tcp.host = QStringLiteral("127.0.0.1");
        tcp.port = port.port();
        poller = std::make_unique<Poller>(library.api(), PollerSettings(), plantTags(),
                                          std::make_unique<TcpLine>(tcp), &recorder);
        poller->start();
    }

    SimulatedPlc plc;
    TcpPort port;
    PlcRunner runner;
    DriverLibrary library;
    EventRecorder recorder;
    std::unique_ptr<Poller> poller; // destroyed before the driver is unloaded
    bool ready = false;
};

bool bothRead(const RecordedEvents &events)
{
    return events.readingsOf(0) > 0 && events.readingsOf(1) > 0;
}

} // namespace

class TestHostTcp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesArriveAndWritesLeave();
    void aPeerThatIsNotThereIsWaitedFor();
    void pollingGoesOnAfterThePeerHasClosed();
};

void TestHostTcp::valuesArriveAndWritesLeave()
{
    Plant plant;
    QVERIFY(plant.ready);
    plant.startHost();
    const int id = plant.poller->write(0, QByteArray::fromHex("3412"));
    QVERIFY(plant.recorder.waitFor([&](const RecordedEvents &events) {
        return events.hasEnded(id) && bothRead(events) && events.readings.last().tag == 0 &&
               events.readings.last().raw == 0x1234;
    }));
    QCOMPARE(plant.recorder.events().lastOf(id).state, WriteState::Acknowledged);
    QCOMPARE(plant.poller->values().at(0).quality, Quality::Good);
}

void TestHostTcp::aPeerThatIsNotThereIsWaitedFor()
{
    Plant plant;
    QVERIFY(plant.ready);
    QVERIFY(plant.runner.setPlugged(false));
    plant.startHost();
    QVERIFY(plant.recorder.waitFor(
        [](const RecordedEvents &events) { return events.lineStates.contains(false); }));
    QVERIFY2(plant.recorder.events().lineReasons.first().contains(QLatin1String("refused")),
             qPrintable(plant.recorder.events().lineReasons.first()));
    QVERIFY(plant.runner.setPlugged(true));
    QVERIFY(plant.recorder.waitFor(bothRead));
    QCOMPARE(plant.poller->statistics().lineFailures, quint64(0));
}

void TestHostTcp::pollingGoesOnAfterThePeerHasClosed()
{
    Plant plant;
    QVERIFY(plant.ready);
    plant.startHost();
    for (int time = 0; time < 3; ++time) {
        QVERIFY(plant.recorder.waitFor(bothRead));
        QVERIFY(plant.runner.setPlugged(false));
        QVERIFY(plant.recorder.waitFor(
            [](const RecordedEvents &events) { return events.lineStates.contains(false); }));
        plant.recorder.clear();
        const qint64 plugged_ns = monotonicNow_ns();
        QVERIFY(plant.runner.setPlugged(true));
        QVERIFY(plant.recorder.waitFor(bothRead));
        const qint64 recovery_ns = plant.recorder.events().readings.first().at_ns - plugged_ns;
        qInfo("reading again after %lld ms", static_cast<long long>(recovery_ns / 1000000));
    }
    const Statistics statistics = plant.poller->statistics();
    QCOMPARE(statistics.lineFailures, quint64(3));
    QCOMPARE(statistics.total.stateChanges, quint64(0));
    QCOMPARE(statistics.total.exchanges, statistics.total.outcomes.at(size_t(Outcome::Success)));
    QVERIFY(plant.recorder.events().switches.isEmpty());
}

QTEST_GUILESS_MAIN(TestHostTcp)
#include "tst_host_tcp.moc"
