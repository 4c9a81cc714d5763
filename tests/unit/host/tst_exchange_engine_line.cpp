// The line goes and comes back.
#include "tests/support/engine_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

void bringUpAgain(EngineBench *bench)
{
    bench->now_ns += 1000 * EngineBench::MS;
    bench->engine->lineUp(bench->now_ns);
    bench->passDeadline();
}

} // namespace

class TestExchangeEngineLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstSilenceDoesNotFollowALongTimeOut();
    void theFirstSilenceFollowsAShortTimeOut();
    void nothingHappensBeforeTheLineIsUp();
    void theLineIsListenedToBeforeTheFirstRequest();
    void aRequestInFlightIsSentAgainAndNothingFails();
    void aRequestThatHadNotLeftIsSentAgain();
    void aRetryKeepsItsNumberOverTheBreak();
    void aFailedRequestIsNotRepeatedAfterTheBreak();
    void bytesWhileTheLineIsDownAreIgnored();
    void everyChangeIsReported();
};

void TestExchangeEngineLine::nothingHappensBeforeTheLineIsUp()
{
    EngineBench bench(TWO_WORDS);
    bench.makeEngine();
    QCOMPARE(bench.engine->deadline_ns(), NEVER);
    bench.engine->deadlineReached(5);
    bench.engine->sent(6);
    bench.receive(1, REPLY);
    QCOMPARE(bench.take(), QByteArray());
    QCOMPARE(bench.log.timesAsked, 0);
    QCOMPARE(bench.log.stale, 0);
}

void TestExchangeEngineLine::theLineIsListenedToBeforeTheFirstRequest()
{
    EngineBench bench(TWO_WORDS);
    bench.makeEngine();
    bench.engine->lineUp(0);
    QCOMPARE(bench.take(), QByteArray());
    QCOMPARE(bench.left_ms(), 50);
    bench.passDeadline();
    QCOMPARE(bench.take(), FIRST_REQUEST);
}

// What a user sets for a slow station is no reason to keep all others waiting at the start; after
// a break the own request may still be answered as late as that.
void TestExchangeEngineLine::theFirstSilenceDoesNotFollowALongTimeOut()
{
    EngineBench bench(TWO_WORDS);
    bench.settings.defaultTiming.replyTimeout_ns = 3000 * EngineBench::MS;
    bench.makeEngine();
    bench.engine->lineUp(0);
    QCOMPARE(bench.left_ms(), 50);
    bench.passDeadline();
    bench.send();
    bench.engine->lineDown(bench.now_ns);
    bench.engine->lineUp(bench.now_ns);
    QCOMPARE(bench.left_ms(), 3000);
}

void TestExchangeEngineLine::theFirstSilenceFollowsAShortTimeOut()
{
    EngineBench bench(TWO_WORDS);
    bench.settings.defaultTiming.replyTimeout_ns = 20 * EngineBench::MS;
    bench.makeEngine();
    bench.engine->lineUp(0);
    QCOMPARE(bench.left_ms(), 20);
    bench.settings.defaultTiming.quietTime_ns = 400 * EngineBench::MS;
    bench.makeEngine();
    bench.engine->lineUp(0);
    QCOMPARE(bench.left_ms(), 400);
}

void TestExchangeEngineLine::aRequestInFlightIsSentAgainAndNothingFails()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.bringUp();
    bench.exchange(5, REPLY.left(3));
    bench.engine->lineDown(bench.now_ns);
    QCOMPARE(bench.engine->deadline_ns(), NEVER);
    QCOMPARE(bench.log.ended.size(), 0);
    bringUpAgain(&bench);
    QCOMPARE(bench.exchange(8, REPLY), FIRST_REQUEST);
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].resultCode, 1);
    QCOMPARE(bench.log.ended[0].number, 1);
    QCOMPARE(bench.send(), SECOND_REQUEST);
    QCOMPARE(bench.log.chosen.size(), 2);
}

void TestExchangeEngineLine::aRequestThatHadNotLeftIsSentAgain()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.engine->lineDown(bench.now_ns);
    QCOMPARE(bench.take(), QByteArray());
    bringUpAgain(&bench);
    QCOMPARE(bench.take(), FIRST_REQUEST);
    QCOMPARE(bench.log.ended.size(), 0);
}

void TestExchangeEngineLine::aRetryKeepsItsNumberOverTheBreak()
{
    EngineBench bench(TWO_WORDS, 1);
    bench.bringUp();
    bench.send();
    bench.passDeadline();
    bench.engine->lineDown(bench.now_ns);
    bringUpAgain(&bench);
    QCOMPARE(bench.send(), FIRST_REQUEST);
    bench.passDeadline();
    QCOMPARE(bench.log.ended.last().number, 2);
    QCOMPARE(bench.log.ended.last().resultCode, 41);
}

void TestExchangeEngineLine::aFailedRequestIsNotRepeatedAfterTheBreak()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.bringUp();
    bench.send();
    bench.passDeadline();
    bench.engine->lineDown(bench.now_ns);
    bringUpAgain(&bench);
    QCOMPARE(bench.send(), SECOND_REQUEST);
}

void TestExchangeEngineLine::bytesWhileTheLineIsDownAreIgnored()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.send();
    bench.engine->lineDown(bench.now_ns);
    bench.receive(8, REPLY);
    QCOMPARE(bench.log.ended.size(), 0);
    QCOMPARE(bench.log.stale, 0);
    QCOMPARE(bench.log.late, 0);
}

void TestExchangeEngineLine::everyChangeIsReported()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.engine->lineDown(bench.now_ns);
    bringUpAgain(&bench);
    QCOMPARE(bench.log.lineStates, QVector<bool>({true, false, true}));
}

QTEST_APPLESS_MAIN(TestExchangeEngineLine)
#include "tst_exchange_engine_line.moc"
