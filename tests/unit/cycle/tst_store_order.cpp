// The order of the stores that a host may watch: into its block, and around them into the driver's
// object. A compiler that is free to turns most of these round when it optimises.
#include "driver/entry_points.h"

#include "tests/support/driver_requests.h"
#include "tests/support/driver_test.h"
#include "tests/support/watched_block.h"

#include <QtTest>

class TestStoreOrder : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void theBlockIsHandedOverBetweenItsTwoWords()
    {
        WatchedBlock block(12);
        QVERIFY(block.isThere());
        block.info().comWord10 = 99;
        block.info().comWord13 = 99;
        block.watch();
        SetComInfo(&block.info());
        QCOMPARE(block.stores(), 2);
        QVERIFY(block.look(0).upper);
        QVERIFY(block.look(0).comInfo == &info_);
        QVERIFY(!block.look(1).upper);
        QVERIFY(block.look(1).comInfo == &block.info());
        QCOMPARE(block.look(1).block.comWord13, 0);
        QCOMPARE(block.info().comWord10, 0);
    }

    void aFailedAttemptIsCountedBeforeTheScanIsOpen()
    {
        WatchedBlock block(9);
        QVERIFY(block.isThere());
        block.info().retryCount = 4;
        block.info().retryLimit = 9;
        block.info().scanComplete = 1;
        askWith(block, frameFor(wordRead("r"), 8));
        PLC_driver.scanCount = 6;
        QCOMPARE(DataCom(nullptr, 0)->result, qint32(RESULT_RETRY));
        QCOMPARE(block.stores(), 2);
        QVERIFY(!block.look(0).upper);
        QCOMPARE(block.look(0).scanCount, 0);
        QCOMPARE(block.look(0).errorFlag, 1);
        QVERIFY(block.look(1).upper);
        QCOMPARE(block.look(1).block.retryCount, 5);
        QCOMPARE(block.look(1).block.scanComplete, 1);
        QCOMPARE(block.info().scanComplete, 0);
    }

    void aFrameIsQueuedThenNothingIsReceivedThenAReplyIsExpected()
    {
        WatchedBlock block(12);
        QVERIFY(block.isThere());
        block.info().framesExpected = 7;
        block.info().framesReceived = 7;
        queueReadWith(block);
        QCOMPARE(block.stores(), 2);
        QVERIFY(block.look(0).upper);
        QCOMPARE(block.look(0).pendingFrames, 1);
        QCOMPARE(block.look(0).block.framesExpected, 7);
        QVERIFY(!block.look(1).upper);
        QCOMPARE(block.look(1).block.framesReceived, 0);
        QCOMPARE(block.info().framesExpected, 1);
    }

    void anEnvelopeIsQueuedThenAReplyIsExpectedThenNothingIsReceived()
    {
        WatchedBlock block(12);
        QVERIFY(block.isThere());
        block.info().framesExpected = 7;
        block.info().framesReceived = 7;
        block.info().remoteMode = 1;
        queueReadWith(block);
        QCOMPARE(block.stores(), 2);
        QVERIFY(!block.look(0).upper);
        QCOMPARE(block.look(0).pendingFrames, 1);
        QCOMPARE(block.look(0).block.framesReceived, 7);
        QVERIFY(block.look(1).upper);
        QCOMPARE(block.look(1).block.framesExpected, 1);
        QCOMPARE(block.info().framesReceived, 0);
    }

    void aGoodReplyIsCountedLastAndTheScanIsClosedAfterItsCount()
    {
        WatchedBlock block(17);
        QVERIFY(block.isThere());
        block.info().framesExpected = 1;
        PLC_driver.readList.append(wordRead("r"));
        askWith(block, frameFor(wordRead("r"), 8));
        PLC_driver.errorFlag = 1;
        PLC_driver.scanCount = 1;
        QByteArray reply = wordReply();
        QCOMPARE(DataCom(&reply, 8)->result, qint32(RESULT_SUCCESS));
        QCOMPARE(block.stores(), 2);
        QVERIFY(!block.look(0).upper);
        QCOMPARE(block.look(0).errorFlag, 0);
        QCOMPARE(block.look(0).pendingFrames, 0);
        QVERIFY(block.look(1).upper);
        QCOMPARE(block.look(1).block.framesReceived, 1);
        QCOMPARE(block.look(1).scanCount, 0);
        QCOMPARE(block.info().scanComplete, 1);
    }

private:
    static void askWith(WatchedBlock &block, const Protocol &frame)
    {
        PLC_driver.comInfo = &block.info();
        PLC_driver.pendingFrames.append(frame);
        block.watch();
    }

    static void queueReadWith(WatchedBlock &block)
    {
        PLC_driver.comInfo = &block.info();
        PLC_driver.readList.append(wordRead("r"));
        block.watch();
        ComCommunication();
    }
};

QTEST_APPLESS_MAIN(TestStoreOrder)
#include "tst_store_order.moc"
