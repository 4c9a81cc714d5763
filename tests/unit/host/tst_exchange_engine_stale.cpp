// Bytes that come when none should, and what must not be taken for an answer.
#include "tests/support/engine_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

const QByteArray OTHER_REPLY("\x06"
                             "01ABCD\r");
const QByteArray FOREIGN_REPLY("\x06"
                               "021234\r");
const QByteArray NOTHING_READ = QByteArray::fromHex("0000");

} // namespace

class TestExchangeEngineStale : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bytesBeforeTheFirstRequestAreDropped();
    void bytesWhileTheRequestLeavesSpoilItsAttempt();
    void bytesBeforeTheAnnouncedEndOfTheRequestSpoilItsAttempt();
    void whatArrivesTooSoonOnAPacedLineIsNoAnswer();
    void aFastStationOnAPacedLineIsBelieved();
    void aRepetitionBehindAReplySpoilsItsAttempt();
    void anotherReplyBehindAReplyMakesBothDoubtful();
    void aDuplicateThatRunsIntoTheNextRequestIsNotItsAnswer();
    void aLateReplyIsDroppedInTheSilence();
    void aLongLateReplyExtendsTheSilence();
    void endlessBytesExtendTheSilenceOnlySoFar();
    void aRetryAnsweredInPlaceOfAnEarlierAttemptIsFollowedBySilence();
    void noSilenceFollowsWhenTheLateReplyWasHeard();
    void bytesWhileIdleKeepTheLineQuietForAMoment();
    void theEchoOfARequestIsNoReply();
    void anEchoWhileTheRequestLeavesSpoilsNothing();
    void aForeignReplyIsCounted();
    void aForeignReplyIsRefusedOnDemand();
    void aForeignReplyGoesUnnoticedWhenNotLookedAt();
};

void TestExchangeEngineStale::bytesBeforeTheFirstRequestAreDropped()
{
    EngineBench bench(TWO_WORDS);
    bench.makeEngine();
    bench.engine->lineUp(0);
    QCOMPARE(bench.take(), QByteArray());
    bench.receive(bench.engine->deadline_ns() / EngineBench::MS - 1, REPLY);
    QCOMPARE(bench.log.stale, 8);
    QCOMPARE(bench.left_ms(), 4);
    bench.passDeadline();
    QCOMPARE(bench.send(), FIRST_REQUEST);
    QCOMPARE(bench.log.ended.size(), 0);
}

void TestExchangeEngineStale::bytesWhileTheRequestLeavesSpoilItsAttempt()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.take();
    bench.receive(3, REPLY);
    QCOMPARE(bench.log.stale, 8);
    QCOMPARE(bench.log.ended.size(), 0);
    bench.now_ns += 5 * EngineBench::MS;
    bench.engine->sent(bench.now_ns);
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Disturbed);
    QCOMPARE(bench.word(1, "5.2.1"), NOTHING_READ);
    // The answer is still to come, and may come late.
    QCOMPARE(bench.left_ms(), 8 + 58 + 58);
    bench.receive(20, OTHER_REPLY);
    QCOMPARE(bench.log.late, 8);
    bench.passDeadline();
    QCOMPARE(bench.exchange(10, OTHER_REPLY), FIRST_REQUEST);
    QCOMPARE(bench.word(1, "5.2.1"), QByteArray::fromHex("CDAB"));
}

void TestExchangeEngineStale::bytesBeforeTheAnnouncedEndOfTheRequestSpoilItsAttempt()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.take();
    bench.engine->sent(bench.now_ns + 8 * EngineBench::MS);
    bench.receive(7, REPLY);
    QCOMPARE(bench.log.stale, 8);
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Disturbed);
    QCOMPARE(bench.left_ms(), 1 + 8 + 58 + 58);
    QCOMPARE(bench.word(1, "5.2.1"), NOTHING_READ);
}

