// Pauses between exchanges, in which a reply is heard that is one too many.
#include "tests/support/engine_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

const QByteArray OTHER_REPLY("\x06"
                             "01ABCD\r");

// A bench with pauses, whose line has been listened to once.
void bringUp(EngineBench *bench)
{
    bench->settings.checkpointShare = 0.01;
    bench->bringUp();
    bench->exchange(10, REPLY);
    QCOMPARE(bench->take(), QByteArray());
    bench->passDeadline();
}

} // namespace

class TestExchangeEngineCheckpoints : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstReplyIsProvedByAPause()
    {
        EngineBench bench(TWO_WORDS);
        bench.settings.checkpointShare = 0.01;
        bench.bringUp();
        bench.exchange(10, REPLY);
        QVERIFY(bench.log.ended[0].unproven);
        QVERIFY(bench.log.passed.isEmpty());
        QCOMPARE(bench.take(), QByteArray());
        const qint64 began_ns = bench.now_ns;
        bench.passDeadline();
        QCOMPARE(bench.now_ns - began_ns, milliseconds(13) + microseconds(500));
        QCOMPARE(bench.log.passed, QVector<qint64>{began_ns});
        QCOMPARE(bench.exchange(10, REPLY), SECOND_REQUEST);
        QVERIFY(!bench.log.ended[1].unproven);
        QCOMPARE(bench.take(), FIRST_REQUEST);
    }

    void aReplyInAPauseMeansThatTheOthersWereBehind()
    {
        EngineBench bench(TWO_WORDS);
        bringUp(&bench);
        const qint64 proved_ns = bench.log.passed.last();
        bench.exchange(10, REPLY);
        bench.engine->askForProof();
        bench.exchange(10, REPLY);
        QCOMPARE(bench.take(), QByteArray());
        bench.receive(5, OTHER_REPLY);
        QCOMPARE(bench.log.stale, 8);
        QCOMPARE(bench.log.outOfSteps, QVector<qint64>{proved_ns});
        // Silence until nothing more can come, and then everything is proved anew.
        QCOMPARE(bench.left_ms(), 58);
        bench.passDeadline();
        bench.exchange(10, REPLY);
        QVERIFY(bench.log.ended.last().unproven);
        QCOMPARE(bench.take(), QByteArray());
    }

    void bytesWhileARequestLeavesMeanTheSame()
    {
        EngineBench bench(TWO_WORDS);
        bringUp(&bench);
        const qint64 proved_ns = bench.log.passed.last();
        bench.exchange(10, REPLY);
        bench.take();
        bench.receive(3, OTHER_REPLY);
        bench.engine->sent(bench.now_ns);
        QCOMPARE(bench.log.ended.last().end, AttemptEnd::Disturbed);
        QCOMPARE(bench.log.outOfSteps, QVector<qint64>{proved_ns});
    }

    void bytesInTheGapThatAStationNeedsMeanTheSame()
    {
        EngineBench bench(TWO_WORDS);
        bench.settings.confirm = true;
        bench.settings.defaultTiming.gapAfterReply_ns = milliseconds(7);
        bringUp(&bench);
        bench.passDeadline();
        QCOMPARE(bench.log.passed.size(), 1);
        bench.exchange(10, REPLY);
        QVERIFY(bench.log.ended.last().unproven);
        bench.receive(5, OTHER_REPLY);
        QCOMPARE(bench.log.stale, 8);
        QCOMPARE(bench.log.outOfSteps, bench.log.passed);
        // What was taken for the answer is never proved.
        QCOMPARE(bench.left_ms(), 58);
        bench.passDeadline();
        QCOMPARE(bench.log.passed.size(), 1);
    }

    void aReplyThatIsSuddenlyFastIsProvedAtOnce()
    {
        EngineBench bench(TWO_WORDS);
        bringUp(&bench);
        bench.exchange(1, REPLY);
        QVERIFY(bench.log.ended.last().unproven);
        // The true answer comes where it always does.
        bench.receive(9, OTHER_REPLY);
        QCOMPARE(bench.log.outOfSteps.size(), 1);
        QCOMPARE(bench.log.passed.size(), 1);
    }

    // Of a host that was stopped for two seconds. Nothing says how long the station took.
    void aReplyThatWasReadLateMakesNoPauseLonger()
    {
        EngineBench bench(TWO_WORDS);
        bringUp(&bench);
        bench.exchange(2000, REPLY);
        QVERIFY(bench.log.ended.last().unproven);
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(bench.take(), QByteArray());
            QVERIFY(bench.left_ms() <= 14);
            bench.passDeadline();
            bench.exchange(10, REPLY);
        }
    }

    void anAnswerToTheRequestBeforeIsRecognisedByItsLength()
    {
        EngineBench bench({{AREA_D, 1, "5.2.1"}, {AREA_X, 1, "1.2.0"}}, 0);
        bringUp(&bench);
        bench.exchange(10, REPLY); // eight bytes where six are expected
        QCOMPARE(bench.log.ended.last().end, AttemptEnd::Disturbed);
        QCOMPARE(bench.log.outOfSteps.size(), 1);
    }

    // The attempt ends at its sixth byte; the others come in the silence behind it.
    void anAnswerToTheRequestBeforeIsRecognisedByteByByteToo()
    {
        EngineBench bench({{AREA_D, 1, "5.2.1"}, {AREA_X, 1, "1.2.0"}}, 0);
        bringUp(&bench);
        bench.send();
        for (int i = 0; i < REPLY.size(); ++i)
            bench.receive(i == 0 ? 10 : 1, REPLY.mid(i, 1));
        QCOMPARE(bench.log.ended.last().end, AttemptEnd::Replied);
        QCOMPARE(bench.log.late, 2);
        QCOMPARE(bench.log.outOfSteps.size(), 1);
        // What follows it is no more than a late reply.
        bench.receive(5, REPLY);
        QCOMPARE(bench.log.outOfSteps.size(), 1);
    }

    void confirmedRepliesArePausedForUntilTheirOwnTimeIsOver()
    {
        EngineBench bench(TWO_WORDS);
        bench.settings.confirm = true;
        bringUp(&bench);
        for (int i = 0; i < 5; ++i) {
            bench.exchange(10, REPLY);
            QVERIFY(bench.log.ended.last().unproven);
            QCOMPARE(bench.take(), QByteArray());
            QCOMPARE(bench.left_ms(), 13); // the interface may hold back as long as the reply took
            bench.passDeadline();
            QCOMPARE(bench.log.passed.size(), i + 2);
        }
    }

    void whatComesDirectlyBehindALongReplyIsHeardBeforeItIsConfirmed()
    {
        EngineBench bench(TWO_WORDS);
        bench.settings.confirm = true;
        bench.settings.paced = true;
        bringUp(&bench);
        bench.exchange(9, REPLY.left(1));
        bench.receive(7, REPLY.mid(1)); // behind the time by which its answer should have begun
        bench.engine->deadlineReached(bench.now_ns);
        QCOMPARE(bench.log.passed.size(), 1);
        bench.receive(1, OTHER_REPLY.left(1));
        QCOMPARE(bench.log.outOfSteps, bench.log.passed);
    }

    void aCommandIsNotSentAgainWhenTheLineComesBack()
    {
        EngineBench bench({}, 0);
        bench.bringUp();
        QByteArray nothing;
        bench.library.api().SetRegisterData(QString(), AREA_D, QStringLiteral("18.1.0"), 1, nothing,
                                            1, 0, 7);
        bench.engine->deadlineReached(bench.now_ns);
        QCOMPARE(bench.send(), QByteArray("\x05"
                                          "011211\r"));
        bench.engine->lineDown(bench.now_ns);
        QCOMPARE(bench.log.ended.size(), 1);
        QCOMPARE(bench.log.ended[0].end, AttemptEnd::NoReply);
        bench.engine->lineUp(bench.now_ns);
        bench.passDeadline();
        QCOMPARE(bench.take(), QByteArray());
    }
};

QTEST_APPLESS_MAIN(TestExchangeEngineCheckpoints)
#include "tst_exchange_engine_checkpoints.moc"
