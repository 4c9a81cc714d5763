// The hosts in examples/, as processes, against kvt sim on a pseudo-terminal.
#include "tests/support/simulated_line.h"

#include <QtTest>

namespace
{

const int LIMIT_ms = 30000; // keeps a failed test from hanging

// Runs a host to its end and returns what it prints, with its exit status in front.
QByteArray run(const char *host, const SimulatedLine &line)
{
    const QString port = line.arguments(QString()).last();
    QProcess process;
    process.start(QStringLiteral(KVT_PROGRAMS "/") + QString::fromLatin1(host),
                  {QStringLiteral(KVT_LIBRARY), port});
    if (!process.waitForFinished(LIMIT_ms) || process.exitStatus() != QProcess::NormalExit)
        return "did not end";
    return QByteArray::number(process.exitCode()) + ": " + process.readAllStandardOutput();
}

} // namespace

class TestExampleHosts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theSmallestHostPrintsWhatThePlcHas()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        QVERIFY(line.isReady());
        KvtProcess write;
        QCOMPARE(write.run(line.arguments(QStringLiteral("write D 5.2.1 4660"))), 0);
        QCOMPARE(run("minimal_host", line),
                 "0: " + QByteArray("result 1, value 4660\n").repeated(10));
    }

    void theWholeHostReadsWhatItWrote()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        QVERIFY(line.isReady());
        QCOMPARE(run("polling_host", line), QByteArray("0: write 1, read failure 0, value 4660\n"));
        KvtProcess read;
        QCOMPARE(read.run(line.arguments(QStringLiteral("read D 5.2.1"))), 0);
        QVERIFY(read.output().startsWith("D 5.2.1 at station 1: 4660, "));
    }

    void theWholeHostTellsRefusals()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("refuse=100%")});
        QVERIFY(line.isReady());
        // This refusal is as long as an acknowledgement, too short for a word. The cache keeps a
        // value that the PLC has refused until another is read.
        QCOMPARE(run("polling_host", line),
                 QByteArray("1: write 11, read failure 71, value 4660\n"));
    }

    void theWholeHostOutlivesALateReply()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("late=1-1:600ms")});
        QVERIFY(line.isReady());
        QCOMPARE(run("polling_host", line), QByteArray("0: write 1, read failure 0, value 4660\n"));
    }
};

QTEST_GUILESS_MAIN(TestExampleHosts)
#include "tst_example_hosts.moc"
