// Whether replies are in step with requests: when the line is listened to and what that proves.
#include "host/step_watch.h"

#include <QtTest>

using namespace kvt;

namespace
{

constexpr qint64 MS = milliseconds(1);
constexpr qint64 TIMEOUT = 60 * MS;
constexpr double ONE_PERCENT = 0.01;

Request requestOf(int station, int length)
{
    Request request;
    request.station = station;
    request.expectedLength = length;
    return request;
}

// A reply of station 1 to a request for a word, and to one for a bit.
const QByteArray WORD = QByteArray::fromHex("06 30 31 31 32 41 42 0D");
const QByteArray BIT = QByteArray::fromHex("06 30 31 30 31 0D");
// The same of station 0.
const QByteArray WORD_OF_0 = QByteArray(WORD).replace(1, 2, "00");
const QByteArray BIT_OF_0 = QByteArray(BIT).replace(1, 2, "00");

// Station 1 answers a request for a word after 8 ms; a pause then takes 11.
bool exchange(StepWatch *watch, qint64 *now_ns, int station = 1, int length = 8,
              const QByteArray &reply = WORD)
{
    watch->sent(requestOf(station, length), *now_ns, TIMEOUT);
    *now_ns += 8 * MS;
    return watch->replied(reply, *now_ns, 8 * MS, true);
}

// As a line that has been listened to once.
void begin(StepWatch *watch, qint64 *now_ns)
{
    watch->lineUp(*now_ns);
    exchange(watch, now_ns);
    watch->pauseWasSilent(*now_ns, *now_ns + 11 * MS);
    *now_ns += 11 * MS;
}

// From here on replies are known to have been one behind; false if that is not found.
bool beginBehind(StepWatch *watch, qint64 *now_ns)
{
    begin(watch, now_ns);
    watch->sent(requestOf(1, 6), *now_ns, TIMEOUT);
    const bool isFound = watch->showsBehind(WORD);
    watch->outOfStep(*now_ns);
    return isFound;
}

// The same of station 0, behind a request for a bit.
bool beginBehindAtStationZero(StepWatch *watch, qint64 now_ns)
{
    watch->lineUp(now_ns);
    watch->sent(requestOf(0, 8), now_ns, TIMEOUT);
    watch->sent(requestOf(0, 6), now_ns, TIMEOUT);
    const bool isFound = watch->showsBehind(WORD_OF_0);
    watch->outOfStep(now_ns);
    return isFound;
}

} // namespace

class TestStepWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstReplyWaitsForAProof()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        watch.lineUp(now_ns);
        QVERIFY(exchange(&watch, &now_ns));
        QVERIFY(watch.isPauseDue(now_ns));
        QCOMPARE(watch.pauseEnd_ns(now_ns), now_ns + 11 * MS);
        QVERIFY(watch.pauseWasSilent(now_ns, now_ns + 11 * MS));
        QVERIFY(!exchange(&watch, &now_ns));
    }

    // A reply to a later attempt tells no time: it may be that to an earlier one.
    void aStationWhoseTimeIsNotKnownIsListenedToForItsTimeout()
    {
        StepWatch watch(ONE_PERCENT, false);
        watch.lineUp(0);
        watch.sent(requestOf(1, 8), 0, TIMEOUT);
        watch.sent(requestOf(1, 8), 0, TIMEOUT);
        QVERIFY(watch.replied(WORD, 8 * MS, 8 * MS, false));
        qint64 now_ns = watch.pauseEnd_ns(8 * MS);
        QCOMPARE(now_ns, 8 * MS + ReplyTimes::pauseAfter_ns(TIMEOUT));
        watch.pauseWasSilent(8 * MS, now_ns);
        // Nor does the next reply, until it is proved: the true answer to the first may be later.
        QVERIFY(exchange(&watch, &now_ns));
        QCOMPARE(watch.pauseEnd_ns(now_ns), now_ns + ReplyTimes::pauseAfter_ns(TIMEOUT));
        watch.pauseWasSilent(now_ns, now_ns + TIMEOUT);
        now_ns += TIMEOUT;
        exchange(&watch, &now_ns);
        watch.askForProof();
        QCOMPARE(watch.pauseEnd_ns(now_ns), now_ns + 11 * MS);
    }

    void theFirstTimeOfAStationThatFailedCountsOnceItIsProved_data()
    {
        QTest::addColumn<int>("station");
        QTest::newRow("1") << 1;
        QTest::newRow("0") << 0;
    }

    // Such a reply may be one that was under way to another attempt, and much too fast.
    void theFirstTimeOfAStationThatFailedCountsOnceItIsProved()
    {
        QFETCH(int, station);
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        watch.lineUp(now_ns);
        watch.sent(requestOf(station, 8), now_ns, TIMEOUT);
        watch.somethingOdd();
        watch.pauseWasSilent(now_ns, now_ns);
        QVERIFY(exchange(&watch, &now_ns, station));
        const qint64 end_ns = watch.pauseEnd_ns(now_ns);
        QCOMPARE(end_ns, now_ns + ReplyTimes::pauseAfter_ns(TIMEOUT));
        watch.pauseWasSilent(now_ns, end_ns);
        now_ns = end_ns;
        watch.sent(requestOf(station, 8), now_ns, TIMEOUT);
        watch.replied(WORD, now_ns, 8 * MS, false);
        QCOMPARE(watch.pauseEnd_ns(now_ns), now_ns + 11 * MS);
        exchange(&watch, &now_ns, station);
        QCOMPARE(watch.pauseEnd_ns(now_ns), now_ns + 3 * MS);
    }

    // An end of a request that is reckoned ahead may make it that.
    void aFirstTimeOfNothingCountsAsWell()
    {
        StepWatch watch(ONE_PERCENT, false);
        watch.lineUp(0);
        watch.sent(requestOf(1, 8), 0, TIMEOUT);
        watch.somethingOdd();
        watch.replied(WORD, 0, 0, true);
        watch.pauseWasSilent(0, seconds(1));
        watch.sent(requestOf(1, 8), seconds(1), TIMEOUT);
        watch.replied(WORD, seconds(1), 8 * MS, false);
        QCOMPARE(watch.pauseEnd_ns(seconds(1)), seconds(1) + MS + 1);
    }

    void aTimeThatWasNotProvedIsNotThatOfTheNextStation()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        watch.lineUp(now_ns);
        watch.sent(requestOf(1, 8), now_ns, TIMEOUT);
        watch.somethingOdd();
        exchange(&watch, &now_ns);
        watch.sent(requestOf(2, 8), now_ns, TIMEOUT);
        watch.replied(WORD, now_ns, 8 * MS, false);
        watch.pauseWasSilent(now_ns, now_ns);
        now_ns += seconds(1);
        watch.sent(requestOf(2, 8), now_ns, TIMEOUT);
        watch.replied(WORD, now_ns, 8 * MS, false);
        watch.askForProof();
        QCOMPARE(watch.pauseEnd_ns(now_ns), now_ns + ReplyTimes::pauseAfter_ns(TIMEOUT));
    }

    void aPauseAlsoWaitsForASlowStationAskedBefore()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        watch.lineUp(now_ns);
        const QByteArray other = QByteArray(WORD).replace(1, 2, "02");
        watch.sent(requestOf(2, 8), now_ns, TIMEOUT);
        watch.replied(other, now_ns, 40 * MS, true);
        watch.sent(requestOf(1, 8), now_ns, TIMEOUT);
        watch.replied(WORD, now_ns, MS, true);
        QCOMPARE(watch.pauseEnd_ns(now_ns), now_ns + 51 * MS);
    }

    void whatAnswersNeitherRequestNorShapeAnswersAnother()
    {
        StepWatch watch(ONE_PERCENT, false);
        watch.lineUp(0);
        watch.sent(requestOf(1, 8), 0, TIMEOUT);
        QVERIFY(watch.answersAnother(BIT));
        QVERIFY(watch.answersAnother(QByteArray(WORD).replace(1, 2, "02")));
        QVERIFY(!watch.answersAnother(WORD));
        QVERIFY(!watch.answersAnother(BIT.left(5)));
        QVERIFY(!watch.answersAnother(QByteArray(BIT).replace(3, 1, "x")));
        QVERIFY(!watch.answersAnother(QByteArray(BIT).replace(0, 1, "\x15")));
        QVERIFY(!watch.answersAnother(QByteArray()));
    }

    void pausesTakeTheirShareOfTheTime()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        begin(&watch, &now_ns);
        const qint64 last_ns = now_ns;
        while (!watch.isPauseDue(now_ns))
            exchange(&watch, &now_ns);
        QCOMPARE((now_ns - last_ns) / MS, qint64(1104)); // the first end of an exchange from 1,100
    }

    void aPauseIsDueAsSoonAsItIsEarned()
    {
        StepWatch watch(0.5, false);
        qint64 now_ns = 0;
        begin(&watch, &now_ns);
        QVERIFY(!watch.isPauseDue(now_ns + 22 * MS - 2));
        QVERIFY(watch.isPauseDue(now_ns + 22 * MS));
    }

    void fromAByteInAPauseOnTheNextIsEarnedAnew()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        begin(&watch, &now_ns);
        now_ns += seconds(10);
        QVERIFY(watch.isPauseDue(now_ns));
        watch.outOfStep(now_ns);
        QVERIFY(!watch.isPauseDue(now_ns));
    }

    void withoutAShareThereAreNone()
    {
        StepWatch watch(0, false);
        qint64 now_ns = 0;
        watch.lineUp(now_ns);
        QVERIFY(!exchange(&watch, &now_ns));
        watch.askForProof();
        QVERIFY(!watch.isPauseDue(now_ns + seconds(1000)));
    }

    void whoeverWaitsIsProvedAtOnce()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        begin(&watch, &now_ns);
        exchange(&watch, &now_ns);
        QVERIFY(!watch.isPauseDue(now_ns));
        watch.askForProof();
        QVERIFY(watch.isPauseDue(now_ns));
        watch.pauseWasSilent(now_ns, now_ns + 11 * MS);
        QVERIFY(!watch.isPauseDue(now_ns + 11 * MS));
    }

    void afterSomethingOddEachReplyIsProvedByItself()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        begin(&watch, &now_ns);
        watch.somethingOdd();
        int proofs = 0;
        for (; exchange(&watch, &now_ns) && watch.isPauseDue(now_ns); ++proofs) {
            // The first pause is a whole one; from then on no reply can be further behind than its
            // own request.
            const qint64 end_ns = watch.pauseEnd_ns(now_ns);
            QCOMPARE(end_ns - now_ns, proofs == 0 ? 11 * MS : 3 * MS);
            watch.pauseWasSilent(now_ns, end_ns);
            now_ns = end_ns;
        }
        QCOMPARE(proofs, 30);
    }

    void onRequestEveryReplyIsProved_data()
    {
        QTest::addColumn<double>("share");
        QTest::newRow("one per cent") << ONE_PERCENT;
        QTest::newRow("no share") << 0.0;
    }

    void onRequestEveryReplyIsProved()
    {
        QFETCH(double, share);
        StepWatch watch(share, true);
        qint64 now_ns = 0;
        begin(&watch, &now_ns);
        for (int i = 0; i < 1000; ++i) {
            QVERIFY(exchange(&watch, &now_ns));
            QCOMPARE(watch.pauseEnd_ns(now_ns), now_ns + 3 * MS);
            QVERIFY(watch.pauseWasSilent(now_ns, now_ns + 3 * MS));
        }
    }

    void behindAReplyItsOwnAnswerMayComeInOnePiece_data()
    {
        QTest::addColumn<qint64>("character_ns");
        QTest::addColumn<qint64>("latency_ns");
        QTest::addColumn<qint64>("pause_ns");
        QTest::newRow("byte by byte") << MS / 4 << qint64(0) << 4 * MS + MS / 8;
        QTest::newRow("held back for less than replies take")
            << MS / 4 << 2 * MS << 6 * MS + MS * 5 / 8;
        QTest::newRow("held back for longer") << MS / 4 << 20 * MS << 11 * MS;
        QTest::newRow("longer than any reply took to begin") << MS << qint64(0) << 11 * MS;
        QTest::newRow("two characters at least") << 8 * MS << qint64(0) << 21 * MS;
    }

    // A late reply was taken, and the true answer had to wait for the line.
    void behindAReplyItsOwnAnswerMayComeInOnePiece()
    {
        QFETCH(qint64, character_ns);
        QFETCH(qint64, latency_ns);
        StepWatch watch(ONE_PERCENT, true, character_ns, latency_ns);
        qint64 now_ns = 0;
        begin(&watch, &now_ns);
        exchange(&watch, &now_ns);
        QTEST(watch.pauseEnd_ns(now_ns) - now_ns, "pause_ns");
    }

    void anUnusualTimeWantsAProof()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        begin(&watch, &now_ns);
        watch.sent(requestOf(1, 8), now_ns, TIMEOUT);
        QVERIFY(watch.replied(WORD, now_ns, 2 * MS, true));
        QVERIFY(watch.isPauseDue(now_ns));
        watch.pauseWasSilent(now_ns, now_ns);
        watch.sent(requestOf(1, 8), now_ns, TIMEOUT);
        QVERIFY(watch.replied(WORD, now_ns, 12 * MS, true));
    }

    void theTimeOfALaterAttemptSaysNothing()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        begin(&watch, &now_ns);
        watch.sent(requestOf(1, 8), now_ns, TIMEOUT);
        QVERIFY(!watch.replied(WORD, now_ns, 200 * MS, false));
        QCOMPARE(watch.pauseEnd_ns(now_ns), now_ns + 11 * MS);
    }

    void aByteInAPauseLeavesTheTimeSinceTheLastUnproved()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        begin(&watch, &now_ns);
        exchange(&watch, &now_ns);
        const qint64 proved_ns = now_ns;
        watch.pauseWasSilent(now_ns, now_ns + 11 * MS);
        now_ns += 11 * MS;
        exchange(&watch, &now_ns);
        QCOMPARE(watch.outOfStep(now_ns), proved_ns);
        QVERIFY(exchange(&watch, &now_ns));
        QVERIFY(watch.isPauseDue(now_ns));
    }

    void aReplyInTheShapeOfTheRequestBeforeIsRecognised()
    {
        StepWatch watch(ONE_PERCENT, false);
        watch.lineUp(0);
        watch.sent(requestOf(1, 8), 0, TIMEOUT);
        QVERIFY(!watch.showsBehind(WORD));
        watch.sent(requestOf(1, 6), 0, TIMEOUT);
        QVERIFY(watch.showsBehind(WORD));
        QVERIFY(!watch.showsBehind(WORD.left(7)));
        QVERIFY(!watch.showsBehind(WORD + '\r'));
        QVERIFY(!watch.showsBehind("\x06"
                                   "0212AB\r"));
        QVERIFY(!watch.showsBehind(QByteArray(WORD).replace(0, 1, "\x15")));
        watch.sent(requestOf(1, 6), 0, TIMEOUT);
        QVERIFY(!watch.showsBehind(WORD));
        watch.sent(requestOf(2, 8), 0, TIMEOUT);
        watch.sent(requestOf(1, 8), 0, TIMEOUT);
        QVERIFY(watch.showsBehind("\x06"
                                  "0212AB\r"));
    }

    void onceBehindSilenceProvesNothingUntilTwoThatDifferWereRight()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        begin(&watch, &now_ns);
        exchange(&watch, &now_ns, 1, 6);
        const qint64 differed_ns = now_ns;
        watch.pauseWasSilent(now_ns, now_ns + 11 * MS);
        now_ns += 11 * MS;
        exchange(&watch, &now_ns, 1, 6);
        watch.pauseWasSilent(now_ns, now_ns + 11 * MS);
        now_ns += 11 * MS;
        watch.sent(requestOf(1, 8), now_ns, TIMEOUT);
        // All since the last two that differed may have been behind, silent pauses or not.
        QVERIFY(watch.showsBehind(BIT));
        QCOMPARE(watch.outOfStep(now_ns), differed_ns);
        exchange(&watch, &now_ns);
        QVERIFY(watch.isPauseDue(now_ns));
        exchange(&watch, &now_ns);
        QVERIFY(!watch.pauseWasSilent(now_ns, now_ns + 11 * MS));
        exchange(&watch, &now_ns, 1, 6);
        QVERIFY(watch.pauseWasSilent(now_ns, now_ns + 11 * MS));
    }

    void aReplyThatDoesNotNameItsStationIsNotRightBehindAnother()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        QVERIFY(beginBehind(&watch, &now_ns));
        exchange(&watch, &now_ns, 2, 6, BIT);
        QVERIFY(!watch.pauseWasSilent(now_ns, now_ns + 11 * MS));
        exchange(&watch, &now_ns, 1, 6, BIT);
        QVERIFY(watch.pauseWasSilent(now_ns, now_ns + 11 * MS));
    }

    void requestsToStationZeroCountAsAnyOther()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        QVERIFY(beginBehindAtStationZero(&watch, now_ns));
        exchange(&watch, &now_ns, 0, 8, WORD_OF_0); // behind a request that differs
        QVERIFY(watch.pauseWasSilent(now_ns, now_ns + 11 * MS));
    }

    void twoAlikeRequestsToStationZeroProveNothing()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        QVERIFY(beginBehindAtStationZero(&watch, now_ns));
        watch.sent(requestOf(0, 6), now_ns, TIMEOUT);
        exchange(&watch, &now_ns, 0, 6, BIT_OF_0);
        QVERIFY(!watch.pauseWasSilent(now_ns, now_ns + 11 * MS));
    }

    void ofALineThatIsNewNothingIsKnown()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        begin(&watch, &now_ns);
        watch.somethingOdd();
        watch.askForProof();
        now_ns += seconds(1000);
        watch.lineUp(now_ns);
        QVERIFY(!watch.isPauseDue(now_ns));
        QCOMPARE(watch.outOfStep(now_ns), now_ns);
        watch.lineUp(now_ns);
        watch.sent(requestOf(1, 6), now_ns, TIMEOUT);
        QVERIFY(!watch.showsBehind(WORD));
        exchange(&watch, &now_ns);
        watch.pauseWasSilent(now_ns, now_ns + 11 * MS);
        QVERIFY(!exchange(&watch, &now_ns)); // nothing of what was odd before is left
    }

    void aTimeThatWasNotProvedGoesWithItsLine()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        watch.lineUp(now_ns);
        watch.sent(requestOf(1, 8), now_ns, TIMEOUT);
        watch.somethingOdd();
        exchange(&watch, &now_ns);
        watch.lineUp(now_ns);
        QVERIFY(watch.pauseWasSilent(now_ns, now_ns + 11 * MS)); // asked for before any request
        watch.sent(requestOf(1, 8), now_ns, TIMEOUT);
        QVERIFY(watch.replied(WORD, now_ns + seconds(1), 8 * MS, true));
        QCOMPARE(watch.pauseEnd_ns(now_ns + seconds(1)),
                 now_ns + seconds(1) + ReplyTimes::pauseAfter_ns(TIMEOUT));
    }

    void aNewLineBeginsAfresh()
    {
        StepWatch watch(ONE_PERCENT, false);
        qint64 now_ns = 0;
        QVERIFY(beginBehind(&watch, &now_ns));
        watch.lineUp(now_ns);
        QVERIFY(exchange(&watch, &now_ns));
        QVERIFY(watch.pauseWasSilent(now_ns, now_ns + 11 * MS));
    }
};

QTEST_APPLESS_MAIN(TestStepWatch)
#include "tst_step_watch.moc"
