// The receive cycle: which list entry is retired, and what the requester of once-reads hears.
#include "driver/receive_cycle.h"
#include "tests/support/callback_log.h"
#include "tests/support/driver_requests.h"

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

class ReceiveCycleRetireTest : public QObject
{
    Q_OBJECT

    ComInfo info = ComInfo();

private Q_SLOTS:
    void init()
    {
        resetDriver(info);
        logCallbacks();
        info.portTag = 7;
    }

    void answeredWriteIsRemoved()
    {
        PLC_driver.writeList << wordWrite(QStringLiteral("w1")) << wordWrite(QStringLiteral("w2"));
        exchange(1);
        QCOMPARE(names(PLC_driver.writeList), QStringLiteral("w2"));
        QCOMPARE(PLC_driver.reply.name, QStringLiteral("w1"));
        QCOMPARE(PLC_driver.reply.rwKind, 1);
        QVERIFY(PLC_driver.reply.data.isEmpty());
        QCOMPARE(PLC_driver.reply.result, 1);
    }

    void answeredCyclicReadMovesToTheEnd()
    {
        PLC_driver.readList << wordRead(QStringLiteral("a")) << wordRead(QStringLiteral("b"))
                            << wordRead(QStringLiteral("c"));
        exchange(1);
        QCOMPARE(names(PLC_driver.readList), QStringLiteral("b c a"));
        QCOMPARE(PLC_driver.reply.name, QStringLiteral("a"));
        exchange(2);
        QCOMPARE(names(PLC_driver.readList), QStringLiteral("a b c"));
        QCOMPARE(calls(), QString());
    }

    void answeredOnceReadIsRemoved()
    {
        PLC_driver.onceReadList << ownedRead(QStringLiteral("o1"), 1, 1)
                                << ownedRead(QStringLiteral("o2"), 2, 2);
        exchange(1);
        QCOMPARE(names(PLC_driver.onceReadList), QStringLiteral("o2"));
        QCOMPARE(PLC_driver.reply.name, QStringLiteral("o1"));
        QCOMPARE(PLC_driver.reply.ownerId, 1);
    }

    void onlyTheListOfTheKindOnTheLineIsTouched()
    {
        PLC_driver.readList << wordRead(QStringLiteral("r1")) << wordRead(QStringLiteral("r2"));
        PLC_driver.onceReadList.append(wordRead(QStringLiteral("o")));
        PLC_driver.writeList.append(wordWrite(QStringLiteral("w")));
        exchange(1);
        QCOMPARE(names(PLC_driver.writeList), QString());
        QCOMPARE(names(PLC_driver.onceReadList), QStringLiteral("o"));
        QCOMPARE(names(PLC_driver.readList), QStringLiteral("r1 r2"));
        exchange(1);
        QCOMPARE(names(PLC_driver.onceReadList), QString());
        QCOMPARE(names(PLC_driver.readList), QStringLiteral("r1 r2"));
    }

    void requestOfNoKindRetiresNothing()
    {
        for (const int kind : {100, 3, -1}) {
            PLC_driver.readList.clear();
            PLC_driver.readList << wordRead(QStringLiteral("r1")) << wordRead(QStringLiteral("r2"));
            PLC_driver.writeList = {wordWrite(QStringLiteral("w"))};
            PLC_driver.onceReadList = {wordRead(QStringLiteral("o"))};
            PLC_driver.reply.name = QStringLiteral("earlier");
            PLC_driver.pendingFrames.append(frameFor(wordRead(QStringLiteral("x")), 8));
            PLC_driver.lastKind = kind;
            QCOMPARE(receive(wordReply()), 1);
            QCOMPARE(names(PLC_driver.readList), QStringLiteral("r1 r2"));
            QCOMPARE(names(PLC_driver.writeList), QStringLiteral("w"));
            QCOMPARE(names(PLC_driver.onceReadList), QStringLiteral("o"));
            QCOMPARE(PLC_driver.reply.name, QStringLiteral("earlier"));
        }
        QCOMPARE(calls(), QString());
    }

    void emptiedListRetiresNothing_data() { addKindRows(); }

    void emptiedListRetiresNothing()
    {
        QFETCH(int, kind);
        PLC_driver.pendingFrames.append(frameFor(ownedRead(QStringLiteral("x"), 3, 3), 8));
        PLC_driver.lastKind = kind;
        PLC_driver.reply.name = QStringLiteral("earlier");
        QCOMPARE(receive(wordReply()), 1);
        QCOMPARE(PLC_driver.reply.name, QStringLiteral("earlier"));
        QCOMPARE(calls(), QString());
    }

    void listRebuiltMeanwhileLosesItsTurnOfTheNewHead()
    {
        PLC_driver.readList.append(wordRead(QStringLiteral("old")));
        ComCommunication();
        PLC_driver.readList.clear();
        PLC_driver.readList << wordRead(QStringLiteral("n1")) << wordRead(QStringLiteral("n2"));
        QCOMPARE(receive(wordReply()), 1);
        QCOMPARE(PLC_driver.reply.name, QStringLiteral("n1"));
        QCOMPARE(names(PLC_driver.readList), QStringLiteral("n2 n1"));
    }

