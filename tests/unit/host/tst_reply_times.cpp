// What stations' reply times say about when an answer can still come.
#include "host/reply_times.h"

#include <QtTest>

using namespace kvt;

class TestReplyTimes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingIsUnusualWhileNothingIsKnown()
    {
        const ReplyTimes times;
        QVERIFY(!times.isUnusual(1, 0));
        QVERIFY(!times.isUnusual(1, seconds(9)));
        QCOMPARE(times.pause_ns(1), milliseconds(1));
    }

    void thePauseIsAQuarterAboveTheLongestTime()
    {
        ReplyTimes times;
        times.add(1, milliseconds(8));
        times.add(1, milliseconds(4));
        QCOMPARE(times.pause_ns(1) / milliseconds(1), qint64(10));
        QCOMPARE(times.pause_ns(2), milliseconds(1));
        QCOMPARE(ReplyTimes::pauseAfter_ns(milliseconds(8)), milliseconds(11));
    }

    void aLongTimeIsForgottenSlowly()
    {
        ReplyTimes times;
        times.add(1, milliseconds(800));
        for (int i = 0; i < 180; ++i)
            times.add(1, milliseconds(8));
        QVERIFY(times.pause_ns(1) > milliseconds(400));
        for (int i = 0; i < 3000; ++i)
            times.add(1, milliseconds(8));
        QVERIFY(times.pause_ns(1) < milliseconds(12));
    }

    void noTimeAtAllIsKnownAsTheShortest()
    {
        ReplyTimes times;
        times.add(1, -5);
        QVERIFY(times.isKnown(1));
        QCOMPARE(times.longest_ns(1), qint64(1));
    }

    // 800 ms and then 8 make 701 usual ones; the longest sinks by a part in 256 of what is between.
    void theLongestTimeSinksTowardsTheUsualOne()
    {
        ReplyTimes times;
        times.add(1, milliseconds(800));
        times.add(1, milliseconds(8));
        QCOMPARE(times.longest_ns(1), milliseconds(800) - milliseconds(99) / 256);
    }

    // 8 ms and then 72 make 16 usual ones.
    void anEighthOfEachTimeIsUsual()
    {
        ReplyTimes times;
        times.add(1, milliseconds(8));
        times.add(1, milliseconds(72));
        QVERIFY(!times.isUnusual(1, milliseconds(7)));
        QVERIFY(times.isUnusual(1, milliseconds(7) - 1));
    }

    void aReplyMuchTooSoonOrTooLateIsUnusual()
    {
        ReplyTimes times;
        for (int i = 0; i < 50; ++i)
            times.add(1, milliseconds(20));
        QVERIFY(!times.isUnusual(1, milliseconds(9)));
        QVERIFY(times.isUnusual(1, milliseconds(8)));
        QVERIFY(!times.isUnusual(1, milliseconds(26)));
        QVERIFY(times.isUnusual(1, milliseconds(27)));
        QVERIFY(!times.isUnusual(2, milliseconds(1)));
    }

    void stationsThatAreOneOnTheLineShareTheirTimes()
    {
        ReplyTimes times;
        times.add(0x101, milliseconds(8));
        QCOMPARE(times.pause_ns(1), milliseconds(11));
        QCOMPARE(times.pause_ns(-255), milliseconds(11));
    }
};

QTEST_APPLESS_MAIN(TestReplyTimes)
#include "tst_reply_times.moc"
