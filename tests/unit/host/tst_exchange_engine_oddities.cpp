// What counts as odd, where exactly it begins to, and what it leads to.
#include "tests/support/engine_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

const QByteArray REFUSAL("\x15"
                         "01\r");
const QVector<BenchVariable> WORD_AND_BYTE = {{AREA_D, 1, "5.2.1"}, {AREA_X, 1, "1.2.0"}};

const QByteArray COMMAND("\x05"
                         "011211\r");

// A bench with pauses, whose line has been listened to once behind a reply of 10 ms.
void bringUp(EngineBench *bench)
{
    bench->settings.checkpointShare = 0.01;
    bench->bringUp();
    bench->exchange(10, REPLY);
    bench->passDeadline();
    QCOMPARE(bench->log.passed.size(), 1);
}

QByteArray blockReply()
{
    return "\x06"
           "01" +
           QByteArray(140, '7') + '\r';
}

} // namespace

class TestExchangeEngineOddities : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aReplyInTheMomentWhenTheRequestHasLeftIsOne()
    {
        EngineBench bench(TWO_WORDS);
        bench.bringUp();
        bench.exchange(0, REPLY);
        QCOMPARE(bench.log.ended[0].end, AttemptEnd::Replied);
        QCOMPARE(bench.log.stale, 0);
    }

    // 144 bytes take 144 ms, and 3 % of that is for the station's clock.
    void threePerCentTooFastIsBelieved_data()
    {
        QTest::addColumn<qint64>("earlier_ns");
        QTest::addColumn<bool>("isBelieved");
        QTest::newRow("as fast as may be") << qint64(0) << true;
        QTest::newRow("faster") << qint64(1) << false;
    }

    void threePerCentTooFastIsBelieved()
    {
        QFETCH(qint64, earlier_ns);
        QFETCH(bool, isBelieved);
        EngineBench bench({{AREA_C, 1, "7.0.0.0"}});
        bench.settings.paced = true;
        bench.bringUp();
        bench.send();
        bench.now_ns += milliseconds(144) - microseconds(4320) - earlier_ns;
        bench.receive(0, blockReply());
        QCOMPARE(bench.log.ended[0].end, isBelieved ? AttemptEnd::Replied : AttemptEnd::Disturbed);
        QCOMPARE(bench.log.ended[0].receivedBytes, isBelieved ? 144 : 0);
        QCOMPARE(bench.log.stale, isBelieved ? 0 : 144);
    }

    void whatIsNoEchoOfTheLeavingRequestIsCountedAlone()
    {
        EngineBench bench(TWO_WORDS);
        bench.bringUp();
        bench.take();
        bench.receive(4, FIRST_REQUEST.left(4) + "xyz");
        QCOMPARE(bench.log.echo, 4);
        QCOMPARE(bench.log.stale, 3);
    }

    void theTimeOfAReplyIsThatOfItsFirstByte()
    {
        EngineBench bench(TWO_WORDS);
        bringUp(&bench);
        bench.exchange(10, REPLY.left(4));
        bench.receive(3, REPLY.mid(4));
        bench.engine->askForProof();
        bench.exchange(10, REPLY);
        QCOMPARE(bench.take(), QByteArray());
        QCOMPARE(bench.engine->deadline_ns() - bench.now_ns, milliseconds(13) + microseconds(500));
    }

    void aReplyThatBeginsAsItsTimeEndsIsInTime()
    {
        EngineBench bench(TWO_WORDS);
        bringUp(&bench);
        bench.exchange(8 + 58, REPLY);
        QCOMPARE(bench.take(), QByteArray());
        QCOMPARE(bench.engine->deadline_ns() - bench.now_ns, milliseconds(83) + microseconds(500));
    }

    void aRefusalInPiecesIsWaitedBehindAsOneInOnePiece()
    {
        EngineBench bench(TWO_WORDS);
        bench.bringUp();
        bench.exchange(6, REFUSAL.left(2));
        bench.receive(1, REFUSAL.mid(2));
        QCOMPARE(bench.log.ended.size(), 0);
        QCOMPARE(bench.left_ms(), 8 + 58 - 7);
    }

    void aRefusalIsNothingOdd()
    {
        EngineBench bench(TWO_WORDS);
        bringUp(&bench);
        bench.exchange(6, REFUSAL);
        bench.passDeadline();
        QCOMPARE(bench.log.ended.last().end, AttemptEnd::Refused);
        bench.passDeadline();
        QCOMPARE(bench.exchange(10, REPLY), SECOND_REQUEST);
        QVERIFY(!bench.log.ended.last().unproven);
        QCOMPARE(bench.log.outOfSteps.size(), 0);
    }

    void aHostThatLookedAtARefusalLateGoesOnAtOnce()
    {
        EngineBench bench(TWO_WORDS);
        bench.bringUp();
        bench.exchange(6, REFUSAL);
        bench.now_ns += milliseconds(1000);
        bench.engine->deadlineReached(bench.now_ns);
        QCOMPARE(bench.take(), FIRST_REQUEST);
    }

    void aLostReplyIsOdd()
    {
        EngineBench bench(TWO_WORDS);
        bringUp(&bench);
        bench.send();
        bench.passDeadline();
        bench.passDeadline();
        QCOMPARE(bench.exchange(10, REPLY), SECOND_REQUEST);
        QVERIFY(bench.log.ended.last().unproven);
    }

    // Not only the next reply, which nothing has proved yet in any case.
    void bytesInTheFirstSilenceAreOdd()
    {
        EngineBench bench(TWO_WORDS);
        bench.settings.checkpointShare = 0.01;
        bench.makeEngine();
        bench.engine->lineUp(0);
        bench.receive(1, "x");
        bench.passDeadline();
        bench.exchange(10, REPLY);
        bench.passDeadline();
        QCOMPARE(bench.log.passed.size(), 1);
        bench.exchange(10, REPLY);
        QVERIFY(bench.log.ended.last().unproven);
    }

    void silenceFollowsARetryWhereAnotherAnswerMayCome()
    {
        EngineBench bench(TWO_WORDS);
        bench.bringUp();
        bench.exchange(10, REPLY + "x");
        QCOMPARE(bench.log.ended[0].end, AttemptEnd::Disturbed);
        bench.passDeadline();
        QCOMPARE(bench.exchange(10, REPLY), FIRST_REQUEST);
        QCOMPARE(bench.take(), QByteArray());
    }

    void noneFollowsWhereTheOtherAnswerWasBrokenOff()
    {
        EngineBench bench(TWO_WORDS);
        bench.bringUp();
        bench.exchange(10, REPLY.left(7));
        bench.passDeadline();
        QCOMPARE(bench.log.ended[0].end, AttemptEnd::BrokenOff);
        bench.passDeadline();
        QCOMPARE(bench.exchange(10, REPLY), FIRST_REQUEST);
        QCOMPARE(bench.take(), SECOND_REQUEST);
    }

    // Where a reply was one behind, silence proves nothing until one was right behind another kind.
    void aPauseIsVoidWhileRepliesAreBehind()
    {
        EngineBench bench(WORD_AND_BYTE, 0);
        bringUp(&bench);
        bench.exchange(10, REPLY); // eight bytes where six are expected
        QCOMPARE(bench.log.ended.last().end, AttemptEnd::Disturbed);
        bench.engine->askForProof();
        bench.passDeadline();
        QCOMPARE(bench.take(), QByteArray());
        bench.passDeadline();
        QCOMPARE(bench.log.timesVoid, 1);
        QCOMPARE(bench.log.passed.size(), 1);
    }

    void aCommandThatHadNotLeftIsSentWhenTheLineIsBack()
    {
        EngineBench bench({}, 0);
        bench.bringUp();
        QByteArray nothing;
        bench.library.api().SetRegisterData(QString(), AREA_D, QStringLiteral("18.1.0"), 1, nothing,
                                            1, 0, 7);
        bench.engine->deadlineReached(bench.now_ns);
        bench.engine->lineDown(bench.now_ns);
        QCOMPARE(bench.log.ended.size(), 0);
        bench.engine->lineUp(bench.now_ns);
        bench.passDeadline();
        QCOMPARE(bench.take(), COMMAND);
    }
};

QTEST_APPLESS_MAIN(TestExchangeEngineOddities)
#include "tst_exchange_engine_oddities.moc"