void TestExchangeEngineStale::whatArrivesTooSoonOnAPacedLineIsNoAnswer()
{
    EngineBench bench(TWO_WORDS);
    bench.settings.paced = true;
    bench.bringUp();
    bench.send();
    // Eight bytes take 8 ms; read together after 6, they began before the request was out.
    bench.receive(6, REPLY);
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Disturbed);
    QCOMPARE(bench.log.stale, 8);
    QCOMPARE(bench.word(1, "5.2.1"), NOTHING_READ);
}

void TestExchangeEngineStale::aFastStationOnAPacedLineIsBelieved()
{
    EngineBench bench({{AREA_C, 1, "7.0.0.0"}});
    bench.settings.paced = true;
    bench.bringUp();
    bench.send();
    // 144 bytes from a station whose clock is 2 % fast.
    bench.receive(141, QByteArray("\x06"
                                  "01") +
                           QByteArray(140, '7') + '\r');
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].resultCode, 1);
}

// The bytes that have come so far may be the beginning of another reply.
void TestExchangeEngineStale::aRepetitionBehindAReplySpoilsItsAttempt()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.exchange(16, REPLY + REPLY.left(5));
    QCOMPARE(bench.log.stale, 5);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Disturbed);
    QCOMPARE(bench.log.ended[0].resultCode, 0);
    QCOMPARE(bench.word(1, "5.2.1"), NOTHING_READ);
    QCOMPARE(bench.left_ms(), 8 + 58 - 16 + 58);
    bench.receive(3, REPLY.mid(5));
    QCOMPARE(bench.log.late, 3);
    bench.passDeadline();
    QCOMPARE(bench.send(), FIRST_REQUEST);
}

void TestExchangeEngineStale::anotherReplyBehindAReplyMakesBothDoubtful()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.exchange(16, REPLY + OTHER_REPLY);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Disturbed);
    QCOMPARE(bench.log.ended[0].resultCode, 0);
    QCOMPARE(bench.word(1, "5.2.1"), NOTHING_READ);
}

void TestExchangeEngineStale::aDuplicateThatRunsIntoTheNextRequestIsNotItsAnswer()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.exchange(8, REPLY);
    QCOMPARE(bench.take(), SECOND_REQUEST);
    for (const char byte : REPLY)
        bench.receive(1, QByteArray(1, byte));
    bench.engine->sent(bench.now_ns);
    QCOMPARE(bench.log.ended.size(), 2);
    QCOMPARE(bench.log.ended[1].end, AttemptEnd::Disturbed);
    QCOMPARE(bench.log.stale, 8);
    QCOMPARE(bench.word(1, "5.3.1"), NOTHING_READ);
}

void TestExchangeEngineStale::aLateReplyIsDroppedInTheSilence()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.bringUp();
    bench.send();
    bench.passDeadline();
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::NoReply);
    bench.receive(30, REPLY);
    QCOMPARE(bench.log.late, 8);
    QCOMPARE(bench.log.droppedStation, 1);
    QCOMPARE(bench.left_ms(), 28);
    bench.passDeadline();
    QCOMPARE(bench.send(), SECOND_REQUEST);
    QCOMPARE(bench.word(1, "5.3.1"), NOTHING_READ);
}

void TestExchangeEngineStale::aLongLateReplyExtendsTheSilence()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.bringUp();
    bench.send();
    bench.passDeadline();
    bench.receive(57, REPLY.left(1));
    QCOMPARE(bench.left_ms(), 4);
    bench.receive(3, REPLY.mid(1, 1));
    QCOMPARE(bench.left_ms(), 4);
    QCOMPARE(bench.take(), QByteArray());
}

void TestExchangeEngineStale::endlessBytesExtendTheSilenceOnlySoFar()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.settings.longestQuiet_ns = 100 * EngineBench::MS;
    bench.bringUp();
    bench.send();
    bench.passDeadline();
    const qint64 failed_ns = bench.now_ns;
    int bytes = 0;
    while (bench.now_ns < bench.engine->deadline_ns() && bytes < 1000) {
        bench.receive(1, QByteArray(1, 'x'));
        ++bytes;
    }
    QCOMPARE((bench.engine->deadline_ns() - failed_ns) / EngineBench::MS, 58 + 100);
    QCOMPARE(bench.log.late, bytes);
    bench.passDeadline();
    QCOMPARE(bench.send(), SECOND_REQUEST);
}