    void groupOfThreeIsReportedWithItsThird()
    {
        PLC_driver.onceReadList << ownedRead(QStringLiteral("o1"), 4, 9)
                                << ownedRead(QStringLiteral("o2"), 4, 9)
                                << ownedRead(QStringLiteral("o3"), 4, 9);
        exchange(2);
        QCOMPARE(calls(), QString());
        exchange(1);
        QCOMPARE(calls(), QStringLiteral("done 7 4 9 1"));
    }

    void groupsAreToldApartByBothHalvesOfTheRequester()
    {
        PLC_driver.onceReadList << ownedRead(QStringLiteral("o1"), 4, 9)
                                << ownedRead(QStringLiteral("o2"), 4, 8)
                                << ownedRead(QStringLiteral("o3"), 5, 9)
                                << ownedRead(QStringLiteral("o4"), 4, 8);
        exchange(4);
        QCOMPARE(calls(), QStringLiteral("done 7 4 9 1, done 7 5 9 1, done 7 4 8 1"));
    }

    void memberQueuedMeanwhilePutsTheReportOff()
    {
        PLC_driver.onceReadList.append(ownedRead(QStringLiteral("o1"), 4, 9));
        ComCommunication();
        PLC_driver.onceReadList.append(ownedRead(QStringLiteral("o2"), 4, 9));
        QCOMPARE(receive(wordReply()), 1);
        QCOMPARE(calls(), QString());
        info.portTag = 8;
        exchange(1);
        QCOMPARE(calls(), QStringLiteral("done 8 4 9 1"));
    }

    void requesterIsReportedBeforeTheEntryIsRetired()
    {
        PLC_driver.onceReadList << ownedRead(QStringLiteral("o1"), 4, 9)
                                << ownedRead(QStringLiteral("o2"), 5, 9);
        PLC_driver.reply.name = QStringLiteral("earlier");
        callbackLog().inside = [] {
            QVERIFY(!isFree(PLC_driver.listMutex));
            QVERIFY(isFree(PLC_driver.areaMutex));
            QVERIFY(isFree(PLC_driver.stationMutex));
            QCOMPARE(names(PLC_driver.onceReadList), QStringLiteral("o1 o2"));
            QCOMPARE(PLC_driver.reply.name, QStringLiteral("earlier"));
            QCOMPARE(PLC_driver.reply.result, 1);
            QVERIFY(PLC_driver.pendingFrames.isEmpty());
            QCOMPARE(PLC_driver.comInfo->framesReceived, 1);
            QCOMPARE(PLC_driver.comInfo->scanComplete, 1);
            QCOMPARE(PLC_driver.extendVars.first().data, bytes("AB 12"));
        };
        exchange(1);
        QCOMPARE(calls(), QStringLiteral("done 7 4 9 1"));
        QCOMPARE(PLC_driver.reply.name, QStringLiteral("o1"));
    }

    void remoteOnceReadIsNotReported()
    {
        PLC_driver.onceReadList << remote(ownedRead(QStringLiteral("o1"), 4, 9), -1)
                                << remote(ownedRead(QStringLiteral("o2"), 5, 9), 0);
        exchange(2);
        QCOMPARE(calls(), QString());
        QVERIFY(PLC_driver.onceReadList.isEmpty());
        QCOMPARE(PLC_driver.reply.name, QStringLiteral("o2"));
        QCOMPARE(PLC_driver.reply.result, 100);
    }

    void onceReadWithoutACallbackIsRetired()
    {
        PLC_driver.onceReadDone = nullptr;
        PLC_driver.onceReadList.append(ownedRead(QStringLiteral("o"), 4, 9));
        exchange(1);
        QVERIFY(PLC_driver.onceReadList.isEmpty());
        QCOMPARE(PLC_driver.reply.result, 1);
    }

    void writesAndCyclicReadsReportToNoRequester()
    {
        PLC_driver.ownerNotify = nullptr;
        PLC_driver.readList.append(ownedRead(QStringLiteral("r"), 4, 9));
        PLC_driver.writeList.append(wordWrite(QStringLiteral("w")));
        exchange(3);
        QCOMPARE(calls(), QString());
    }

    void resultOfTheEntryIsReplacedByTheCode()
    {
        RW_VAR var = wordRead(QStringLiteral("r"));
        var.result = 55;
        PLC_driver.readList.append(var);
        exchange(1);
        QCOMPARE(PLC_driver.reply.result, 1);
        QCOMPARE(PLC_driver.readList.first().result, 55);
    }
};

QTEST_APPLESS_MAIN(ReceiveCycleRetireTest)
#include "tst_receive_cycle_retire.moc"
