// A host and a simulated PLC on a real pseudo-terminal.
#include "host/serial_line.h"
#include "simulator/pty_port.h"
#include "tests/support/plant.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace kvt;

namespace
{

QVector<Tag> plantTags()
{
    return {
        {QStringLiteral("valve"), Area::X, QStringLiteral("1.2.0"), 1, ValueType::U8, QString()},
        {QStringLiteral("level"), Area::D, QStringLiteral("5.2.1"), 1, ValueType::U16, QString()},
        {QStringLiteral("speed"), Area::D, QStringLiteral("3.4.0"), 2, ValueType::U16, QString()},
        {QStringLiteral("recipe"), Area::C, QStringLiteral("7.0.1.4"), 2, ValueType::U8, QString()},
    };
}

/// The folder of the link, made before it and removed after it.
struct LinkFolder {
    QTemporaryDir folder;
};

/// A plant on a pseudo-terminal that the host opens through a link.
class PtyPlant : private LinkFolder, public Plant<PtyPort>
{
public:
    PtyPlant() : Plant(plantTags(), folder.filePath(QStringLiteral("plc"))) {}

    void startHost()
    {
        SerialSettings serial;
        serial.path = port.name();
        serial.baud = 115200;
        Plant::startHost(std::make_unique<SerialLine>(serial));
    }

    void set(int tag, int value)
    {
        const Tag &plantTag = tags.at(tag);
        runner.withPlc([&](SimulatedPlc &simulated) {
            simulated.memory().setValue(plantTag.station, plantTag.area, plantTag.address, value);
            return 0;
        });
    }

    int held(int tag)
    {
        const Tag &plantTag = tags.at(tag);
        return runner.withPlc([&](SimulatedPlc &simulated) {
            return simulated.memory()
                .value(plantTag.station, plantTag.area, plantTag.address)
                .value_or(-1);
        });
    }
};

bool lastTagRead(const RecordedEvents &events)
{
    return events.readingsOf(3) > 0;
}

} // namespace

class TestHostPty : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesOfEveryAreaArrive();
    void aWriteReachesThePlcAndIsReadBack();
    void aOnceReadEnds();
    void aMissingPortIsWaitedFor();
    void pollingGoesOnAfterTheLineWasUnplugged();
    void unfinishedWritesEndWhenTheHostStops();
};

void TestHostPty::valuesOfEveryAreaArrive()
{
    PtyPlant plant;
    QVERIFY(plant.ready);
    const QVector<int> values = {0xA5, 0x1234, 0xFFFE, 0x7B};
    for (int tag = 0; tag < values.size(); ++tag)
        plant.set(tag, values.at(tag));
    plant.startHost();
    QVERIFY(plant.waitFor([&](const RecordedEvents &events) {
        return events.readingsOf(0) > 1 && events.readingsOf(1) > 1 && events.readingsOf(2) > 1 &&
               events.readingsOf(3) > 1;
    }));
    const QVector<CellValue> read = plant.poller->values();
    for (int tag = 0; tag < values.size(); ++tag) {
        QCOMPARE(int(read.at(tag).raw), values.at(tag));
        QCOMPARE(read.at(tag).quality, Quality::Good);
        QVERIFY(!read.at(tag).writePending);
    }
}

void TestHostPty::aWriteReachesThePlcAndIsReadBack()
{
    PtyPlant plant;
    QVERIFY(plant.ready);
    plant.startHost();
    const int id = plant.poller->write(1, QByteArray::fromHex("3412"));
    QVERIFY(plant.waitFor([&](const RecordedEvents &events) {
        return events.hasEnded(id) && !events.readings.isEmpty() &&
               events.readings.last().tag == 1 && events.readings.last().raw == 0x1234;
    }));
    const QVector<WriteState> life = {WriteState::Queued, WriteState::Sent,
                                      WriteState::Acknowledged};
    QCOMPARE(plant.recorder.events().statesOf(id), life);
    QCOMPARE(plant.held(1), 0x1234);
}

void TestHostPty::aOnceReadEnds()
{
    PtyPlant plant;
    QVERIFY(plant.ready);
    plant.startHost();
    const int id = plant.poller->readOnce(3);
    QVERIFY(
        plant.waitFor([](const RecordedEvents &events) { return !events.onceReads.isEmpty(); }));
    const RecordedEvents::OnceRead ended = plant.recorder.events().onceReads.first();
    QCOMPARE(ended.id, id);
    QCOMPARE(ended.tag, 3);
    QVERIFY(ended.good);
}

void TestHostPty::aMissingPortIsWaitedFor()
{
    PtyPlant plant;
    QVERIFY(plant.ready);
    QVERIFY(plant.runner.setPlugged(false));
    plant.startHost();
    QVERIFY(plant.waitUntilDown());
    QVERIFY(!plant.recorder.events().lineReasons.first().isEmpty());
    QVERIFY(plant.runner.setPlugged(true));
    QVERIFY(plant.waitFor([](const RecordedEvents &events) { return !events.readings.isEmpty(); }));
    QCOMPARE(plant.recorder.events().lineStates, QVector<bool>({false, true}));
}

void TestHostPty::pollingGoesOnAfterTheLineWasUnplugged()
{
    PtyPlant plant;
    QVERIFY(plant.ready);
    plant.startHost();
    QVERIFY(plant.waitFor(lastTagRead));
    for (int time = 0; time < 3; ++time)
        QVERIFY(plant.readsAgainAfterABreak(lastTagRead));
    const Statistics statistics = plant.poller->statistics();
    QCOMPARE(statistics.lineFailures, quint64(3));
    QCOMPARE(statistics.total.stateChanges, quint64(0));
    QCOMPARE(statistics.total.exchanges, statistics.total.outcomes.at(size_t(Outcome::Success)));
    QVERIFY(plant.recorder.events().switches.isEmpty());
}

void TestHostPty::unfinishedWritesEndWhenTheHostStops()
{
    PtyPlant plant;
    QVERIFY(plant.ready);
    QVERIFY(plant.runner.setPlugged(false));
    plant.startHost();
    const int id = plant.poller->write(1, QByteArray::fromHex("3412"));
    plant.poller->stop();
    QVERIFY(plant.recorder.events().hasEnded(id));
    QCOMPARE(plant.recorder.events().lastOf(id).state, WriteState::Dropped);
    QCOMPARE(plant.recorder.events().lastOf(id).reason, WriteReason::HostStopped);
}

QTEST_GUILESS_MAIN(TestHostPty)
#include "tst_host_pty.moc"
