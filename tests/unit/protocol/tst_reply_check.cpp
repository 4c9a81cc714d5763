// The first judgement of a reply: refused, data, or acknowledgement.
#include "protocol/frame_codec.h"

#include "tests/support/damage.h"
#include "tests/support/driver_test.h"
#include "tests/support/frame_requests.h"
#include "tests/support/row_names.h"

#include <QtTest>

#include <limits>

namespace
{

void queueHead(int rwKind)
{
    Protocol frame;
    frame.expectedReplyLength = 8;
    frame.var = distinctRequest(AREA_D, "5.2.1");
    frame.var.rwKind = rwKind;
    PLC_driver.pendingFrames.append(frame);
}

} // namespace

class TestReplyCheck : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void judgesByLastAndFirstByte_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<int>("received");
        QTest::addColumn<bool>("good");
        const auto row = [](const char *hex, int received, bool good) {
            formattedRow("%s, %d received", hex, received) << bytes(hex) << received << good;
        };
        row("06 30 31 31 32 41 42 0D", 8, true);
        row("06 30 31 31 32 41 42 0A", 8, false);
        row("06 30 31 31 32 41 42 8D", 8, false);
        row("06 30 31 31 32 41 42 0D 0D", 9, true);
        row("06 30 31 31 32 41 42 0D 30", 9, false);
        row("06 30 31 31 32 41 42 0D 30", 8, true);
        row("15 30 31 0D", 4, false);
        row("15 0D", 2, false);
        row("15", 1, false);
        row("95 30 31 0D", 4, true);
        row("06 15 0D", 3, true);
        row("06 15 31 0D", 4, true);
        row("0D", 1, true);
        row("0D 30", 1, true);
        row("06 0D", 1, false);
        row("15 0D 30", 2, false);
        row("00 0D", 2, true);
        row("05 39 39 0D", 4, true);
        row("06 0D 0D 0D 0D 0D 0D 0D 0D 0D 0D 0D 0D 0D 0D 0D 0D 0D 0D 0D 0D", 21, true);
    }

    void judgesByLastAndFirstByte()
    {
        QFETCH(QByteArray, reply);
        QFETCH(int, received);
        QFETCH(bool, good);
        queueHead(RW_READ);
        QCOMPARE(CheckGetData(&reply, received), good ? 1 : 0);
        PLC_driver.pendingFrames.first().var.rwKind = RW_WRITE;
        QCOMPARE(CheckGetData(&reply, received), good ? 2 : 0);
    }

    void resultFollowsTheKindOfTheHeadFrame_data()
    {
        QTest::addColumn<int>("rwKind");
        QTest::addColumn<int>("result");
        QTest::newRow("read") << 0 << 1;
        QTest::newRow("write") << 1 << 2;
        QTest::newRow("kind 2") << 2 << 0;
        QTest::newRow("kind -1") << -1 << 0;
        QTest::newRow("kind 256") << 256 << 0;
        QTest::newRow("kind 257") << 257 << 0;
    }

    void resultFollowsTheKindOfTheHeadFrame()
    {
        QFETCH(int, rwKind);
        QFETCH(int, result);
        queueHead(rwKind);
        QByteArray reply = bytes("06 30 31 0D");
        QCOMPARE(CheckGetData(&reply, 4), result);
    }

    void onlyTheHeadFrameCounts()
    {
        queueHead(RW_READ);
        queueHead(RW_WRITE);
        QByteArray reply = bytes("06 30 31 0D");
        QCOMPARE(CheckGetData(&reply, 4), 1);
        PLC_driver.pendingFrames.removeFirst();
        QCOMPARE(CheckGetData(&reply, 4), 2);
    }

    void lengthThatTheArrayDoesNotHaveIsRefused_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<int>("received");
        const QByteArray reply = bytes("06 30 31 0D");
        QTest::newRow("none received") << reply << 0;
        QTest::newRow("negative") << reply << -1;
        QTest::newRow("lowest") << reply << std::numeric_limits<int>::min();
        QTest::newRow("one too many") << reply << 5;
        QTest::newRow("far too many") << reply << 1000000;
        QTest::newRow("highest") << reply << std::numeric_limits<int>::max();
        QTest::newRow("null array, none received") << QByteArray() << 0;
        QTest::newRow("null array, one received") << QByteArray() << 1;
        QTest::newRow("empty array, one received") << QByteArray("") << 1;
        QTest::newRow("lone CR, two received") << bytes("0D") << 2;
    }

    void lengthThatTheArrayDoesNotHaveIsRefused()
    {
        QFETCH(QByteArray, reply);
        QFETCH(int, received);
        queueHead(RW_READ);
        QCOMPARE(CheckGetData(&reply, received), 0);
    }

    void nothingReceivedIsRefusedEvenWithoutAnArray()
    {
        queueHead(RW_READ);
        QCOMPARE(CheckGetData(nullptr, 0), 0);
    }

    void everyTruncationOfAReplyIsRefused()
    {
        queueHead(RW_READ);
        const QByteArray whole = bytes("06 30 31 31 32 41 42 0D");
        for (int size = 0; size < whole.size(); ++size) {
            QByteArray reply = whole.left(size);
            QCOMPARE(CheckGetData(&reply, size), 0);
            QCOMPARE(CheckGetData(&reply, whole.size()), 0);
        }
    }

    void nothingPendingIsRefused()
    {
        QByteArray reply = bytes("06 30 31 0D");
        QCOMPARE(CheckGetData(&reply, 4), 0);
    }

    void replyAndListStayAsTheyWere()
    {
        queueHead(RW_READ);
        queueHead(RW_WRITE);
        const QString headBefore = recordText(PLC_driver.pendingFrames.first().var);
        QByteArray reply = bytes("06 30 31 31 32 41 42 0D");
        QCOMPARE(CheckGetData(&reply, 8), 1);
        QCOMPARE(reply, bytes("06 30 31 31 32 41 42 0D"));
        QCOMPARE(PLC_driver.pendingFrames.size(), 2);
        QCOMPARE(recordText(PLC_driver.pendingFrames.first().var), headBefore);
        QVERIFY(PLC_driver.extendVars.isEmpty());
    }

    void noLockIsTaken()
    {
        queueHead(RW_READ);
        QByteArray reply = bytes("06 30 31 0D");
        const AllLocksHeld held;
        QCOMPARE(CheckGetData(&reply, 4), 1);
    }

    // Digits are not looked at here: whatever stands between the ends, a reply with both is good.
    void damagedRepliesAreJudgedByTheirEndsAlone()
    {
        queueHead(RW_READ);
        const auto judge = [](const QByteArray &damaged) {
            QByteArray reply = damaged;
            const bool good = damaged.endsWith('\x0D') && !damaged.startsWith('\x15');
            return CheckGetData(&reply, reply.size()) == (good ? 1 : 0)
                       ? QString()
                       : QString::fromLatin1("judged otherwise");
        };
        QCOMPARE(faultAtDamage(bytes("06 30 31 31 32 41 42 0D"), judge), QString());
        QCOMPARE(faultAtDamage(bytes("06 30 31 30 30 0D"), judge), QString());
    }
};

QTEST_APPLESS_MAIN(TestReplyCheck)
#include "tst_reply_check.moc"
