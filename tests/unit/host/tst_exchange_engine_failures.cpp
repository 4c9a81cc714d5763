// Every way in which an attempt can fail, and when the next one follows.
#include "tests/support/engine_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

const QByteArray REFUSAL("\x15"
                         "01\r");

} // namespace

class TestExchangeEngineFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noReplyEndsAtTheTimeout();
    void theTimeoutOfABlockCountsItsLength();
    void aGapInsideAReplyEndsIt();
    void aReplyWithoutCarriageReturnFails();
    void aRefusalCountsOnceNothingCanFollowIt();
    void aReplyBehindARefusalMakesBothWorthless();
    void halfARefusalIsABadReply();
    void aFailedAttemptIsRepeatedUpToTheLimit();
    void aStationCanHaveTimingOfItsOwn();
    void anyLengthEndsAtAGap();
};

void TestExchangeEngineFailures::noReplyEndsAtTheTimeout()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.settings.paced = true;
    bench.bringUp();
    bench.send();
    QCOMPARE(bench.left_ms(), 58);
    bench.passDeadline();
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::NoReply);
    QCOMPARE(bench.log.ended[0].resultCode, 41);
    QCOMPARE(bench.take(), QByteArray());
    QCOMPARE(bench.left_ms(), 58);
    bench.passDeadline();
    QCOMPARE(bench.take(), SECOND_REQUEST);
}

void TestExchangeEngineFailures::theTimeoutOfABlockCountsItsLength()
{
    EngineBench bench({{AREA_C, 1, "7.0.1.4"}});
    bench.settings.paced = true;
    bench.bringUp();
    bench.send();
    QCOMPARE(bench.left_ms(), 50 + 144);
}

void TestExchangeEngineFailures::aGapInsideAReplyEndsIt()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.bringUp();
    bench.exchange(5, REPLY.left(7));
    QCOMPARE(bench.left_ms(), 4);
    bench.passDeadline();
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::BrokenOff);
    QCOMPARE(bench.log.ended[0].resultCode, 71);
    QCOMPARE(bench.log.ended[0].receivedBytes, 7);
    QCOMPARE(bench.left_ms(), 8 + 58 - 9 + 58);
}

void TestExchangeEngineFailures::aReplyWithoutCarriageReturnFails()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.bringUp();
    bench.exchange(8, QByteArray("\x06"
                                 "01123456"));
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].resultCode, 41);
    QCOMPARE(bench.log.stale, 1);
    QCOMPARE(bench.word(1, "5.2.1"), QByteArray::fromHex("0000"));
}

void TestExchangeEngineFailures::aRefusalCountsOnceNothingCanFollowIt()
{
    EngineBench bench(TWO_WORDS, 1);
    bench.bringUp();
    bench.exchange(6, REFUSAL);
    QCOMPARE(bench.log.ended.size(), 0);
    QCOMPARE(bench.left_ms(), 8 + 58 - 6);
    bench.passDeadline();
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Refused);
    QCOMPARE(bench.log.ended[0].resultCode, 0);
    QCOMPARE(bench.log.ended[0].endedAt_ns - bench.log.ended[0].sentAt_ns, milliseconds(6));
    QCOMPARE(bench.left_ms(), 58);
    bench.passDeadline();
    QCOMPARE(bench.exchange(6, REFUSAL), FIRST_REQUEST);
    bench.passDeadline();
    QCOMPARE(bench.log.ended[1].number, 2);
    QCOMPARE(bench.log.ended[1].resultCode, 71);
    bench.passDeadline();
    QCOMPARE(bench.take(), SECOND_REQUEST);
}

void TestExchangeEngineFailures::aReplyBehindARefusalMakesBothWorthless()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.bringUp();
    bench.exchange(6, REFUSAL);
    bench.receive(20, REPLY);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Disturbed);
    QCOMPARE(bench.log.ended[0].resultCode, 41);
    QCOMPARE(bench.log.stale, 8);
    QCOMPARE(bench.left_ms(), 8 + 58 - 26 + 58);
}

void TestExchangeEngineFailures::halfARefusalIsABadReply()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.bringUp();
    bench.send();
    // As noise can have it; the true reply is behind it and must not meet the next request.
    bench.receive(6, QByteArray("\x15\r"));
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Replied);
    QCOMPARE(bench.log.ended[0].resultCode, 71);
    QCOMPARE(bench.left_ms(), 8 + 58 - 6 + 58);
    bench.receive(5, REPLY);
    QCOMPARE(bench.log.late, 8);
}

void TestExchangeEngineFailures::aFailedAttemptIsRepeatedUpToTheLimit()
{
    EngineBench bench(TWO_WORDS, 2);
    bench.bringUp();
    for (int attempt = 1; attempt <= 3; ++attempt) {
        QCOMPARE(bench.send(), FIRST_REQUEST);
        bench.passDeadline();
        QCOMPARE(bench.log.ended.last().number, attempt);
        QCOMPARE(bench.log.ended.last().resultCode, attempt < 3 ? 0 : 41);
        bench.passDeadline();
    }
    QCOMPARE(bench.send(), SECOND_REQUEST);
    QCOMPARE(bench.log.chosen.size(), 2);
}

void TestExchangeEngineFailures::aStationCanHaveTimingOfItsOwn()
{
    EngineBench bench({{AREA_D, 1, "5.2.1"}, {AREA_D, 2, "5.2.1"}}, 0);
    StationTiming slow;
    slow.replyTimeout_ns = 700 * EngineBench::MS;
    slow.quietTime_ns = 300 * EngineBench::MS;
    bench.settings.stations.insert(2, slow);
    bench.settings.paced = true;
    bench.bringUp();
    bench.send();
    QCOMPARE(bench.left_ms(), 58);
    bench.receive(8, REPLY);
    bench.send();
    QCOMPARE(bench.left_ms(), 700);
    bench.passDeadline();
    QCOMPARE(bench.left_ms(), 300);
}

void TestExchangeEngineFailures::anyLengthEndsAtAGap()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.library.api().ComCommunication()->expectedReplyLength = -1;
    bench.settings.paced = true;
    bench.bringUp();
    bench.send();
    QCOMPARE(bench.left_ms(), 50);
    bench.receive(8, QByteArray("\x06"
                                "01"));
    bench.passDeadline();
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::BrokenOff);
    QCOMPARE(bench.log.ended[0].resultCode, 11);
}

QTEST_APPLESS_MAIN(TestExchangeEngineFailures)
#include "tst_exchange_engine_failures.moc"
