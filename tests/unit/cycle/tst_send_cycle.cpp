// The send cycle: which list is served, in what rhythm, and what is handed out.
#include "cycle/receive_cycle.h"
#include "cycle/send_cycle.h"
#include "tests/support/callback_log.h"
#include "tests/support/driver_requests.h"
#include "tests/support/driver_test.h"
#include "tests/support/lock_watch.h"

#include <QtTest>

namespace
{

void answer(const Protocol &frame)
{
    QByteArray reply = frame.var.rwKind == RW_WRITE ? acknowledgement() : wordReply();
    DataCom(&reply, reply.size());
}

/// Polls `turns` times with a good answer to each frame; the names of what went out, "-" for none.
QString serve(int turns)
{
    QStringList sent;
    for (int i = 0; i < turns; ++i) {
        const Protocol *frame = ComCommunication();
        sent.append(frame ? frame->var.name : QString("-"));
        if (frame)
            answer(*frame);
    }
    return sent.join(" ");
}

void fill(QList<RW_VAR> &list, RW_VAR (*make)(const QString &, int), const QString &prefix, int n)
{
    for (int i = 1; i <= n; ++i)
        list.append(make(prefix + QString::number(i), 1));
}

} // namespace

class TestSendCycle : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void nothingToServeYieldsNullAndAWholeScan()
    {
        PLC_driver.writeBurst = 3;
        PLC_driver.onceReadBurst = 2;
        QVERIFY(ComCommunication() == nullptr);
        QCOMPARE(info_.scanComplete, 1);
        QCOMPARE(PLC_driver.writeBurst, 0);
        QCOMPARE(PLC_driver.onceReadBurst, 0);
        QCOMPARE(PLC_driver.lastKind, 100);
        QVERIFY(PLC_driver.pendingFrames.isEmpty());
        QVERIFY(isFree(PLC_driver.listMutex));
    }

    void readFrameIsHandedOut()
    {
        PLC_driver.readList.append(wordRead("r"));
        const Protocol *frame = ComCommunication();
        QVERIFY(frame == &PLC_driver.pendingFrames.first());
        QCOMPARE(frame->frame, bytes("05 30 31 30 35 32 38 0D"));
        QCOMPARE(frame->frameLength, 8);
        QCOMPARE(frame->expectedReplyLength, 8);
        QCOMPARE(info_.framesExpected, 1);
        QCOMPARE(info_.framesReceived, 0);
        QCOMPARE(info_.scanComplete, 0);
        QVERIFY(isFree(PLC_driver.listMutex));
    }

    void writeFrameIsHandedOut()
    {
        PLC_driver.writeList.append(wordWrite("w", 2));
        const Protocol *frame = ComCommunication();
        QVERIFY(frame != nullptr);
        QCOMPARE(frame->frame, bytes("05 30 32 30 33 34 31 31 32 33 34 0D"));
        QCOMPARE(frame->expectedReplyLength, 6);
        QCOMPARE(info_.framesExpected, 1);
        QCOMPARE(info_.framesReceived, 0);
    }

    void entryStaysAtTheHeadWhileItsFrameIsOut_data() { addKindRows(); }

    void entryStaysAtTheHeadWhileItsFrameIsOut()
    {
        QFETCH(int, kind);
        QList<RW_VAR> &list = listOf(kind);
        fill(list, kind == KIND_WRITE ? wordWrite : wordRead, "e", 2);
        QVERIFY(ComCommunication() != nullptr);
        QCOMPARE(names(list), QString("e1 e2"));
        QCOMPARE(PLC_driver.lastKind, kind);
        QCOMPARE(PLC_driver.writeBurst, kind == KIND_WRITE ? 1 : 0);
        QCOMPARE(PLC_driver.onceReadBurst, kind == KIND_ONCE_READ ? 1 : 0);
    }

    void fiveWritesFiveOnceReadsOneCyclicReadMakeATurn()
    {
        fill(PLC_driver.writeList, wordWrite, "w", 7);
        fill(PLC_driver.onceReadList, wordRead, "o", 6);
        fill(PLC_driver.readList, wordRead, "r", 2);
        QCOMPARE(serve(17), QString("w1 w2 w3 w4 w5 o1 o2 o3 o4 o5 r1 w6 w7 o6 r2 r1 r2"));
    }

    void sixthWriteWaitsForThePollThatFindsNoReads()
    {
        fill(PLC_driver.writeList, wordWrite, "w", 6);
        QCOMPARE(serve(5), QString("w1 w2 w3 w4 w5"));
        QCOMPARE(PLC_driver.writeBurst, 5);
        QCOMPARE(serve(1), QString("-"));
        QCOMPARE(PLC_driver.writeBurst, 0);
        QCOMPARE(PLC_driver.onceReadBurst, 0);
        QCOMPARE(info_.scanComplete, 1);
        QCOMPARE(serve(2), QString("w6 -"));
    }

    void limitOfFiveHoldsForEachKindSeparately()
    {
        fill(PLC_driver.writeList, wordWrite, "w", 6);
        fill(PLC_driver.onceReadList, wordRead, "o", 6);
        QCOMPARE(serve(14), QString("w1 w2 w3 w4 w5 o1 o2 o3 o4 o5 - w6 o6 -"));
    }

    void doorCloses_data()
    {
        QTest::addColumn<int>("writeBurst");
        QTest::addColumn<int>("onceReadBurst");
        QTest::addColumn<QString>("next");
        QTest::newRow("both open") << 4 << 4 << "w";
        QTest::newRow("writes closed") << 5 << 4 << "o";
        QTest::newRow("both closed") << 5 << 5 << "r";
        QTest::newRow("far beyond") << 99 << 99 << "r";
        QTest::newRow("once-reads closed, writes open") << 0 << 5 << "w";
    }

    void doorCloses()
    {
        QFETCH(int, writeBurst);
        QFETCH(int, onceReadBurst);
        QFETCH(QString, next);
        PLC_driver.writeList.append(wordWrite("w"));
        PLC_driver.onceReadList.append(wordRead("o"));
        PLC_driver.readList.append(wordRead("r"));
        PLC_driver.writeBurst = writeBurst;
        PLC_driver.onceReadBurst = onceReadBurst;
        QCOMPARE(ComCommunication()->var.name, next);
        QCOMPARE(PLC_driver.writeBurst, next == "r"   ? 0
                                        : next == "w" ? writeBurst + 1
                                                      : writeBurst);
    }

    void writeQueuedMeanwhileOvertakesTheReads()
    {
        fill(PLC_driver.readList, wordRead, "r", 2);
        QCOMPARE(serve(1), QString("r1"));
        PLC_driver.writeList.append(wordWrite("w"));
        QCOMPARE(serve(3), QString("w r2 r1"));
    }

    void pendingFrameIsHandedOutAgainWithoutALock()
    {
        PLC_driver.readList.append(wordRead("r"));
        Protocol *frame = ComCommunication();
        PLC_driver.writeList.append(wordWrite("w"));
        const AllLocksHeld held;
        QVERIFY(ComCommunication() == frame);
        QVERIFY(ComCommunication() == frame);
        QCOMPARE(PLC_driver.lastKind, 0);
        QCOMPARE(PLC_driver.writeBurst, 0);
        QCOMPARE(names(PLC_driver.readList), QString("r"));
        QCOMPARE(names(PLC_driver.writeList), QString("w"));
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
    }

    void failedAttemptIsRepeatedWithTheSameRecord()
    {
        info_.retryLimit = 1;
        PLC_driver.readList.append(wordRead("r"));
        Protocol *frame = ComCommunication();
        DataCom(nullptr, 0);
        EnCommStation(1, 0);
        QVERIFY(ComCommunication() == frame);
        QCOMPARE(frame->frame, bytes("05 30 31 30 35 32 38 0D"));
    }

    void furtherFrameOfARequestFollows()
    {
        PLC_driver.pendingFrames.append(frameFor(wordRead("a"), 8));
        PLC_driver.pendingFrames.append(frameFor(wordRead("b"), 8));
        info_.framesExpected = 2;
        QCOMPARE(serve(2), QString("a b"));
        QVERIFY(ComCommunication() == nullptr);
    }

    void choiceWaitsForTheListMutex()
    {
        QVERIFY(waitsFor(PLC_driver.listMutex, [] { ComCommunication(); }));
    }

    void writeIsNotifiedUnderTheListMutexAlone()
    {
        PLC_driver.ownerNotify = logOwnerNotify;
        RW_VAR var = wordWrite("w");
        var.ownerId = 6;
        PLC_driver.writeList.append(var);
        callbackLog().inside = [] {
            QVERIFY(!isFree(PLC_driver.listMutex));
            QVERIFY(isFree(PLC_driver.areaMutex));
            QVERIFY(isFree(PLC_driver.stationMutex));
            QCOMPARE(PLC_driver.lastKind, 1);
            QCOMPARE(PLC_driver.writeBurst, 0);
            QCOMPARE(PLC_driver.pendingFrames.size(), 1);
            QCOMPARE(names(PLC_driver.writeList), QString("w"));
            QVERIFY(PLC_driver.extendVars.isEmpty());
        };
        QVERIFY(ComCommunication() != nullptr);
        QCOMPARE(callbackLog().calls, QStringList("notify 6 1 0"));
        QCOMPARE(PLC_driver.writeBurst, 1);
        QCOMPARE(PLC_driver.extendVars.size(), 1);
        QCOMPARE(PLC_driver.extendVars.first().data, bytes("34 12"));
    }

    void writeWithoutACallbackGoesOut()
    {
        PLC_driver.writeList.append(wordWrite("w"));
        QCOMPARE(serve(1), QString("w"));
    }

    void writeIsMirroredWhileTheListMutexIsHeld()
    {
        PLC_driver.writeList.append(wordWrite("w"));
        bool listMutexFree = true;
        QVERIFY(waitsFor(
            PLC_driver.areaMutex, [] { ComCommunication(); },
            [&] { listMutexFree = isFree(PLC_driver.listMutex); }));
        QVERIFY(!listMutexFree);
    }

    void cyclicReadThatBuildsNoFrameKeepsItsPlace()
    {
        fill(PLC_driver.readList, wordRead, "r", 2);
        PLC_driver.readList[0].areaType = 3;
        PLC_driver.writeBurst = 2;
        for (int poll = 0; poll < 3; ++poll) {
            QVERIFY(ComCommunication() == nullptr);
            QCOMPARE(names(PLC_driver.readList), QString("r1 r2"));
            QCOMPARE(PLC_driver.lastKind, 0);
            QCOMPARE(PLC_driver.writeBurst, 0);
        }
        QCOMPARE(info_.scanComplete, 0);
        QVERIFY(isFree(PLC_driver.listMutex));
    }

    void writeThatBuildsNoFrameIsCountedAndKeepsItsPlace()
    {
        PLC_driver.ownerNotify = logOwnerNotify;
        PLC_driver.writeList.append(wordWrite("w"));
        PLC_driver.writeList[0].areaType = AREA_C;
        PLC_driver.readList.append(wordRead("r"));
        QCOMPARE(serve(6), QString("- - - - - r"));
        QCOMPARE(callbackLog().calls.size(), 5);
        QCOMPARE(names(PLC_driver.writeList), QString("w"));
    }

    void onceReadThatBuildsNoFrameIsCountedAndKeepsItsPlace()
    {
        PLC_driver.onceReadList.append(wordRead("o"));
        PLC_driver.onceReadList[0].areaType = -1;
        QVERIFY(ComCommunication() == nullptr);
        QCOMPARE(PLC_driver.onceReadBurst, 1);
        QCOMPARE(names(PLC_driver.onceReadList), QString("o"));
    }

    void remoteModeSendsEnvelopes_data()
    {
        QTest::addColumn<int>("remoteMode");
        QTest::newRow("1") << 1;
        QTest::newRow("2") << 2;
        QTest::newRow("-1") << -1;
    }

    void remoteModeSendsEnvelopes()
    {
        QFETCH(int, remoteMode);
        info_.remoteMode = remoteMode;
        RW_VAR var = remote(ownedRead("r", 7, 0), 0);
        var.address = 100;
        const QByteArray read =
            bytes("16 07 00 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 86");
        PLC_driver.onceReadList.append(var);
        PLC_driver.readList.append(var);
        var.rwKind = RW_WRITE;
        var.data = bytes("34 12");
        PLC_driver.writeList.append(var);

        QCOMPARE(ComCommunication()->frame,
                 bytes("18 07 01 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 34 12 CF"));
        answer(*ComCommunication());
        QCOMPARE(ComCommunication()->frame, read);
        QCOMPARE(PLC_driver.lastKind, 2);
        answer(*ComCommunication());
        QCOMPARE(ComCommunication()->frame, read);
        QCOMPARE(PLC_driver.lastKind, 0);
    }

    void modeOfTheMomentDecidesNotThatOfTheEntry()
    {
        RW_VAR var = wordRead("r");
        var.reserved3 = 1;
        PLC_driver.readList.append(var);
        QCOMPARE(ComCommunication()->frame, bytes("05 30 31 30 35 32 38 0D"));
    }
};

QTEST_APPLESS_MAIN(TestSendCycle)
#include "tst_send_cycle.moc"
