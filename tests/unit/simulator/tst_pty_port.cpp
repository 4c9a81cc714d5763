// The simulated PLC on a real pseudo-terminal.
#include "simulator/plc_runner.h"
#include "simulator/pty_port.h"

#include "simulator/fault_text.h"
#include "tests/unit/simulator/line_peer.h"
#include "tests/unit/simulator/sample_tags.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

using kvt::Area;
using kvt::FileDescriptor;
using kvt::PlcRunner;
using kvt::PtyPort;
using kvt::SimulatedPlc;

namespace
{

const QByteArray READ_1 = QByteArray("\x05"
                                     "010528\r");
const QByteArray REPLY_1 = QByteArray("\x06"
                                      "0112AB\r");

kvt::PlcConfig configWith(const char *faults)
{
    kvt::PlcConfig config;
    config.faults = kvt::parseFaults(QLatin1String(faults)).rules;
    return config;
}

/// A PLC on a terminal, linked in a directory of its own; its word 5.2.1 at station 1 is 12AB.
struct Line {
    explicit Line(const kvt::PlcConfig &config = kvt::PlcConfig())
        : plc(sampleTags(), config, 1), port(link), runner(&plc, &port)
    {
        plc.memory().setValue(1, Area::D, QStringLiteral("5.2.1"), 0x12AB);
        QString error;
        started = runner.start(&error);
        if (started)
            openDevice(&host, link);
    }

    QTemporaryDir directory;
    QString link = directory.filePath(QStringLiteral("plc"));
    SimulatedPlc plc;
    PtyPort port;
    PlcRunner runner;
    FileDescriptor host;
    bool started = false;
};

} // namespace

class TestPtyPort : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestsAreAnsweredRawFromTheStart();
    void theHostMayCloseAndOpenAgain();
    void aPulledLineEndsAndComesBackUnderItsName();
    void aLineBreakEndsByItself();
    void anAnswerTakesItsTimeOnTheLine();
    void theMemoryCanBeReadWhileItRuns();
    void theLinkGoesWithThePort();
    void aFileInPlaceOfTheLinkIsLeftAlone();
    void withoutALinkTheDeviceIsTheName();
    void aRunnerThatDoesNotRunTakesNoOrders();
};

void TestPtyPort::requestsAreAnsweredRawFromTheStart()
{
    const Line line;
    QVERIFY(line.started);
    QCOMPARE(askLine(line.host, READ_1, REPLY_1.size()), REPLY_1);
    // CR came through as it is, and nothing was echoed in front of the next answer.
    QCOMPARE(askLine(line.host, READ_1 + READ_1, 2 * REPLY_1.size()), REPLY_1 + REPLY_1);
}

void TestPtyPort::theHostMayCloseAndOpenAgain()
{
    Line line;
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(askLine(line.host, READ_1, REPLY_1.size()), REPLY_1);
        line.host.reset();
        openDevice(&line.host, line.link);
    }
    QCOMPARE(line.runner.withPlc([](SimulatedPlc &plc) { return plc.counters().reads; }), 3);
}

void TestPtyPort::aPulledLineEndsAndComesBackUnderItsName()
{
    Line line;
    QVERIFY(line.runner.setPlugged(false));
    QVERIFY(waitForEnd(line.host));
    QVERIFY(!QFileInfo(line.link).isSymLink());
    line.host.reset();
    QVERIFY(line.runner.setPlugged(true));
    openDevice(&line.host, line.link);
    QCOMPARE(askLine(line.host, READ_1, REPLY_1.size()), REPLY_1);
    QVERIFY(line.runner.setPlugged(true));
    QCOMPARE(askLine(line.host, READ_1, REPLY_1.size()), REPLY_1);
}

void TestPtyPort::aLineBreakEndsByItself()
{
    Line line(configWith("break=1:20ms"));
    QVERIFY(sendBytes(line.host, READ_1));
    QVERIFY(waitForEnd(line.host));
    line.host.reset();
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(line.link).isSymLink(), HANG_GUARD_MS);
    openDevice(&line.host, line.link);
    QCOMPARE(askLine(line.host, READ_1, REPLY_1.size()), REPLY_1);
}

// There is no upper bound to test: a busy machine may take any time.
void TestPtyPort::anAnswerTakesItsTimeOnTheLine()
{
    kvt::PlcConfig config;
    config.byteTimeNs = 1000000;
    config.turnaroundNs = 4000000;
    const Line line(config);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(askLine(line.host, READ_1, REPLY_1.size()), REPLY_1);
    QVERIFY(timer.nsecsElapsed() >= (8 + 4 + 8) * Q_INT64_C(1000000));
}

void TestPtyPort::theMemoryCanBeReadWhileItRuns()
{
    Line line;
    QCOMPARE(askLine(line.host,
                     "\x05"
                     "0203411234\r",
                     6),
             QByteArray("\x06"
                        "0203\r"));
    const auto value = line.runner.withPlc(
        [](SimulatedPlc &plc) { return plc.memory().value(2, Area::D, QStringLiteral("3.4.0")); });
    QCOMPARE(value, std::optional<int>(0x1234));
}

void TestPtyPort::theLinkGoesWithThePort()
{
    Line line;
    QVERIFY(QFileInfo(line.link).isSymLink());
    line.runner.stop();
    QVERIFY(!QFileInfo(line.link).isSymLink());
    QVERIFY(waitForEnd(line.host));
}

void TestPtyPort::aFileInPlaceOfTheLinkIsLeftAlone()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("file"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    QString error;
    PtyPort port(path);
    QVERIFY(!port.open(&error));
    QCOMPARE(error, "link " + path + " cannot be made: File exists");
    QVERIFY(QFileInfo(path).isFile());
    QCOMPARE(port.dataFd(), -1);
}

void TestPtyPort::withoutALinkTheDeviceIsTheName()
{
    PtyPort port;
    QString error;
    QVERIFY(port.open(&error));
    FileDescriptor host;
    openDevice(&host, port.name());
    QVERIFY(host.isOpen());
    port.close();
    QCOMPARE(port.name(), QString());
}

void TestPtyPort::aRunnerThatDoesNotRunTakesNoOrders()
{
    Line line;
    line.runner.stop();
    line.runner.stop();
    QVERIFY(!line.runner.setPlugged(true));
}

QTEST_GUILESS_MAIN(TestPtyPort)
#include "tst_pty_port.moc"
