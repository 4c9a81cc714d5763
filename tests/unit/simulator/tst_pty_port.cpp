// The simulated PLC on a real pseudo-terminal.
#include "simulator/plc_runner.h"
#include "simulator/pty_port.h"

#include "simulator/fault_text.h"
#include "tests/unit/simulator/line_peer.h"
#include "tests/unit/simulator/sample_plc.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

using namespace kvt;

namespace
{

PlcConfig configWith(const char *faults)
{
    PlcConfig config;
    config.faults = parseFaults(QLatin1String(faults)).rules;
    return config;
}

/// A PLC on a terminal, linked in a directory of its own; its word 5.2.1 at station 1 is 12AB.
struct Line {
    explicit Line(const PlcConfig &config = PlcConfig())
        : plc(samplePlc(config)), port(link), runner(&plc, &port)
    {
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
    void requestsAreAnsweredRawFromTheStart()
    {
        const Line line;
        QVERIFY(line.started);
        QCOMPARE(askLine(line.host, READ_1, REPLY_1.size()), REPLY_1);
        // CR came through as it is, and nothing was echoed in front of the next answer.
        QCOMPARE(askLine(line.host, READ_1 + READ_1, 2 * REPLY_1.size()), REPLY_1 + REPLY_1);
    }

    void theHostMayCloseAndOpenAgain()
    {
        Line line;
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(askLine(line.host, READ_1, REPLY_1.size()), REPLY_1);
            line.host.reset();
            openDevice(&line.host, line.link);
        }
        QCOMPARE(line.runner.withPlc([](SimulatedPlc &plc) { return plc.counters().reads; }), 3);
    }

    void aPulledLineEndsAndComesBackUnderItsName()
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

    void aLineBreakEndsByItself()
    {
        Line line(configWith("break=1:20ms"));
        QVERIFY(sendBytes(line.host, READ_1));
        QVERIFY(waitForEnd(line.host));
        line.host.reset();
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(line.link).isSymLink(), HANG_GUARD_ms);
        openDevice(&line.host, line.link);
        QCOMPARE(askLine(line.host, READ_1, REPLY_1.size()), REPLY_1);
    }

    // There is no upper bound to test: a busy machine may take any time.
    void anAnswerTakesItsTimeOnTheLine()
    {
        PlcConfig config;
        config.byteTime_ns = 1000000;
        config.turnaround_ns = 4000000;
        const Line line(config);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(askLine(line.host, READ_1, REPLY_1.size()), REPLY_1);
        QVERIFY(timer.nsecsElapsed() >= (8 + 4 + 8) * Q_INT64_C(1000000));
    }

    void theMemoryCanBeReadWhileItRuns()
    {
        Line line;
        QCOMPARE(askLine(line.host, request("0203411234"), 6), reply("0203"));
        const auto value = line.runner.withPlc([](SimulatedPlc &plc) {
            return plc.memory().value(2, Area::D, QStringLiteral("3.4.0"));
        });
        QCOMPARE(value, std::optional<int>(0x1234));
    }

    void theLinkGoesWithThePort()
    {
        Line line;
        QVERIFY(QFileInfo(line.link).isSymLink());
        line.runner.stop();
        QVERIFY(!QFileInfo(line.link).isSymLink());
        QVERIFY(waitForEnd(line.host));
    }

    void aFileInPlaceOfTheLinkIsLeftAlone()
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

    void withoutALinkTheDeviceIsTheName()
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

    void aRunnerThatDoesNotRunTakesNoOrders()
    {
        Line line;
        line.runner.stop();
        line.runner.stop();
        QVERIFY(!line.runner.setPlugged(true));
    }
};

QTEST_GUILESS_MAIN(TestPtyPort)
#include "tst_pty_port.moc"
