// kvt poll on a line that is missing, breaks, echoes or is somebody else's.
#include "tests/support/poll_run.h"

#include <QtTest>

class TestKvtPollLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesOfADeadLineAreNoSuccess()
    {
        const SimulatedLine line(SimulatedLine::Kind::Tcp,
                                 {QStringLiteral("--faults"), QStringLiteral("break=8-8:60s")});
        KvtProcess kvt;
        kvt.start(pollArguments(line, "--stale 100 --interval 20 --json"));
        // No pause will prove any more what was read last.
        for (int notGood = 0; notGood < 5;) {
            const QJsonObject values = kvt.readObject();
            notGood = countOf(values, "stale") + countOf(values, "suspect");
            QVERIFY(kvt.isRunning());
        }
        kvt.interrupt();
        QCOMPARE(kvt.finish(), 1);
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.contains(" the line is still down: "), errors.constData());
        QVERIFY2(errors.endsWith(" 5 of 5 tags have no good value\n"), errors.constData());
    }

    void useIsToldOfALineThatHasALimit()
    {
        const SimulatedLine pty(SimulatedLine::Kind::Pty);
        KvtProcess unlimited;
        QCOMPARE(unlimited.run(pollArguments(pty, "--cycles 3")), 0);
        QVERIFY(!unlimited.output().contains("line in use"));
        const SimulatedLine tcp(SimulatedLine::Kind::Tcp,
                                {QStringLiteral("--baud"), QStringLiteral("115200")});
        KvtProcess limited;
        QCOMPARE(limited.run(pollArguments(tcp, "--cycles 3 --baud 115200")), 0);
        QVERIFY(limited.output().contains("\nline in use: "));
    }

    void anEchoIsNamedOnce()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("echo=100%")});
        const QByteArray echo = "the line sends back what is sent on it";
        KvtProcess poll;
        QCOMPARE(poll.run(pollArguments(line, "--cycles 20 --interval 20")), 0);
        QCOMPARE(poll.errors().count(echo), 1);
        KvtProcess read;
        QCOMPARE(read.run(line.arguments(QStringLiteral("read D 5.2.1"))), 0);
        QCOMPARE(read.errors().count(echo), 1);
    }

    // The server lets each in by hanging up on the other.
    void aSecondProgramOnAServerIsSuspected()
    {
        const SimulatedLine line(SimulatedLine::Kind::Tcp);
        KvtProcess first;
        first.start(pollArguments(line, "--json --timeout 1000"));
        KvtProcess second;
        second.start(pollArguments(line, "--seconds 3 --timeout 1000"));
        QVERIFY(second.finish() >= 0);
        const QByteArray errors = second.errors();
        QVERIFY2(errors.contains("somebody else is probably connected to it"), errors);
        first.interrupt();
        QVERIFY(first.finish() >= 0);
        KvtProcess alone;
        QCOMPARE(alone.run(pollArguments(line, "--cycles 3 --timeout 1000")), 0);
        QCOMPARE(alone.errors(), QByteArray());
    }

    void aLineThatCannotBeOpenedIsAnErrorOfItsOwn()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("poll"), QStringLiteral("--tags"), line.tagFile(),
                          QStringLiteral("--serial"), QStringLiteral("/nowhere/plc")}),
                 3);
        QCOMPARE(kvt.errors(), QByteArray("kvt: /nowhere/plc: No such file or directory\n"));
        QVERIFY(kvt.output().isEmpty());
    }

    void aPortInUseIsRefusedToASecondProgram()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess first;
        first.start(pollArguments(line, "--json --interval 20 --timeout 500"));
        while (countOf(first.readObject(), "good") < 5)
            QVERIFY(first.isRunning());
        const QByteArray refusal = ": in use by another program\n";
        KvtProcess poll;
        QCOMPARE(poll.run(pollArguments(line, "--cycles 1")), 3);
        const QByteArray pollErrors = poll.errors();
        QVERIFY2(pollErrors.endsWith(refusal), pollErrors.constData());
        KvtProcess read;
        QCOMPARE(read.run(line.arguments(QStringLiteral("read D 5.2.1"))), 3);
        const QByteArray readErrors = read.errors();
        QVERIFY2(readErrors.endsWith(refusal), readErrors.constData());
        QVERIFY(read.output().isEmpty());
        first.interrupt();
        QCOMPARE(first.finish(), 0);
        QCOMPARE(totalOf(objects(&first).last()).value(QStringLiteral("retries")).toInt(-1), 0);
        KvtProcess next;
        QCOMPARE(next.run(line.arguments(QStringLiteral("read D 5.2.1"))), 0);
    }

    void aLineThatBreaksIsWaitedFor()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("break=7-7:200ms")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(line, "--cycles 5")), 0);
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.contains(" the line is down: "), errors.constData());
        QVERIFY2(errors.endsWith(" the line is up again\n"), errors.constData());
        QVERIFY(kvt.output().contains("line failures: 1\n"));
    }
};

QTEST_GUILESS_MAIN(TestKvtPollLine)
#include "tst_kvt_poll_line.moc"
