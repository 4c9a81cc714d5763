// The receive cycle: a final failure, what it reports and what it purges.
#include "cycle/receive_cycle.h"
#include "tests/support/callback_log.h"
#include "tests/support/driver_requests.h"
#include "tests/support/driver_test.h"

#include <QtTest>

namespace
{

/// Polls for the next frame and lets it fail for good; the result code.
int failNext()
{
    ComCommunication();
    return DataCom(nullptr, 0)->result;
}

} // namespace

class TestReceiveCycleFailure : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void failedCyclicReadMovesToTheEndAndIsNotified()
    {
        PLC_driver.readList << ownedRead("a", 3, 1) << ownedRead("b", 4, 1);
        QCOMPARE(failNext(), 44);
        QCOMPARE(names(PLC_driver.readList), QString("b a"));
        QCOMPARE(PLC_driver.reply.name, QString("a"));
        QCOMPARE(PLC_driver.reply.ownerId, 3);
        QVERIFY(PLC_driver.reply.data.isEmpty());
        QCOMPARE(calls(), QString("notify 3 1 0"));
        QCOMPARE(info_.retryCount, 0);
        QCOMPARE(int(PLC_driver.errorFlag), 1);
        QVERIFY(isFree(PLC_driver.listMutex));
    }

    void failedWriteIsDroppedAndNotified()
    {
        RW_VAR var = wordWrite("w");
        var.ownerId = 6;
        PLC_driver.writeList.append(var);
        QCOMPARE(failNext(), 47);
        QVERIFY(PLC_driver.writeList.isEmpty());
        QCOMPARE(PLC_driver.reply.name, QString("w"));
        QCOMPARE(calls(), QString("notify 6 1 0, notify 6 1 0"));
    }

    void failedOnceReadIsReportedWithStatusTwo()
    {
        PLC_driver.onceReadList.append(ownedRead("o", 4, 9));
        QCOMPARE(failNext(), 45);
        QVERIFY(PLC_driver.onceReadList.isEmpty());
        QCOMPARE(calls(), QString("done 7 4 9 2, notify 4 1 0"));
    }

    void statusTellsOfTheLastMemberOnly()
    {
        info_.purgeByStation = 1;
        PLC_driver.onceReadList << ownedRead("o1", 4, 9, 1) << ownedRead("o2", 4, 9, 2);
        QCOMPARE(failNext(), 45);
        QCOMPARE(calls(), QString("notify 4 1 0"));
        ComCommunication();
        QByteArray reply = wordReply();
        QCOMPARE(DataCom(&reply, 8)->result, 1);
        QCOMPARE(calls(), QString("notify 4 1 0, done 7 4 9 1"));
    }

    void failedFirstMemberTakesItsGroupAlongUnreported()
    {
        PLC_driver.onceReadList << ownedRead("o1", 4, 9) << ownedRead("o2", 4, 9)
                                << ownedRead("o3", 4, 9);
        QCOMPARE(failNext(), 45);
        QVERIFY(PLC_driver.onceReadList.isEmpty());
        QCOMPARE(calls(), QString("notify 4 1 0"));
    }

    void failedRemoteOnceReadIsNotifiedButNotReported()
    {
        PLC_driver.onceReadList.append(remote(ownedRead("o", 4, 9), -1));
        QCOMPARE(failNext(), 145);
        QCOMPARE(calls(), QString("notify 4 1 0"));
        QVERIFY(PLC_driver.onceReadList.isEmpty());
    }

    void failedOnceReadOfAnEmptiedListIsNotifiedOnly()
    {
        PLC_driver.pendingFrames.append(frameFor(ownedRead("x", 4, 9), 8));
        PLC_driver.lastKind = KIND_ONCE_READ;
        PLC_driver.reply.ownerId = 88;
        QCOMPARE(DataCom(nullptr, 0)->result, 45);
        QCOMPARE(calls(), QString("notify 88 1 0"));
    }

    void failedRequestOfNoKindIsNotifiedForTheEarlierReply()
    {
        PLC_driver.pendingFrames.append(frameFor(ownedRead("x", 4, 9), 8));
        PLC_driver.reply.ownerId = 55;
        PLC_driver.readList << wordRead("a") << wordRead("b");
        QCOMPARE(DataCom(nullptr, 0)->result, 45);
        QCOMPARE(calls(), QString("notify 55 1 0"));
        QCOMPARE(names(PLC_driver.readList), QString("a b"));
    }

    void notificationComesAfterRetiringAndBeforePurging()
    {
        RW_VAR first = ownedRead("o1", 4, 9);
        first.result = 33;
        PLC_driver.onceReadList << first << ownedRead("o2", 5, 9);
        ComCommunication();
        PLC_driver.writeList.append(wordWrite("w"));
        callbackLog().inside = [] {
            QVERIFY(!isFree(PLC_driver.listMutex));
            QVERIFY(isFree(PLC_driver.areaMutex));
            QVERIFY(isFree(PLC_driver.stationMutex));
            QVERIFY(PLC_driver.pendingFrames.isEmpty());
            QCOMPARE(int(PLC_driver.errorFlag), 1);
            QCOMPARE(PLC_driver.comInfo->retryCount, 0);
            QCOMPARE(names(PLC_driver.writeList), QString("w"));
            const bool retired = callbackLog().calls.size() == 2;
            QCOMPARE(names(PLC_driver.onceReadList), QString::fromLatin1(retired ? "o2" : "o1 o2"));
            QCOMPARE(PLC_driver.reply.name, QString::fromLatin1(retired ? "o1" : ""));
            QCOMPARE(PLC_driver.reply.result, retired ? 33 : 1);
        };
        QCOMPARE(DataCom(nullptr, 0)->result, 45);
        QCOMPARE(calls(), QString("done 7 4 9 2, notify 4 1 0"));
        QVERIFY(PLC_driver.onceReadList.isEmpty());
        QVERIFY(PLC_driver.writeList.isEmpty());
    }

    void failureWithoutCallbacksIsRetiredAndPurged()
    {
        PLC_driver.onceReadDone = nullptr;
        PLC_driver.ownerNotify = nullptr;
        PLC_driver.onceReadList << ownedRead("o1", 4, 9) << ownedRead("o2", 5, 9);
        QCOMPARE(failNext(), 45);
        QVERIFY(PLC_driver.onceReadList.isEmpty());
    }

    void retryIsNeitherNotifiedNorPurged()
    {
        info_.retryLimit = 1;
        PLC_driver.onceReadList << ownedRead("o1", 4, 9) << ownedRead("o2", 5, 9);
        QCOMPARE(failNext(), 0);
        QCOMPARE(calls(), QString());
        QCOMPARE(names(PLC_driver.onceReadList), QString("o1 o2"));
    }

    void purge_data()
    {
        QTest::addColumn<int>("purgeByStation");
        QTest::addColumn<int>("station");
        QTest::addColumn<QString>("writes");
        QTest::addColumn<QString>("onceReads");
        QTest::newRow("0 drops all") << 0 << 2 << ""
                                     << "";
        QTest::newRow("0 drops all of a station without any") << 0 << 9 << ""
                                                              << "";
        QTest::newRow("1 drops those of station 2") << 1 << 2 << "w1 w3"
                                                    << "o1 o4";
        QTest::newRow("1 drops those of station 1") << 1 << 1 << "w2 w4 w5"
                                                    << "o2 o3 o5";
        QTest::newRow("1 drops none of station 9") << 1 << 9 << "w1 w2 w3 w4 w5"
                                                   << "o1 o2 o3 o4 o5";
        QTest::newRow("-1 drops those of station 2") << -1 << 2 << "w1 w3"
                                                     << "o1 o4";
        QTest::newRow("7 tells 2 from 258") << 7 << 258 << "w1 w2 w3 w4 w5"
                                            << "o1 o2 o3 o4 o5";
    }

    void purge()
    {
        QFETCH(int, purgeByStation);
        QFETCH(int, station);
        QFETCH(QString, writes);
        QFETCH(QString, onceReads);
        info_.purgeByStation = purgeByStation;
        PLC_driver.readList << wordRead("r1", station) << wordRead("r2", 2) << wordRead("r3", 1);
        ComCommunication();
        for (const int s : {1, 2, 1, 2, 2})
            PLC_driver.writeList.append(
                wordWrite(QString("w%1").arg(PLC_driver.writeList.size() + 1), s));
        for (const int s : {1, 2, 2, 1, 2})
            PLC_driver.onceReadList.append(
                wordRead(QString("o%1").arg(PLC_driver.onceReadList.size() + 1), s));
        QCOMPARE(DataCom(nullptr, 0)->result, 41);
        QCOMPARE(names(PLC_driver.writeList), writes);
        QCOMPARE(names(PLC_driver.onceReadList), onceReads);
        QCOMPARE(names(PLC_driver.readList), QString("r2 r3 r1"));
        QCOMPARE(PLC_driver.reply.station, station);
    }

    void failedWriteTakesTheQueueOfItsStationAlong()
    {
        info_.purgeByStation = 1;
        PLC_driver.writeList << wordWrite("w1", 2) << wordWrite("w2", 2) << wordWrite("w3", 1);
        QCOMPARE(failNext(), 41);
        QCOMPARE(names(PLC_driver.writeList), QString("w3"));
        QCOMPARE(PLC_driver.reply.name, QString("w1"));
    }

    void failureDisablesNoStation()
    {
        PLC_driver.readList.append(wordRead("r"));
        QCOMPARE(failNext(), 41);
        QVERIFY(PLC_driver.disabledStations.isEmpty());
        QVERIFY(ComCommunication() != nullptr);
    }

    void failureKeepsTheCachedValue()
    {
        PLC_driver.readList.append(wordRead("r"));
        ComCommunication();
        QByteArray reply = wordReply();
        DataCom(&reply, 8);
        QCOMPARE(failNext(), 41);
        QCOMPARE(PLC_driver.extendVars.size(), 1);
        QCOMPARE(PLC_driver.extendVars.first().data, bytes("AB 12"));
    }

    void requesterSelectsTheCode_data()
    {
        QTest::addColumn<int>("ownerId");
        QTest::addColumn<int>("code");
        QTest::newRow("0") << 0 << 41;
        QTest::newRow("11") << 11 << 52;
        QTest::newRow("12") << 12 << 41;
        QTest::newRow("-1") << -1 << 41;
    }

    void requesterSelectsTheCode()
    {
        QFETCH(int, ownerId);
        QFETCH(int, code);
        PLC_driver.readList.append(ownedRead("r", ownerId, 0));
        QCOMPARE(failNext(), code);
    }

private:
    void prepare() override
    {
        logCallbacks();
        info_.portTag = 7;
    }
};

QTEST_APPLESS_MAIN(TestReceiveCycleFailure)
#include "tst_receive_cycle_failure.moc"
