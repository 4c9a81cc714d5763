// The simulated PLC behind a real TCP port.
#include "simulator/plc_runner.h"
#include "simulator/tcp_port.h"

#include "tests/unit/simulator/line_peer.h"
#include "tests/unit/simulator/sample_tags.h"

#include <QtTest>

using kvt::FileDescriptor;
using kvt::PlcRunner;
using kvt::SimulatedPlc;
using kvt::TcpPort;

namespace
{

const QByteArray READ_1 = QByteArray("\x05"
                                     "010528\r");
const QByteArray REPLY_1 = QByteArray("\x06"
                                      "0112AB\r");

/// A PLC behind a free port; its word 5.2.1 at station 1 is 12AB.
struct Line {
    Line() : plc(sampleTags(), kvt::PlcConfig(), 1), runner(&plc, &port)
    {
        plc.memory().setValue(1, kvt::Area::D, QStringLiteral("5.2.1"), 0x12AB);
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
    void requestsAreAnswered();
    void aHostMayHangUpAndCallAgain();
    void theNextHostTakesThePlaceOfTheFirst();
    void aPulledLineRefusesCallsUntilItIsPlugged();
    void aHostThatHangsUpBeforeTheAnswerDoesNoHarm();
    void badAddressesAreRefused_data();
    void badAddressesAreRefused();
    void aPortInUseIsRefused();
};

void TestTcpPort::requestsAreAnswered()
{
    const Line line;
    QVERIFY(line.started);
    FileDescriptor host;
    connectTo(&host, line.port.port());
    QCOMPARE(askLine(host, READ_1, REPLY_1.size()), REPLY_1);
    QCOMPARE(line.port.name(), "127.0.0.1:" + QString::number(line.port.port()));
}

void TestTcpPort::aHostMayHangUpAndCallAgain()
{
    const Line line;
    for (int i = 0; i < 3; ++i) {
        FileDescriptor host;
        connectTo(&host, line.port.port());
        QCOMPARE(askLine(host, READ_1, REPLY_1.size()), REPLY_1);
    }
}

void TestTcpPort::theNextHostTakesThePlaceOfTheFirst()
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

void TestTcpPort::aPulledLineRefusesCallsUntilItIsPlugged()
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

void TestTcpPort::aHostThatHangsUpBeforeTheAnswerDoesNoHarm()
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

void TestTcpPort::badAddressesAreRefused_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("nothing") << "";
    QTest::newRow("a name") << "plc";
    QTest::newRow("too many parts") << "127.0.0.0.1";
}

void TestTcpPort::badAddressesAreRefused()
{
    QFETCH(QString, address);
    TcpPort port(0, address);
    QString error;
    QVERIFY(!port.open(&error));
    QCOMPARE(error, QStringLiteral("\"%1\" is no IPv4 address").arg(address));
}

void TestTcpPort::aPortInUseIsRefused()
{
    const Line line;
    SimulatedPlc plc(sampleTags(), kvt::PlcConfig(), 1);
    TcpPort port(line.port.port());
    PlcRunner runner(&plc, &port);
    QString error;
    QVERIFY(!runner.start(&error));
    QCOMPARE(error, line.port.name() + ": Address already in use");
}

QTEST_GUILESS_MAIN(TestTcpPort)
#include "tst_tcp_port.moc"