void TestExchangeEngineStale::aRetryAnsweredInPlaceOfAnEarlierAttemptIsFollowedBySilence()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.send();
    bench.passDeadline();
    bench.passDeadline();
    QCOMPARE(bench.exchange(10, REPLY), FIRST_REQUEST);
    QCOMPARE(bench.log.ended[1].resultCode, 1);
    QCOMPARE(bench.take(), QByteArray());
    QCOMPARE(bench.left_ms(), 8 + 58 - 10 + 58);
    bench.receive(10, REPLY);
    QCOMPARE(bench.log.stale, 8);
    bench.passDeadline();
    QCOMPARE(bench.send(), SECOND_REQUEST);
}

void TestExchangeEngineStale::noSilenceFollowsWhenTheLateReplyWasHeard()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.send();
    bench.passDeadline();
    bench.receive(10, REPLY);
    bench.passDeadline();
    QCOMPARE(bench.exchange(10, REPLY), FIRST_REQUEST);
    QCOMPARE(bench.send(), SECOND_REQUEST);
}

void TestExchangeEngineStale::bytesWhileIdleKeepTheLineQuietForAMoment()
{
    EngineBench bench({});
    bench.bringUp();
    bench.receive(2, QByteArray("??"));
    QCOMPARE(bench.log.stale, 2);
    QCOMPARE(bench.left_ms(), 50);
    bench.passDeadline();
    QCOMPARE(bench.left_ms(), 10);
}

void TestExchangeEngineStale::theEchoOfARequestIsNoReply()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    const QByteArray request = bench.send();
    bench.receive(8, request);
    QCOMPARE(bench.log.echo, 8);
    QCOMPARE(bench.log.ended.size(), 0);
    bench.receive(8, REPLY);
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].resultCode, 1);
    QCOMPARE(bench.word(1, "5.2.1"), QByteArray::fromHex("3412"));
}

void TestExchangeEngineStale::anEchoWhileTheRequestLeavesSpoilsNothing()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    const QByteArray request = bench.take();
    for (int i = 0; i < 7; ++i)
        bench.receive(1, request.mid(i, 1));
    bench.now_ns += EngineBench::MS;
    bench.engine->sent(bench.now_ns);
    QCOMPARE(bench.log.ended.size(), 0);
    bench.receive(8, request.mid(7) + REPLY);
    QCOMPARE(bench.log.echo, 8);
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].resultCode, 1);
}

void TestExchangeEngineStale::aForeignReplyIsCounted()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.exchange(8, FOREIGN_REPLY);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Replied);
    QVERIFY(bench.log.ended[0].doubtful);
    QCOMPARE(bench.log.ended[0].resultCode, 1);
}

void TestExchangeEngineStale::aForeignReplyIsRefusedOnDemand()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.settings.replyChecking = ReplyChecking::Refuse;
    bench.bringUp();
    bench.exchange(8, FOREIGN_REPLY);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Foreign);
    QVERIFY(bench.log.ended[0].doubtful);
    QCOMPARE(bench.log.ended[0].resultCode, 41);
    QCOMPARE(bench.word(1, "5.2.1"), NOTHING_READ);
    QCOMPARE(bench.left_ms(), 8 + 58 - 8 + 58);
}

void TestExchangeEngineStale::aForeignReplyGoesUnnoticedWhenNotLookedAt()
{
    EngineBench bench(TWO_WORDS);
    bench.settings.replyChecking = ReplyChecking::Off;
    bench.bringUp();
    bench.exchange(8, FOREIGN_REPLY);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Replied);
    QVERIFY(!bench.log.ended[0].doubtful);
}

QTEST_APPLESS_MAIN(TestExchangeEngineStale)
#include "tst_exchange_engine_stale.moc"
