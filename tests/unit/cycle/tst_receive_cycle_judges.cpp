// The two judges of a reply: the local path and the remote path.
#include "cycle/receive_cycle.h"
#include "tests/support/driver_requests.h"
#include "tests/support/driver_test.h"
#include "tests/support/lock_watch.h"
#include "tests/support/row_names.h"

#include <QtTest>

namespace
{

/// What the cache holds of the word that wordRead asks for; a null array when nothing.
QByteArray cachedWord()
{
    return PLC_driver.extendVars.isEmpty() ? QByteArray() : PLC_driver.extendVars.first().data;
}

void pend(const RW_VAR &var, int expected)
{
    PLC_driver.pendingFrames.append(frameFor(var, expected));
}

} // namespace

class TestReceiveCycleJudges : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void replyIsJudged_data()
    {
        QTest::addColumn<int>("expected");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("local");  // code for requester 0
        QTest::addColumn<int>("remote"); // the same with remoteTag -1
        const QByteArray good = wordReply();

        QTest::newRow("0631313132 41420D good") << 8 << good << 8 << 1 << 1;
        QTest::newRow("nothing") << 8 << QByteArray() << 0 << 41 << 141;
        QTest::newRow("nothing counted") << 8 << good << 0 << 41 << 141;
        QTest::newRow("nothing, any length") << -1 << QByteArray() << 0 << 41 << 141;
        QTest::newRow("nothing, none expected") << 0 << QByteArray() << 0 << 11 << 111;
        QTest::newRow("something, none expected") << 0 << good << 8 << 71 << 171;
        QTest::newRow("one byte too many") << 8 << good + '\r' << 9 << 71 << 171;
        QTest::newRow("negative length") << 8 << good << -8 << 71 << 171;
        QTest::newRow("negative length, any length") << -1 << good << -1 << 11 << 111;
        QTest::newRow("very negative length, any length") << -1 << good << -2147483647 << 11 << 111;
        QTest::newRow("15 refusal") << 8 << bytes("15 30 31 31 32 41 42 0D") << 8 << 11 << 111;
        QTest::newRow("15 0D short refusal") << 8 << bytes("15 0D") << 2 << 71 << 171;
        QTest::newRow("15 0D any length") << -1 << bytes("15 0D") << 2 << 11 << 111;
        QTest::newRow("no CR") << 8 << bytes("06 30 31 31 32 41 42 0A") << 8 << 11 << 111;
        QTest::newRow("0D any length") << -1 << bytes("0D") << 1 << 1 << 1;
        QTest::newRow("06 any length") << -1 << bytes("06") << 1 << 11 << 111;
        QTest::newRow("array shorter than length") << 8 << good.left(5) << 8 << 11 << 111;
        QTest::newRow("empty array, length 8") << 8 << QByteArray() << 8 << 11 << 111;
        QTest::newRow("length beyond, any length") << -1 << good << 1000000 << 11 << 111;
        QTest::newRow("array longer than length") << 8 << good + "tail" << 8 << 1 << 1;
        QTest::newRow("bad digits") << 8 << bytes("06 30 31 78 79 21 7E 0D") << 8 << 1 << 1;
    }

    void replyIsJudged()
    {
        QFETCH(int, expected);
        QFETCH(QByteArray, reply);
        QFETCH(int, length);
        QFETCH(int, local);
        QFETCH(int, remote);
        const QByteArray before = reply;
        pend(::remote(wordRead("r"), -1), expected);
        QCOMPARE(DealDataOfRemoteArea(&reply, length), remote);
        QCOMPARE(PLC_driver.extendVars.size(), remote == 1 ? 1 : 0);
        PLC_driver.extendVars.clear();
        QCOMPARE(DealDataOfLocalArea(&reply, length), local);
        QCOMPARE(PLC_driver.extendVars.size(), local == 1 ? 1 : 0);
        QCOMPARE(reply, before);
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
        QVERIFY(isFree(PLC_driver.areaMutex));
    }

    void everyTruncationIsRefused()
    {
        pend(remote(wordRead("r"), -1), 8);
        for (int length = 1; length < 8; ++length) {
            QByteArray reply = wordReply().left(length);
            PLC_driver.pendingFrames.first().expectedReplyLength = 8;
            QCOMPARE(DealDataOfLocalArea(&reply, length), 71);
            QCOMPARE(DealDataOfRemoteArea(&reply, length), 171);
            PLC_driver.pendingFrames.first().expectedReplyLength = -1;
            QCOMPARE(DealDataOfLocalArea(&reply, length), 11);
            QCOMPARE(DealDataOfRemoteArea(&reply, length), 111);
        }
        QVERIFY(PLC_driver.extendVars.isEmpty());
    }

    void missingArrayIsRefused()
    {
        pend(wordRead("r"), 8);
        QCOMPARE(DealDataOfLocalArea(nullptr, 0), 41);
        QCOMPARE(DealDataOfRemoteArea(nullptr, 0), 141);
        QCOMPARE(DealDataOfLocalArea(nullptr, 8), 11);
        QCOMPARE(DealDataOfRemoteArea(nullptr, 8), 111);
    }

    void replyToNothingIsRefusedWithoutALock()
    {
        QByteArray reply = wordReply();
        const AllLocksHeld held;
        QCOMPARE(DealDataOfLocalArea(&reply, 8), 11);
        QCOMPARE(DealDataOfRemoteArea(&reply, 8), 111);
        QCOMPARE(DealDataOfLocalArea(nullptr, 0), 11);
        QCOMPARE(DealDataOfRemoteArea(nullptr, 0), 111);
        QVERIFY(PLC_driver.extendVars.isEmpty());
    }

    void theFirstOfSeveralFramesIsJudged()
    {
        pend(remote(wordRead("r"), -1), 8);
        pend(remote(wordRead("s"), 0), 6);
        QByteArray reply = wordReply();
        QCOMPARE(DealDataOfLocalArea(&reply, 8), 1);
        QCOMPARE(DealDataOfRemoteArea(&reply, 8), 1);
    }

    void codeNamesTheRequester()
    {
        pend(ownedRead("r", 11, 0), 8);
        QCOMPARE(DealDataOfLocalArea(nullptr, 0), 52);
        QCOMPARE(DealDataOfRemoteArea(nullptr, 0), 152);
        for (const int other : {12, -1}) {
            PLC_driver.pendingFrames.first().var.ownerId = other;
            QCOMPARE(DealDataOfLocalArea(nullptr, 0), 41);
            QCOMPARE(DealDataOfRemoteArea(nullptr, 0), 141);
        }
    }

    void localReadIsStored()
    {
        pend(wordRead("r"), 8);
        QByteArray reply = wordReply();
        QCOMPARE(DealDataOfLocalArea(&reply, 8), 1);
        QCOMPARE(PLC_driver.extendVars.size(), 1);
        QCOMPARE(PLC_driver.extendVars.first().station, 1);
        QCOMPARE(PLC_driver.extendVars.first().areaType, 1);
        QCOMPARE(PLC_driver.extendVars.first().address, 165);
        QCOMPARE(cachedWord(), bytes("AB 12"));
    }

    void localStoreWaitsForTheAreaMutexAlone()
    {
        pend(wordRead("r"), 8);
        QByteArray reply = wordReply();
        bool emptyMeanwhile = false;
        bool listMutexFree = false;
        bool stationMutexFree = false;
        QVERIFY(waitsFor(
            PLC_driver.areaMutex, [&] { DealDataOfLocalArea(&reply, 8); },
            [&] {
                emptyMeanwhile = PLC_driver.extendVars.isEmpty();
                listMutexFree = isFree(PLC_driver.listMutex);
                stationMutexFree = isFree(PLC_driver.stationMutex);
            }));
        QVERIFY(emptyMeanwhile);
        QVERIFY(listMutexFree);
        QVERIFY(stationMutexFree);
        QCOMPARE(cachedWord(), bytes("AB 12"));
    }

    void localStoreTakesNeitherListNorStationMutex()
    {
        pend(wordRead("r"), 8);
        QByteArray reply = wordReply();
        PLC_driver.listMutex.lock();
        PLC_driver.stationMutex.lock();
        const int code = DealDataOfLocalArea(&reply, 8);
        PLC_driver.stationMutex.unlock();
        PLC_driver.listMutex.unlock();
        QCOMPARE(code, 1);
    }

    void localAcknowledgementIsNotStoredAndTakesNoLock()
    {
        pend(wordWrite("w"), 6);
        QByteArray reply = acknowledgement();
        const AllLocksHeld held;
        QCOMPARE(DealDataOfLocalArea(&reply, 6), 1);
        QVERIFY(PLC_driver.extendVars.isEmpty());
    }

    void localFailureTakesNoLock()
    {
        pend(wordRead("r"), 8);
        QByteArray refusal = bytes("15 30 31 31 32 41 42 0D");
        const AllLocksHeld held;
        QCOMPARE(DealDataOfLocalArea(&refusal, 8), 11);
        QCOMPARE(DealDataOfLocalArea(&refusal, 7), 71);
        QCOMPARE(DealDataOfLocalArea(&refusal, 0), 41);
    }

    void remoteReadIsStoredWithoutALock()
    {
        pend(remote(wordRead("r"), -1), 8);
        QByteArray reply = wordReply();
        const AllLocksHeld held;
        QCOMPARE(DealDataOfRemoteArea(&reply, 8), 1);
        QCOMPARE(cachedWord(), bytes("AB 12"));
    }

    void remoteReadOfAnotherTagIsNotStored_data()
    {
        QTest::addColumn<int>("remoteTag");
        for (const int tag : {0, 1, -2, 2147483647})
            formattedRow("%d", tag) << tag;
    }

    void remoteReadOfAnotherTagIsNotStored()
    {
        QFETCH(int, remoteTag);
        pend(remote(wordRead("r"), remoteTag), 8);
        QByteArray reply = wordReply();
        for (const int received : {0, 1, 2}) {
            info_.framesReceived = received;
            QCOMPARE(DealDataOfRemoteArea(&reply, 8), 100);
        }
        QVERIFY(PLC_driver.extendVars.isEmpty());
    }

    void storedRemoteReadIsCode100WhenOneFrameCameBefore()
    {
        pend(remote(wordRead("r"), -1), 8);
        QByteArray reply = wordReply();
        const QPair<int, int> codes[] = {{0, 1}, {1, 100}, {2, 1}, {-1, 1}};
        for (const auto &row : codes) {
            PLC_driver.extendVars.clear();
            info_.framesReceived = row.first;
            QCOMPARE(DealDataOfRemoteArea(&reply, 8), row.second);
            QCOMPARE(cachedWord(), bytes("AB 12"));
            QCOMPARE(info_.framesReceived, row.first);
        }
    }

    void remoteAcknowledgementOfTagMinusOneIsStoredLikeARead()
    {
        pend(remote(wordWrite("w"), -1), 6);
        QByteArray reply = acknowledgement();
        QCOMPARE(DealDataOfRemoteArea(&reply, 6), 1);
        QCOMPARE(PLC_driver.extendVars.size(), 1);
        QCOMPARE(cachedWord(), bytes("00 00"));
    }

    void remoteAcknowledgementOfAnotherTagIsCode100()
    {
        pend(remote(wordWrite("w"), 0), 6);
        QByteArray reply = acknowledgement();
        QCOMPARE(DealDataOfRemoteArea(&reply, 6), 100);
        QVERIFY(PLC_driver.extendVars.isEmpty());
    }

    void replyToAnUnknownDirectionIsRefused()
    {
        RW_VAR var = remote(wordRead("r"), -1);
        var.rwKind = 2;
        pend(var, 8);
        QByteArray reply = wordReply();
        QCOMPARE(DealDataOfLocalArea(&reply, 8), 11);
        QCOMPARE(DealDataOfRemoteArea(&reply, 8), 111);
        QVERIFY(PLC_driver.extendVars.isEmpty());
    }

    void judgesLeaveTheCountersAlone()
    {
        pend(wordRead("r"), 8);
        QByteArray reply = wordReply();
        info_.retryCount = 3;
        PLC_driver.errorFlag = 1;
        PLC_driver.reply.result = 9;
        DealDataOfLocalArea(&reply, 8);
        DealDataOfLocalArea(nullptr, 0);
        DealDataOfRemoteArea(&reply, 8);
        QCOMPARE(info_.retryCount, 3);
        QCOMPARE(info_.framesReceived, 0);
        QCOMPARE(int(PLC_driver.errorFlag), 1);
        QCOMPARE(PLC_driver.reply.result, 9);
    }
};

QTEST_APPLESS_MAIN(TestReceiveCycleJudges)
#include "tst_receive_cycle_judges.moc"
