// A host and a simulated PLC on a real TCP connection.
#include "host/tcp_line.h"
#include "simulator/tcp_port.h"
#include "tests/support/plant.h"

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

/// A plant behind a TCP port.
class TcpPlant : public Plant<TcpPort>
{
public:
    TcpPlant() : Plant(plantTags()) {}

    void startHost()
    {
        TcpSettings tcp;
        tcp.host = QStringLiteral("127.0.0.1");
        tcp.port = port.port();
        Plant::startHost(std::make_unique<TcpLine>(tcp));
    }
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
    void valuesArriveAndWritesLeave()
    {
        TcpPlant plant;
        QVERIFY(plant.ready);
        plant.startHost();
        const int id = plant.poller->write(0, QByteArray::fromHex("3412"));
        QVERIFY(plant.waitFor([&](const RecordedEvents &events) {
            return events.hasEnded(id) && bothRead(events) && events.readings.last().tag == 0 &&
                   events.readings.last().raw == 0x1234;
        }));
        QCOMPARE(plant.recorder.events().lastOf(id).state, WriteState::Acknowledged);
        QCOMPARE(plant.poller->values().at(0).quality, Quality::Good);
    }

    void aPeerThatIsNotThereIsWaitedFor()
    {
        TcpPlant plant;
        QVERIFY(plant.ready);
        QVERIFY(plant.runner.setPlugged(false));
        plant.startHost();
        QVERIFY(plant.waitUntilDown());
        QVERIFY2(plant.recorder.events().lineReasons.first().contains(QLatin1String("refused")),
                 qPrintable(plant.recorder.events().lineReasons.first()));
        QVERIFY(plant.runner.setPlugged(true));
        QVERIFY(plant.waitFor(bothRead));
        QCOMPARE(plant.poller->statistics().lineFailures, quint64(0));
    }

    void pollingGoesOnAfterThePeerHasClosed()
    {
        TcpPlant plant;
        QVERIFY(plant.ready);
        plant.startHost();
        plant.checkThatPollingOutlivesBreaks(bothRead);
    }
};

QTEST_GUILESS_MAIN(TestHostTcp)
#include "tst_host_tcp.moc"
