// A host and a simulated PLC on a real pseudo-terminal.
#include "host/serial_line.h"
#include "simulator/pty_port.h"
#include "tests/support/plant.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

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

    SerialSettings serialSettings() const
    {
        SerialSettings serial;
        serial.path = port.name();
        serial.baud = 115200;
        return serial;
    }

    void startHost() { Plant::startHost(std::make_unique<SerialLine>(serialSettings())); }

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

const QString IN_USE = QStringLiteral("in use by another program");

speed_t speedOf(const SerialLine &line)
{
    termios mode = {};
    return tcgetattr(line.descriptor(), &mode) == 0 ? cfgetospeed(&mode) : B0;
}

/// A terminal whose user has asked for it alone, which the superuser may overlook.
class ExclusiveTerminal
{
public:
    ExclusiveTerminal()
    {
        if (grantpt(master_) != 0 || unlockpt(master_) != 0)
            return;
        const char *path = ptsname(master_);
        user_ = ::open(path, O_RDWR | O_NOCTTY | O_CLOEXEC);
        constexpr mode_t EVERYONE = 0666;
        constexpr uid_t NOBODY = 65534;
        ready_ = ioctl(user_, TIOCEXCL) == 0 && chmod(path, EVERYONE) == 0 &&
                 (wasUser_ != 0 || seteuid(NOBODY) == 0);
    }
    ~ExclusiveTerminal()
    {
        if (seteuid(wasUser_) != 0)
            qFatal("the user cannot be set back");
        ::close(user_);
        ::close(master_);
    }
    ExclusiveTerminal(const ExclusiveTerminal &) = delete;
    ExclusiveTerminal &operator=(const ExclusiveTerminal &) = delete;

    bool isReady() const { return ready_; }
    QString path() const { return QString::fromLocal8Bit(ptsname(master_)); }

private:
    uid_t wasUser_ = geteuid();
    int master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    int user_ = -1;
    bool ready_ = false;
};

} // namespace

class TestHostPty : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesOfEveryAreaArrive()
    {
        PtyPlant plant;
        QVERIFY(plant.ready);
        const QVector<int> values = {0xA5, 0x1234, 0xFFFE, 0x7B};
        for (int tag = 0; tag < values.size(); ++tag)
            plant.set(tag, values.at(tag));
        plant.startHost();
        QVERIFY(plant.waitFor([&](const RecordedEvents &events) {
            return events.readingsOf(0) > 1 && events.readingsOf(1) > 1 &&
                   events.readingsOf(2) > 1 && events.readingsOf(3) > 1;
        }));
        const QVector<TagValue> read = plant.poller->values();
        for (int tag = 0; tag < values.size(); ++tag) {
            QCOMPARE(int(read.at(tag).raw), values.at(tag));
            QCOMPARE(read.at(tag).quality, Quality::Good);
            QVERIFY(!read.at(tag).writePending);
        }
    }

    void aWriteReachesThePlcAndIsReadBack()
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

    void aOnceReadEnds()
    {
        PtyPlant plant;
        QVERIFY(plant.ready);
        plant.startHost();
        const int id = plant.poller->readOnce(3);
        QVERIFY(plant.waitFor(
            [](const RecordedEvents &events) { return !events.onceReads.isEmpty(); }));
        const RecordedEvents::OnceRead ended = plant.recorder.events().onceReads.first();
        QCOMPARE(ended.id, id);
        QCOMPARE(ended.tag, 3);
        QVERIFY(ended.good);
    }

    void aMissingPortIsWaitedFor()
    {
        PtyPlant plant;
        QVERIFY(plant.ready);
        QVERIFY(plant.runner.setPlugged(false));
        plant.startHost();
        QVERIFY(plant.waitUntilDown());
        QVERIFY(!plant.recorder.events().lineReasons.first().isEmpty());
        QVERIFY(plant.runner.setPlugged(true));
        QVERIFY(
            plant.waitFor([](const RecordedEvents &events) { return !events.readings.isEmpty(); }));
        QCOMPARE(plant.recorder.events().lineStates, QVector<bool>({false, true}));
    }

    void aPortIsForOneLineAtATime()
    {
        PtyPlant plant;
        QVERIFY(plant.ready);
        SerialLine first(plant.serialSettings());
        SerialSettings slower = plant.serialSettings();
        slower.baud = 9600;
        SerialLine second(slower);
        QString error;
        QCOMPARE(first.open(&error), Opening::Done);
        QCOMPARE(second.open(&error), Opening::Failed);
        QCOMPARE(error, IN_USE);
        QCOMPARE(second.descriptor(), -1);
        // The attempt has not touched the speed of the line in use.
        QCOMPARE(speedOf(first), speed_t{B115200});
        first.close();
        QCOMPARE(second.open(&error), Opening::Done);
        QCOMPARE(speedOf(second), speed_t{B9600});
    }

    void aPortThatAnotherHasForItselfIsInUse()
    {
        const ExclusiveTerminal terminal;
        QVERIFY(terminal.isReady());
        SerialSettings serial;
        serial.path = terminal.path();
        SerialLine line(serial);
        QString error;
        QCOMPARE(line.open(&error), Opening::Failed);
        QCOMPARE(error, IN_USE);
    }

    void aPortInUseIsWaitedFor()
    {
        PtyPlant plant;
        QVERIFY(plant.ready);
        SerialLine other(plant.serialSettings());
        QString error;
        QCOMPARE(other.open(&error), Opening::Done);
        plant.startHost();
        QVERIFY(plant.waitUntilDown());
        QCOMPARE(plant.recorder.events().lineReasons.first(), IN_USE);
        other.close();
        QVERIFY(
            plant.waitFor([](const RecordedEvents &events) { return !events.readings.isEmpty(); }));
        QCOMPARE(plant.recorder.events().lineStates, QVector<bool>({false, true}));
    }

    void pollingGoesOnAfterTheLineWasUnplugged()
    {
        PtyPlant plant;
        QVERIFY(plant.ready);
        plant.startHost();
        plant.checkThatPollingOutlivesBreaks(lastTagRead);
    }

    void unfinishedWritesEndWhenTheHostStops()
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
};

QTEST_GUILESS_MAIN(TestHostPty)
#include "tst_host_pty.moc"
