// Every way in which an exchange can go well.
#include "tests/support/engine_bench.h"

#include <QtTest>

using namespace kvt;

class TestExchangeEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aReplyIsCompleteAtItsExpectedLength();
    void aReplyMayArriveInPieces();
    void theNextRequestLeavesInTheSameCall();
    void theRotationComesRound();
    void aReplyIsCompleteAtCarriageReturn();
    void carriageReturnEndsNothingInRemoteMode();
    void remoteModeHoldsAStationToItsWayOfAnswering();
    void aLineWithoutAPaceMayStillBeSendingTheRequest();
    void aReplyThatHasBegunIsNotCutOffAtTheTimeout();
    void aGapAfterTheReplyIsKeptWhereAStationNeedsOne();
    void anyLengthEndsAtCarriageReturn();
    void noExpectedReplyEndsAtOnce();
    void anIdleEngineAsksAgain();
    void anIdleEngineIsWokenUpByAnyCall();
    void sixWritesInARowLeaveWithoutAPause();
    void callsBeforeTheDeadlineChangeNothing();
    void sentMayBeToldInAdvance();
};

void TestExchangeEngine::aReplyIsCompleteAtItsExpectedLength()
{
    EngineBench bench(TWO_WORDS);
    QVERIFY2(bench.library.isLoaded(), qPrintable(bench.error));
    bench.bringUp();
    QCOMPARE(bench.exchange(10, REPLY), FIRST_REQUEST);
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Replied);
    QCOMPARE(bench.log.ended[0].resultCode, 1);
    QCOMPARE(bench.log.ended[0].receivedBytes, 8);
    QCOMPARE(bench.log.ended[0].number, 1);
    QCOMPARE(bench.log.ended[0].endedAt_ns - bench.log.ended[0].sentAt_ns, 10 * EngineBench::MS);
    QCOMPARE(bench.word(1, "5.2.1"), QByteArray::fromHex("3412"));
}

void TestExchangeEngine::aReplyMayArriveInPieces()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.send();
    for (int i = 0; i < REPLY.size(); ++i) {
        QCOMPARE(bench.log.ended.size(), 0);
        bench.receive(3, REPLY.mid(i, 1));
    }
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].resultCode, 1);
}

void TestExchangeEngine::theNextRequestLeavesInTheSameCall()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.exchange(10, REPLY);
    QCOMPARE(bench.take(), SECOND_REQUEST);
    QCOMPARE(bench.take(), QByteArray());
    QCOMPARE(bench.engine->deadline_ns(), NEVER);
}

void TestExchangeEngine::theRotationComesRound()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    QVector<QByteArray> requests;
    for (int i = 0; i < 4; ++i) {
        requests.append(bench.send());
        bench.receive(8, REPLY);
    }
    const QVector<QByteArray> expected = {FIRST_REQUEST, SECOND_REQUEST, FIRST_REQUEST,
                                          SECOND_REQUEST};
    QCOMPARE(requests, expected);
    QCOMPARE(bench.log.chosen.size(), 5);
}

void TestExchangeEngine::aReplyIsCompleteAtCarriageReturn()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.bringUp();
    bench.exchange(5, QByteArray("\x06"
                                 "01\r"));
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Replied);
    QCOMPARE(bench.log.ended[0].resultCode, 71);
    // More may follow what is too short, until the reply was due and for as long as a silence.
    QCOMPARE(bench.take(), QByteArray());
    QCOMPARE(bench.left_ms(), 8 + 58 - 5 + 58);
}

void TestExchangeEngine::carriageReturnEndsNothingInRemoteMode()
{
    EngineBench bench(TWO_WORDS);
    bench.settings.remoteMode = true;
    bench.info.remoteMode = 1;
    bench.bringUp();
    const QByteArray envelope = bench.send();
    QCOMPARE(envelope.size(), 22);
    bench.receive(2, QByteArray("\r\r\r1234"));
    QCOMPARE(bench.log.ended.size(), 0);
    bench.receive(1, QByteArray("\r"));
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].resultCode, 1);
    QVERIFY(bench.log.ended[0].doubtful);
}

void TestExchangeEngine::remoteModeHoldsAStationToItsWayOfAnswering()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.settings.remoteMode = true;
    bench.info.remoteMode = 1;
    bench.bringUp();
    bench.exchange(5, REPLY);
    QCOMPARE(bench.log.ended.last().resultCode, 1);
    QVERIFY(!bench.log.ended.last().doubtful);
    bench.exchange(5, QByteArray("\x06"
                                 "021234\r"));
    QCOMPARE(bench.log.ended.last().end, AttemptEnd::Foreign);
    QVERIFY(bench.log.ended.last().resultCode != 1);
}

void TestExchangeEngine::aLineWithoutAPaceMayStillBeSendingTheRequest()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.bringUp();
    bench.send();
    QCOMPARE(bench.left_ms(), 8 + 58);
    bench.receive(8 + 57, REPLY);
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].resultCode, 1);
}

