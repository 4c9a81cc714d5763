// kvt, and the PLC it polls, stopped for a while in the middle of an exchange.
#include "tests/process/torture.h"

#include <QtTest>

class TestProcessStopped : public QObject
{
    Q_OBJECT

    // Stands still for so long; nothing that could be waited for happens meanwhile.
    static void standStill(KvtProcess *process, int duration_ms)
    {
        process->signal(SIGSTOP);
        QTest::qWait(duration_ms);
        process->signal(SIGCONT);
    }

private Q_SLOTS:
    void aStoppedPollGoesOn_data() { addLineRows(); }

    // Longer than a reply may take, so that every exchange is interrupted beyond its time.
    void aStoppedPollGoesOn()
    {
        QFETCH(SimulatedLine::Kind, kind);
        const SimulatedLine line(
            kind, constantValues({QStringLiteral("--turnaround"), QStringLiteral("20")}));
        ValueJudge judge(line);
        QVERIFY(judge.isReady());
        KvtProcess kvt;
        kvt.start(pollArguments(line, "--json --interval 20 --timeout 300"));
        for (int round = 0; round < effort(3, 20); ++round) {
            QVERIFY(judge.seesGoodLines(&kvt, 1 + round % 3));
            standStill(&kvt, round == 0 ? effort(1500, 10000) : 400 + 7 * round);
        }
        QVERIFY(judge.seesGoodLines(&kvt, 3));
        kvt.interrupt();
        QVERIFY(kvt.finish() >= 0);
        QVERIFY(judge.seesTheRest(&kvt).contains(QStringLiteral("summary")));
        QCOMPARE(judge.wrong(), 0);
    }

    void aStoppedPlcComesBack_data() { addLineRows(); }

    // What it answers when it goes on are requests that were given up long before.
    void aStoppedPlcComesBack()
    {
        QFETCH(SimulatedLine::Kind, kind);
        SimulatedLine line(kind, constantValues());
        ValueJudge judge(line);
        QVERIFY(judge.isReady());
        KvtProcess kvt;
        kvt.start(pollArguments(line, "--json --interval 20 --timeout 100 --stale 600000"));
        for (int round = 0; round < effort(2, 12); ++round) {
            QVERIFY(judge.seesGoodLines(&kvt, 2));
            standStill(&line.plc(), round == 0 ? effort(1500, 10000) : 500 + 31 * round);
        }
        QVERIFY(judge.seesGoodLines(&kvt, 3));
        kvt.interrupt();
        QVERIFY(kvt.finish() >= 0);
        const QJsonObject last = judge.seesTheRest(&kvt);
        QVERIFY(totalOf(last)
                    .value(QStringLiteral("attempt_ends"))[QStringLiteral("no_reply")]
                    .toInt() > 0);
        QCOMPARE(judge.wrong(), 0);
    }
};

QTEST_GUILESS_MAIN(TestProcessStopped)
#include "tst_process_stopped.moc"
