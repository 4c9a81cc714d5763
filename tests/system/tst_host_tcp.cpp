// A host and a simulated PLC on a real TCP connection.
#include "host/tcp_line.h"
#include "simulator/tcp_port.h"
#include "tests/support/plant.h"

#include <QtTest>

#include <condition_variable>
#include <mutex>

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

    void startHost() { startHost(QStringLiteral("127.0.0.1"), lookUpHost); }

    void startHost(const QString &host, const HostLookup &lookup)
    {
        TcpSettings tcp;
        tcp.host = host;
        tcp.port = port.port();
        Plant::startHost(std::make_unique<TcpLine>(tcp, lookup));
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

    // Nobody listens at the first two; the last one is the plant's.
    void everyAddressOfAHostIsTried()
    {
        TcpPlant plant;
        QVERIFY(plant.ready);
        plant.startHost(QStringLiteral("plant.example"), [](const QString &, int port) {
            FoundAddresses found;
            for (const char *host : {"::1", "127.0.0.2", "127.0.0.1"})
                found.addresses += lookUpHost(QString::fromLatin1(host), port).addresses;
            return found;
        });
        QVERIFY(plant.waitFor(bothRead));
    }

    void aNameThatIsNotKnownIsTold()
    {
        TcpPlant plant;
        QVERIFY(plant.ready);
        plant.startHost(QStringLiteral("plant.example"), [](const QString &, int) {
            return FoundAddresses{{}, QStringLiteral("Name or service not known")};
        });
        QVERIFY(plant.waitFor([](const RecordedEvents &events) {
            return events.lineReasons.contains(QStringLiteral("Name or service not known"));
        }));
    }

    void aSlowNameServerHoldsNobodyUp()
    {
        struct Server {
            std::mutex mutex;
            std::condition_variable changed;
            bool asked = false;
            bool answers = false;
        };
        const auto server = std::make_shared<Server>();
        TcpPlant plant;
        QVERIFY(plant.ready);
        plant.startHost(QStringLiteral("plant.example"), [server](const QString &, int port) {
            std::unique_lock<std::mutex> lock(server->mutex);
            server->asked = true;
            server->changed.notify_all();
            server->changed.wait(lock, [&] { return server->answers; });
            return lookUpHost(QStringLiteral("127.0.0.1"), port);
        });
        {
            std::unique_lock<std::mutex> lock(server->mutex);
            server->changed.wait(lock, [&] { return server->asked; });
        }
        // Would wait for good if the polling thread did.
        plant.poller->stop();
        const std::lock_guard<std::mutex> lock(server->mutex);
        server->answers = true;
        server->changed.notify_all();
    }
};

QTEST_GUILESS_MAIN(TestHostTcp)
#include "tst_host_tcp.moc"