void TestExchangeEngine::aReplyThatHasBegunIsNotCutOffAtTheTimeout()
{
    EngineBench bench(TWO_WORDS);
    bench.bringUp();
    bench.exchange(57, REPLY.left(4));
    QCOMPARE(bench.left_ms(), 4);
    bench.receive(3, REPLY.mid(4));
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].resultCode, 1);
}

void TestExchangeEngine::aGapAfterTheReplyIsKeptWhereAStationNeedsOne()
{
    EngineBench bench({{AREA_D, 1, "5.2.1"}, {AREA_D, 2, "5.2.1"}});
    StationTiming slow;
    slow.gapAfterReply_ns = 7 * EngineBench::MS;
    bench.settings.stations.insert(1, slow);
    bench.bringUp();
    bench.exchange(8, REPLY);
    QCOMPARE(bench.take(), QByteArray());
    QCOMPARE(bench.left_ms(), 7);
    bench.passDeadline();
    QVERIFY(!bench.send().isEmpty());
    bench.receive(8, QByteArray("\x06"
                                "021234\r"));
    QVERIFY(!bench.take().isEmpty());
}

// The driver's own builders always expect a length, so these two change the pending record, which
// the driver hands out.
void TestExchangeEngine::anyLengthEndsAtCarriageReturn()
{
    EngineBench bench(TWO_WORDS);
    bench.library.api().ComCommunication()->expectedReplyLength = -1;
    bench.bringUp();
    bench.exchange(8, QByteArray("\x06"
                                 "0112345678\r"));
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].receivedBytes, 12);
    QCOMPARE(bench.log.ended[0].resultCode, 1);
}

void TestExchangeEngine::noExpectedReplyEndsAtOnce()
{
    EngineBench bench(TWO_WORDS, 0);
    bench.library.api().ComCommunication()->expectedReplyLength = 0;
    bench.bringUp();
    bench.send();
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].end, AttemptEnd::Replied);
    QCOMPARE(bench.log.ended[0].receivedBytes, 0);
}

void TestExchangeEngine::anIdleEngineAsksAgain()
{
    EngineBench bench({});
    bench.bringUp();
    QCOMPARE(bench.take(), QByteArray());
    QCOMPARE(bench.left_ms(), 10);
    const int asked = bench.log.timesAsked;
    bench.passDeadline();
    QCOMPARE(bench.log.timesAsked, asked + 1);
    QCOMPARE(bench.left_ms(), 10);
}

void TestExchangeEngine::anIdleEngineIsWokenUpByAnyCall()
{
    EngineBench bench({});
    bench.bringUp();
    QByteArray value("\x34\x12");
    bench.library.api().SetRegisterData(QString(), AREA_D, QStringLiteral("5.2.1"), 1, value, 1, 0,
                                        7);
    bench.engine->deadlineReached(bench.now_ns + 1);
    QCOMPARE(bench.take(), QByteArray("\x05"
                                      "0105291234\r"));
    QCOMPARE(bench.log.chosen.last().kind, RequestKind::Write);
    QCOMPARE(bench.log.chosen.last().id, 7);
}

void TestExchangeEngine::sixWritesInARowLeaveWithoutAPause()
{
    EngineBench bench({});
    for (int i = 0; i < 6; ++i) {
        QByteArray value("\x34\x12");
        const QString address = QStringLiteral("5.%1.0").arg(i);
        bench.library.api().SetRegisterData(QString(), AREA_D, address, 1, value, 1, 0, 1 + i);
    }
    bench.bringUp();
    for (int i = 0; i < 6; ++i) {
        QVERIFY(!bench.send().isEmpty());
        bench.receive(6, QByteArray("\x06"
                                    "0105\r"));
    }
    QCOMPARE(bench.log.ended.size(), 6);
    QCOMPARE(bench.log.ended.last().resultCode, 1);
}

void TestExchangeEngine::callsBeforeTheDeadlineChangeNothing()
{
    EngineBench bench(TWO_WORDS);
    bench.settings.paced = true;
    bench.bringUp();
    bench.engine->deadlineReached(bench.now_ns);
    bench.send();
    bench.engine->deadlineReached(bench.now_ns + 57 * EngineBench::MS);
    QCOMPARE(bench.log.ended.size(), 0);
    bench.engine->deadlineReached(bench.now_ns + 58 * EngineBench::MS);
    QCOMPARE(bench.log.ended.size(), 1);
    bench.engine->deadlineReached(bench.now_ns + 59 * EngineBench::MS);
    QCOMPARE(bench.take(), QByteArray());
}

void TestExchangeEngine::sentMayBeToldInAdvance()
{
    EngineBench bench(TWO_WORDS);
    bench.settings.paced = true;
    bench.bringUp();
    bench.take();
    const qint64 leaves_ns = bench.now_ns + 8 * EngineBench::MS;
    bench.engine->sent(leaves_ns);
    QCOMPARE(bench.left_ms(), 8 + 58);
    bench.receive(16, REPLY);
    QCOMPARE(bench.log.ended.size(), 1);
    QCOMPARE(bench.log.ended[0].resultCode, 1);
    QCOMPARE(bench.log.ended[0].sentAt_ns, leaves_ns);
}

QTEST_APPLESS_MAIN(TestExchangeEngine)
#include "tst_exchange_engine.moc"
