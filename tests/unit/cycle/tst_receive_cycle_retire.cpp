// The receive cycle: which list entry is retired, and what the requester of once-reads hears.
#include "cycle/receive_cycle.h"
#include "tests/support/callback_log.h"
#include "tests/support/driver_requests.h"
#include "tests/support/driver_test.h"

#include <QtTest>

namespace
{

int receive(QByteArray reply)
{
    return DataCom(&reply, reply.size())->result;
}

/// Polls and answers well `turns` times.
void exchange(int turns)
{
    for (int i = 0; i < turns; ++i) {
        const Protocol *frame = ComCommunication();
        receive(frame->var.rwKind == RW_WRITE ? acknowledgement() : wordReply());
    }
}

} // namespace

class TestReceiveCycleRetire : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void answeredWriteIsRemoved()
    {
        PLC_driver.writeList << wordWrite("w1") << wordWrite("w2");
        exchange(1);
        QCOMPARE(names(PLC_driver.writeList), QString("w2"));
        QCOMPARE(PLC_driver.reply.name, QString("w1"));
        QCOMPARE(PLC_driver.reply.rwKind, 1);
        QVERIFY(PLC_driver.reply.data.isEmpty());
        QCOMPARE(PLC_driver.reply.result, 1);
    }

    void answeredCyclicReadMovesToTheEnd()
    {
        PLC_driver.readList << wordRead("a") << wordRead("b") << wordRead("c");
        exchange(1);
        QCOMPARE(names(PLC_driver.readList), QString("b c a"));
        QCOMPARE(PLC_driver.reply.name, QString("a"));
        exchange(2);
        QCOMPARE(names(PLC_driver.readList), QString("a b c"));
        QCOMPARE(calls(), QString());
    }

    void answeredOnceReadIsRemoved()
    {
        PLC_driver.onceReadList << ownedRead("o1", 1, 1) << ownedRead("o2", 2, 2);
        exchange(1);
        QCOMPARE(names(PLC_driver.onceReadList), QString("o2"));
        QCOMPARE(PLC_driver.reply.name, QString("o1"));
        QCOMPARE(PLC_driver.reply.ownerId, 1);
    }

    void onlyTheListOfTheKindOnTheLineIsTouched()
    {
        PLC_driver.readList << wordRead("r1") << wordRead("r2");
        PLC_driver.onceReadList.append(wordRead("o"));
        PLC_driver.writeList.append(wordWrite("w"));
        exchange(1);
        QCOMPARE(names(PLC_driver.writeList), QString());
        QCOMPARE(names(PLC_driver.onceReadList), QString("o"));
        QCOMPARE(names(PLC_driver.readList), QString("r1 r2"));
        exchange(1);
        QCOMPARE(names(PLC_driver.onceReadList), QString());
        QCOMPARE(names(PLC_driver.readList), QString("r1 r2"));
    }

    void requestOfNoKindRetiresNothing()
    {
        for (const int kind : {100, 3, -1}) {
            PLC_driver.readList.clear();
            PLC_driver.readList << wordRead("r1") << wordRead("r2");
            PLC_driver.writeList = {wordWrite("w")};
            PLC_driver.onceReadList = {wordRead("o")};
            PLC_driver.reply.name = "earlier";
            PLC_driver.pendingFrames.append(frameFor(wordRead("x"), 8));
            PLC_driver.lastKind = kind;
            QCOMPARE(receive(wordReply()), 1);
            QCOMPARE(names(PLC_driver.readList), QString("r1 r2"));
            QCOMPARE(names(PLC_driver.writeList), QString("w"));
            QCOMPARE(names(PLC_driver.onceReadList), QString("o"));
            QCOMPARE(PLC_driver.reply.name, QString("earlier"));
        }
        QCOMPARE(calls(), QString());
    }

    void emptiedListRetiresNothing_data() { addKindRows(); }

    void emptiedListRetiresNothing()
    {
        QFETCH(int, kind);
        PLC_driver.pendingFrames.append(frameFor(ownedRead("x", 3, 3), 8));
        PLC_driver.lastKind = kind;
        PLC_driver.reply.name = "earlier";
        QCOMPARE(receive(wordReply()), 1);
        QCOMPARE(PLC_driver.reply.name, QString("earlier"));
        QCOMPARE(calls(), QString());
    }

    void listRebuiltMeanwhileLosesItsTurnOfTheNewHead()
    {
        PLC_driver.readList.append(wordRead("old"));
        ComCommunication();
        PLC_driver.readList.clear();
        PLC_driver.readList << wordRead("n1") << wordRead("n2");
        QCOMPARE(receive(wordReply()), 1);
        QCOMPARE(PLC_driver.reply.name, QString("n1"));
        QCOMPARE(names(PLC_driver.readList), QString("n2 n1"));
    }

    void groupOfThreeIsReportedWithItsThird()
    {
        PLC_driver.onceReadList << ownedRead("o1", 4, 9) << ownedRead("o2", 4, 9)
                                << ownedRead("o3", 4, 9);
        exchange(2);
        QCOMPARE(calls(), QString());
        exchange(1);
        QCOMPARE(calls(), QString("done 7 4 9 1"));
    }

    void groupsAreToldApartByBothHalvesOfTheRequester()
    {
        PLC_driver.onceReadList << ownedRead("o1", 4, 9) << ownedRead("o2", 4, 8)
                                << ownedRead("o3", 5, 9) << ownedRead("o4", 4, 8);
        exchange(4);
        QCOMPARE(calls(), QString("done 7 4 9 1, done 7 5 9 1, done 7 4 8 1"));
    }

    void memberQueuedMeanwhilePutsTheReportOff()
    {
        PLC_driver.onceReadList.append(ownedRead("o1", 4, 9));
        ComCommunication();
        PLC_driver.onceReadList.append(ownedRead("o2", 4, 9));
        QCOMPARE(receive(wordReply()), 1);
        QCOMPARE(calls(), QString());
        info_.portTag = 8;
        exchange(1);
        QCOMPARE(calls(), QString("done 8 4 9 1"));
    }

    void requesterIsReportedBeforeTheEntryIsRetired()
    {
        PLC_driver.onceReadList << ownedRead("o1", 4, 9) << ownedRead("o2", 5, 9);
        PLC_driver.reply.name = "earlier";
        callbackLog().inside = [] {
            QVERIFY(!isFree(PLC_driver.listMutex));
            QVERIFY(isFree(PLC_driver.areaMutex));
            QVERIFY(isFree(PLC_driver.stationMutex));
            QCOMPARE(names(PLC_driver.onceReadList), QString("o1 o2"));
            QCOMPARE(PLC_driver.reply.name, QString("earlier"));
            QCOMPARE(PLC_driver.reply.result, 1);
            QVERIFY(PLC_driver.pendingFrames.isEmpty());
            QCOMPARE(PLC_driver.comInfo->framesReceived, 1);
            QCOMPARE(PLC_driver.comInfo->scanComplete, 1);
            QCOMPARE(PLC_driver.extendVars.first().data, bytes("AB 12"));
        };
        exchange(1);
        QCOMPARE(calls(), QString("done 7 4 9 1"));
        QCOMPARE(PLC_driver.reply.name, QString("o1"));
    }

    void remoteOnceReadIsNotReported()
    {
        PLC_driver.onceReadList << remote(ownedRead("o1", 4, 9), -1)
                                << remote(ownedRead("o2", 5, 9), 0);
        exchange(2);
        QCOMPARE(calls(), QString());
        QVERIFY(PLC_driver.onceReadList.isEmpty());
        QCOMPARE(PLC_driver.reply.name, QString("o2"));
        QCOMPARE(PLC_driver.reply.result, 100);
    }

    void onceReadWithoutACallbackIsRetired()
    {
        PLC_driver.onceReadDone = nullptr;
        PLC_driver.onceReadList.append(ownedRead("o", 4, 9));
        exchange(1);
        QVERIFY(PLC_driver.onceReadList.isEmpty());
        QCOMPARE(PLC_driver.reply.result, 1);
    }

    void writesAndCyclicReadsReportToNoRequester()
    {
        PLC_driver.ownerNotify = nullptr;
        PLC_driver.readList.append(ownedRead("r", 4, 9));
        PLC_driver.writeList.append(wordWrite("w"));
        exchange(3);
        QCOMPARE(calls(), QString());
    }

    void resultOfTheEntryIsReplacedByTheCode()
    {
        RW_VAR var = wordRead("r");
        var.result = 55;
        PLC_driver.readList.append(var);
        exchange(1);
        QCOMPARE(PLC_driver.reply.result, 1);
        QCOMPARE(PLC_driver.readList.first().result, 55);
    }

private:
    void prepare() override
    {
        logCallbacks();
        info_.portTag = 7;
    }
};

QTEST_APPLESS_MAIN(TestReceiveCycleRetire)
#include "tst_receive_cycle_retire.moc"
