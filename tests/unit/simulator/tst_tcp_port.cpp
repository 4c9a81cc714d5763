// The simulated PLC behind a real TCP port.
#include "simulator/plc_runner.h"
#include "simulator/tcp_port.h"

#include "tests/unit/simulator/line_peer.h"
#include "tests/unit/simulator/sample_plc.h"

#include <QtTest>

using namespace kvt;

namespace
{

/// A PLC behind a free port; its word 5.2.1 at station 1 is 12AB.
struct Line {
    Line() : plc(samplePlc()), runner(&plc, &port)
    {
        QString error;
        started = runner.start(&error);
    }

    SimulatedPlc plc;
    TcpPort port;
    PlcRunner runner;
    bool started = false;
};

} // namespace

class TestTcpPort : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestsAreAnswered()
    {
        const Line line;
        QVERIFY(line.started);
        FileDescriptor host;
        connectTo(&host, line.port.port());
        QCOMPARE(askLine(host, READ_1, REPLY_1.size()), REPLY_1);
        QCOMPARE(line.port.name(), "127.0.0.1:" + QString::number(line.port.port()));
    }

    void aHostMayHangUpAndCallAgain()
    {
        const Line line;
        for (int i = 0; i < 3; ++i) {
            FileDescriptor host;
            connectTo(&host, line.port.port());
            QCOMPARE(askLine(host, READ_1, REPLY_1.size()), REPLY_1);
        }
    }

    void theNextHostTakesThePlaceOfTheFirst()
    {
        const Line line;
        FileDescriptor first;
        connectTo(&first, line.port.port());
        QCOMPARE(askLine(first, READ_1, REPLY_1.size()), REPLY_1);
        FileDescriptor second;
        connectTo(&second, line.port.port());
        QCOMPARE(askLine(second, READ_1, REPLY_1.size()), REPLY_1);
        QVERIFY(waitForEnd(first));
    }

    void aPulledLineRefusesCallsUntilItIsPlugged()
    {
        Line line;
        FileDescriptor host;
        connectTo(&host, line.port.port());
        QCOMPARE(askLine(host, READ_1, REPLY_1.size()), REPLY_1);
        QVERIFY(line.runner.setPlugged(false));
        QVERIFY(waitForEnd(host));
        connectTo(&host, line.port.port());
        QVERIFY(!host.isOpen());
        QVERIFY(line.runner.setPlugged(true));
        connectTo(&host, line.port.port());
        QCOMPARE(askLine(host, READ_1, REPLY_1.size()), REPLY_1);
    }

    void aHostThatHangsUpBeforeTheAnswerDoesNoHarm()
    {
        Line line;
        for (int i = 0; i < 20; ++i) {
            FileDescriptor host;
            connectTo(&host, line.port.port());
            QVERIFY(sendBytes(host, READ_1));
        }
        FileDescriptor host;
        connectTo(&host, line.port.port());
        QCOMPARE(askLine(host, READ_1, REPLY_1.size()), REPLY_1);
    }

    void badAddressesAreRefused_data()
    {
        QTest::addColumn<QString>("address");
        QTest::newRow("nothing") << "";
        QTest::newRow("a name") << "plc";
        QTest::newRow("too many parts") << "127.0.0.0.1";
    }

    void badAddressesAreRefused()
    {
        QFETCH(QString, address);
        TcpPort port(0, address);
        QString error;
        QVERIFY(!port.open(&error));
        QCOMPARE(error, QStringLiteral("\"%1\" is no IPv4 address").arg(address));
    }

    void aPortInUseIsRefused()
    {
        const Line line;
        SimulatedPlc plc(sampleTags(), PlcConfig(), 1);
        TcpPort port(line.port.port());
        PlcRunner runner(&plc, &port);
        QString error;
        QVERIFY(!runner.start(&error));
        QCOMPARE(error, line.port.name() + ": Address already in use");
    }
};

QTEST_GUILESS_MAIN(TestTcpPort)
#include "tst_tcp_port.moc"
