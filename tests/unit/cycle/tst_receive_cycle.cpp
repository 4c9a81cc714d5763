// The receive cycle: attempts, retries, further frames, and the count of a scan.
#include "cycle/receive_cycle.h"
#include "tests/support/driver_requests.h"
#include "tests/support/driver_test.h"
#include "tests/support/lock_watch.h"

#include <QtTest>

#include <climits>

namespace
{

int receive(QByteArray reply)
{
    return DataCom(&reply, reply.size())->result;
}

int receiveNothing()
{
    return DataCom(nullptr, 0)->result;
}

/// Polls for the next frame and answers it well; the result code.
int exchange()
{
    const Protocol *frame = ComCommunication();
    return receive(frame->var.rwKind == RW_WRITE ? acknowledgement() : wordReply());
}

} // namespace

class TestReceiveCycle : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void replyToNothingIsResultOneAndNoChange()
    {
        PLC_driver.readList.append(wordRead("r"));
        PLC_driver.lastKind = KIND_CYCLIC_READ;
        PLC_driver.errorFlag = 1;
        PLC_driver.scanCount = 4;
        PLC_driver.reply = wordWrite("earlier");
        PLC_driver.reply.result = 41;
        info_.retryCount = 2;
        QByteArray reply = wordReply();
        const AllLocksHeld held;
        QVERIFY(DataCom(&reply, 8) == &PLC_driver.reply);
        QCOMPARE(PLC_driver.reply.result, 1);
        QCOMPARE(PLC_driver.reply.name, QString("earlier"));
        QCOMPARE(PLC_driver.reply.data, bytes("34 12"));
        QCOMPARE(int(PLC_driver.errorFlag), 1);
        QCOMPARE(PLC_driver.scanCount, 4);
        QCOMPARE(info_.retryCount, 2);
        QCOMPARE(info_.framesReceived, 0);
        QVERIFY(DataCom(nullptr, 0) == &PLC_driver.reply);
    }

    void goodReplyIsStoredAndReported()
    {
        PLC_driver.readList.append(wordRead("r"));
        PLC_driver.errorFlag = 1;
        ComCommunication();
        QByteArray reply = wordReply();
        const RW_VAR *outcome = DataCom(&reply, 8);
        QVERIFY(outcome == &PLC_driver.reply);
        QCOMPARE(outcome->result, 1);
        QCOMPARE(outcome->name, QString("r"));
        QCOMPARE(outcome->address, 165);
        QVERIFY(outcome->data.isEmpty());
        QVERIFY(PLC_driver.pendingFrames.isEmpty());
        QCOMPARE(int(PLC_driver.errorFlag), 0);
        QCOMPARE(info_.framesReceived, 1);
        QCOMPARE(PLC_driver.extendVars.first().data, bytes("AB 12"));
        QCOMPARE(reply, wordReply());
        QVERIFY(isFree(PLC_driver.listMutex));
        QVERIFY(isFree(PLC_driver.areaMutex));
    }

    void failedAttemptKeepsTheRequest()
    {
        info_.retryLimit = 1;
        info_.scanComplete = 1;
        PLC_driver.scanCount = 3;
        PLC_driver.readList << wordRead("a") << wordRead("b");
        PLC_driver.reply.name = "earlier";
        ComCommunication();
        QCOMPARE(receiveNothing(), 0);
        QCOMPARE(PLC_driver.scanCount, 0);
        QCOMPARE(int(PLC_driver.errorFlag), 1);
        QCOMPARE(info_.retryCount, 1);
        QCOMPARE(info_.scanComplete, 0);
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
        QCOMPARE(names(PLC_driver.readList), QString("a b"));
        QCOMPARE(PLC_driver.reply.name, QString("earlier"));
        QCOMPARE(info_.framesReceived, 0);
        QVERIFY(isFree(PLC_driver.listMutex));
    }

    void frameIsTriedOnceMoreThanTheLimit_data()
    {
        QTest::addColumn<int>("retryLimit");
        QTest::addColumn<int>("attempts");
        QTest::newRow("limit 0") << 0 << 1;
        QTest::newRow("limit 1") << 1 << 2;
        QTest::newRow("limit 3") << 3 << 4;
        QTest::newRow("limit -1") << -1 << 1;
        QTest::newRow("limit -9") << -9 << 1;
        QTest::newRow("limit INT_MIN") << INT_MIN << 1;
    }

    void frameIsTriedOnceMoreThanTheLimit()
    {
        QFETCH(int, retryLimit);
        QFETCH(int, attempts);
        info_.retryLimit = retryLimit;
        PLC_driver.readList.append(wordRead("r"));
        for (int attempt = 1; attempt <= attempts; ++attempt) {
            QVERIFY(ComCommunication() != nullptr);
            QCOMPARE(receiveNothing(), attempt < attempts ? 0 : 41);
            QCOMPARE(info_.retryCount, attempt < attempts ? attempt : 0);
        }
        QVERIFY(PLC_driver.pendingFrames.isEmpty());
    }

    void anyLimitIsReachedBeforeTheCountOverflows()
    {
        info_.retryLimit = INT_MAX;
        info_.retryCount = INT_MAX - 1;
        PLC_driver.readList.append(wordRead("r"));
        ComCommunication();
        QCOMPARE(receiveNothing(), 0);
        QCOMPARE(info_.retryCount, INT_MAX);
    }

    void everyKindOfFailureIsRetried_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<int>("finally");
        QTest::newRow("nothing") << QByteArray() << 41;
        QTest::newRow("short") << wordReply().left(7) << 71;
        QTest::newRow("refusal") << bytes("15 30 31 31 32 41 42 0D") << 11;
    }

    void everyKindOfFailureIsRetried()
    {
        QFETCH(QByteArray, reply);
        QFETCH(int, finally);
        info_.retryLimit = 1;
        PLC_driver.readList.append(wordRead("r"));
        ComCommunication();
        QCOMPARE(receive(reply), 0);
        QCOMPARE(receive(reply), finally);
    }

    void remotePathIsTakenForAnotherPlc_data()
    {
        QTest::addColumn<int>("plcNo");
        QTest::addColumn<int>("localPlcNo");
        QTest::addColumn<int>("code");
        QTest::newRow("0 on 0") << 0 << 0 << 41;
        QTest::newRow("4 on 4") << 4 << 4 << 41;
        QTest::newRow("4 on 0") << 4 << 0 << 141;
        QTest::newRow("0 on 4") << 0 << 4 << 141;
        QTest::newRow("-1 on 4") << -1 << 4 << 141;
    }

    void remotePathIsTakenForAnotherPlc()
    {
        QFETCH(int, plcNo);
        QFETCH(int, localPlcNo);
        QFETCH(int, code);
        info_.localPlcNo = localPlcNo;
        RW_VAR var = wordRead("r");
        var.plcNo = plcNo;
        PLC_driver.readList.append(var);
        ComCommunication();
        QCOMPARE(receiveNothing(), code);
    }

    void remoteSuccessIsCode100OrOne()
    {
        PLC_driver.readList << remote(wordRead("a"), 0) << remote(wordRead("b"), -1);
        QCOMPARE(exchange(), 100);
        QVERIFY(PLC_driver.extendVars.isEmpty());
        QCOMPARE(int(PLC_driver.errorFlag), 0);
        QCOMPARE(exchange(), 1);
        QCOMPARE(PLC_driver.extendVars.size(), 1);
        QCOMPARE(names(PLC_driver.readList), QString("a b"));
    }

    void successKeepsTheRetryCount()
    {
        info_.retryLimit = 2;
        PLC_driver.readList.append(wordRead("r"));
        ComCommunication();
        QCOMPARE(receiveNothing(), 0);
        QCOMPARE(receiveNothing(), 0);
        QCOMPARE(receive(wordReply()), 1);
        QCOMPARE(info_.retryCount, 2);
        QCOMPARE(int(PLC_driver.errorFlag), 0);
        ComCommunication();
        QCOMPARE(receiveNothing(), 41);
        QCOMPARE(info_.retryCount, 0);
    }

    void requestOfTwoFramesIsRetiredAfterTheSecond()
    {
        PLC_driver.readList << wordRead("r") << wordRead("s");
        PLC_driver.pendingFrames << frameFor(wordRead("r"), 8) << frameFor(wordRead("r"), 8);
        PLC_driver.lastKind = KIND_CYCLIC_READ;
        PLC_driver.reply.name = "earlier";
        info_.framesExpected = 2;
        QCOMPARE(receive(wordReply()), 1);
        QCOMPARE(info_.framesReceived, 1);
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
        QCOMPARE(PLC_driver.scanCount, 0);
        QCOMPARE(names(PLC_driver.readList), QString("r s"));
        QCOMPARE(PLC_driver.reply.name, QString("earlier"));
        QCOMPARE(receive(wordReply()), 1);
        QCOMPARE(info_.framesReceived, 2);
        QCOMPARE(PLC_driver.scanCount, 1);
        QCOMPARE(names(PLC_driver.readList), QString("s r"));
        QCOMPARE(PLC_driver.reply.name, QString("r"));
    }

    void firstOfTwoRemoteFramesReportsItsCode()
    {
        const RW_VAR stored = remote(wordRead("r"), -1);
        PLC_driver.pendingFrames << frameFor(stored, 8) << frameFor(stored, 8);
        info_.framesExpected = 2;
        QCOMPARE(receive(wordReply()), 1);
        QCOMPARE(receive(wordReply()), 100);
        PLC_driver.pendingFrames << frameFor(remote(stored, 0), 8);
        info_.framesReceived = 0;
        QCOMPARE(receive(wordReply()), 100);
        QCOMPARE(info_.framesReceived, 1);
    }

    void thePathIsThatOfTheFirstFrame()
    {
        PLC_driver.pendingFrames << frameFor(wordRead("r"), 8)
                                 << frameFor(remote(wordRead("r"), 0), 8);
        info_.framesExpected = 2;
        QCOMPARE(receive(wordReply()), 1);
        QCOMPARE(receive(wordReply()), 100);
    }

    void finalFailureDiscardsTheRemainingFrames()
    {
        PLC_driver.pendingFrames << frameFor(wordRead("r"), 8) << frameFor(wordRead("r"), 8);
        info_.framesExpected = 2;
        QCOMPARE(receiveNothing(), 41);
        QVERIFY(PLC_driver.pendingFrames.isEmpty());
        QCOMPARE(info_.framesReceived, 0);
    }

    void scanIsCompleteAfterMoreSuccessesThanEntries()
    {
        PLC_driver.readList << wordRead("a") << wordRead("b");
        for (int count = 1; count <= 2; ++count) {
            QCOMPARE(exchange(), 1);
            QCOMPARE(PLC_driver.scanCount, count);
            QCOMPARE(info_.scanComplete, 0);
        }
        QCOMPARE(exchange(), 1);
        QCOMPARE(PLC_driver.scanCount, 0);
        QCOMPARE(info_.scanComplete, 1);
        QCOMPARE(exchange(), 1);
        QCOMPARE(PLC_driver.scanCount, 0);
        QCOMPARE(info_.scanComplete, 1);
    }

    void theScanIsCountedUnderTheListMutex()
    {
        PLC_driver.readList.append(wordRead("r"));
        PLC_driver.pendingFrames.append(frameFor(wordRead("r"), 8));
        int meanwhile = -1;
        QVERIFY(waitsFor(
            PLC_driver.listMutex, [] { receive(wordReply()); },
            [&meanwhile] { meanwhile = PLC_driver.scanCount; }));
        QCOMPARE(meanwhile, 0);
        QCOMPARE(PLC_driver.scanCount, 1);
    }

    void everyKindOfLocalRequestCountsForTheScan()
    {
        PLC_driver.readList.append(wordRead("r"));
        PLC_driver.writeList.append(wordWrite("w"));
        PLC_driver.onceReadList.append(wordRead("o"));
        QCOMPARE(exchange(), 1);
        QCOMPARE(PLC_driver.scanCount, 1);
        QCOMPARE(exchange(), 1);
        QCOMPARE(PLC_driver.scanCount, 0);
        QCOMPARE(info_.scanComplete, 1);
    }

    void successWithAnEmptyReadListCompletesTheScan()
    {
        PLC_driver.writeList.append(wordWrite("w"));
        QCOMPARE(exchange(), 1);
        QCOMPARE(PLC_driver.scanCount, 0);
        QCOMPARE(info_.scanComplete, 1);
    }

    void remoteRequestsDoNotCountForTheScan()
    {
        PLC_driver.readList << remote(wordRead("a"), -1) << remote(wordRead("b"), 0);
        for (int i = 0; i < 6; ++i)
            exchange();
        QCOMPARE(PLC_driver.scanCount, 0);
        QCOMPARE(info_.scanComplete, 0);
    }

    void failureStartsTheScanAnew()
    {
        info_.retryLimit = 1;
        PLC_driver.readList.append(wordRead("r"));
        QCOMPARE(exchange(), 1);
        QCOMPARE(PLC_driver.scanCount, 1);
        ComCommunication();
        QCOMPARE(receiveNothing(), 0);
        QCOMPARE(PLC_driver.scanCount, 0);
        QCOMPARE(exchange(), 1);
        QCOMPARE(info_.scanComplete, 0);
        QCOMPARE(exchange(), 1);
        QCOMPARE(info_.scanComplete, 1);
    }

    void hostsOwnWordsAndSettingsAreUntouched()
    {
        auto *words = reinterpret_cast<qint32 *>(&info_);
        for (const int i : {0, 1, 2, 3, 4, 5, 6, 9, 10, 13, 16, 18})
            words[i] = 500 + i;
        PLC_driver.readList.append(wordRead("r"));
        QCOMPARE(exchange(), 1);
        ComCommunication();
        QCOMPARE(receiveNothing(), 41);
        for (const int i : {0, 1, 2, 3, 4, 5, 6, 9, 10, 13, 16, 18})
            QCOMPARE(words[i], 500 + i);
        for (const int i : {7, 14, 15})
            QCOMPARE(words[i], 0);
    }

    void outcomeOfEveryExchangeIsWrittenUnderTheListMutex_data()
    {
        QTest::addColumn<int>("retryLimit");
        QTest::addColumn<int>("framesExpected");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<int>("code");
        QTest::newRow("retry") << 1 << 1 << QByteArray() << 0;
        QTest::newRow("final failure") << 0 << 1 << QByteArray() << 41;
        QTest::newRow("further frame") << 0 << 2 << wordReply() << 1;
        QTest::newRow("complete") << 0 << 1 << wordReply() << 1;
    }

    void outcomeOfEveryExchangeIsWrittenUnderTheListMutex()
    {
        QFETCH(int, retryLimit);
        QFETCH(int, framesExpected);
        QFETCH(QByteArray, reply);
        QFETCH(int, code);
        info_.retryLimit = retryLimit;
        info_.framesExpected = framesExpected;
        PLC_driver.pendingFrames.append(frameFor(wordRead("r"), 8));
        int result = -1;
        bool areaMutexFree = false;
        QVERIFY(waitsFor(
            PLC_driver.listMutex, [&] { result = receive(reply); },
            [&] { areaMutexFree = isFree(PLC_driver.areaMutex); }));
        QVERIFY(areaMutexFree);
        QCOMPARE(result, code);
    }
};

QTEST_APPLESS_MAIN(TestReceiveCycle)
#include "tst_receive_cycle.moc"
