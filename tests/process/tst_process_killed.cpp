// kvt, and the PLC it polls, killed at moments that nobody has chosen.
#include "tests/process/torture.h"

#include <QRandomGenerator>
#include <QtTest>

class TestProcessKilled : public QObject
{
    Q_OBJECT

    /// Fails the test unless the next poll finds the line free and all values right.
    static void checkThatTheNextPollWorks(const SimulatedLine &line, ValueJudge *judge)
    {
        KvtProcess next;
        QCOMPARE(next.run(pollArguments(line, "--cycles 2 --json --timeout 10000")), 0);
        judge->seesTheRest(&next);
        QCOMPARE(judge->wrong(), 0);
    }

private Q_SLOTS:
    void aKilledPollLeavesLineAndTraceUsable_data() { addLineRows(); }

    // The next one finds the answer to the killed one's request on the line.
    void aKilledPollLeavesLineAndTraceUsable()
    {
        QFETCH(SimulatedLine::Kind, kind);
        const SimulatedLine line(
            kind, constantValues({QStringLiteral("--turnaround"), QStringLiteral("10")}));
        ValueJudge judge(line);
        QVERIFY(judge.isReady());
        QRandomGenerator random(1);
        const QString trace = line.filePath(QStringLiteral("trace"));
        for (int round = 0; round < effort(4, 200); ++round) {
            KvtProcess kvt;
            kvt.start(pollArguments(line, "--json --interval 20 --timeout 10000") +
                      QStringList{QStringLiteral("--trace"), trace});
            QVERIFY(judge.seesGoodLines(&kvt, 1 + round % 5));
            QTest::qWait(static_cast<int>(random.bounded(30)));
            kvt.signal(SIGKILL);
            QCOMPARE(kvt.finish(), -1);
            checkThatTheNextPollWorks(line, &judge);
            KvtProcess decode;
            QCOMPARE(decode.run({QStringLiteral("decode"), trace}), 0);
            KvtProcess replay;
            QCOMPARE(replay.run({QStringLiteral("replay"), trace}), 0);
        }
    }

    void aKilledPlcIsDownUntilTheNext_data() { addLineRows(); }

    void aKilledPlcIsDownUntilTheNext()
    {
        QFETCH(SimulatedLine::Kind, kind);
        auto line = std::make_unique<SimulatedLine>(kind, constantValues());
        ValueJudge judge(*line);
        QVERIFY(judge.isReady());
        KvtProcess kvt;
        kvt.start(pollArguments(*line, "--json --interval 20 --timeout 500"));
        QRandomGenerator random(2);
        const bool isPty = kind == SimulatedLine::Kind::Pty;
        const QString name = line->arguments(QStringLiteral("poll")).last();
        const QStringList port =
            isPty ? QStringList{QStringLiteral("--pty"), name}
                  : QStringList{QStringLiteral("--tcp"), name.section(QLatin1Char(':'), 1)};
        KvtProcess *plc = &line->plc();
        std::unique_ptr<KvtProcess> next;
        for (int round = 0; round < effort(2, 50); ++round) {
            QVERIFY(judge.seesGoodLines(&kvt, 2));
            QTest::qWait(static_cast<int>(random.bounded(30)));
            plc->signal(SIGKILL);
            QCOMPARE(plc->finish(), -1);
            QVERIFY(judge.seesLine(&kvt, false));
            next = std::make_unique<KvtProcess>();
            next->start(
                QStringList{QStringLiteral("sim"), QStringLiteral("--tags"), line->tagFile()} +
                port + constantValues());
            QVERIFY(!next->readLine().isNull());
            plc = next.get();
            QVERIFY(judge.seesLine(&kvt, true));
        }
        QVERIFY(judge.seesGoodLines(&kvt, 2));
        kvt.interrupt();
        QVERIFY(kvt.finish() >= 0);
        const QJsonObject last = judge.seesTheRest(&kvt);
        QCOMPARE(last.value(QStringLiteral("summary"))[QStringLiteral("line_failures")].toInt(),
                 effort(2, 50));
        QCOMPARE(judge.wrong(), 0);
    }
};

QTEST_GUILESS_MAIN(TestProcessKilled)
#include "tst_process_killed.moc"
