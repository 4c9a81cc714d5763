// From the digits of a reply to the records of the value cache.
#include "protocol/reply_decoding.h"

#include "tests/support/awaited_reply.h"
#include "tests/support/driver_test.h"
#include "tests/support/frame_requests.h"
#include "tests/support/row_names.h"

#include <QtTest>

namespace
{

void addReplyColumns()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QByteArray>("value");
}

void addReply(const char *reply, const char *value)
{
    formattedRow("reply %s", reply) << bytes(reply) << QByteArray(value);
}

} // namespace

class TestReplyDecoding : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void wordIsStoredLowByteFirst_data()
    {
        addReplyColumns();
        addReply("06 30 31 31 32 41 42 0D", "AB12");
        addReply("06 30 31 31 32 61 62 0D", "CB12"); // lower case is not folded
        addReply("06 30 31 30 30 30 30 0D", "0000");
        addReply("06 30 31 46 46 46 46 0D", "FFFF");
        addReply("06 30 31 38 30 37 46 0D", "7F80");
        addReply("06 30 31 3A 3B 3C 3D 0D", "CDAB"); // ":" to "?" count as 10 to 15
        addReply("06 30 31 3E 3F 40 40 0D", "00EF");
        addReply("06 30 31 20 0D 2F 00 0D", "0000");
        addReply("06 30 31 47 30 30 47 0D", "1000"); // "G" is 16: its high bit falls off or carries
        addReply("06 30 31 FF 30 30 FF 0D", "C880"); // 200 * 16 and 200, cut to eight bits
        addReply("06 30 31 80 30 30 80 0D", "4990");
        addReply("00 00 00 31 32 41 42 00", "AB12"); // neither the lead nor the end is looked at
        addReply("06 30 31 31 32 41 42 0D 39 39 39 39", "AB12");
        addReply("06 30 31 31 32 41 42", "AB12");
        addReply("06 30 31 31 32 41", "A012");
        addReply("06 30 31 31 32", "0012");
        addReply("06 30 31 31", "0010");
        addReply("06 30 31", "0000");
        addReply("06 30", "0000");
        addReply("06", "0000");
        addReply("", "0000");
    }

    void wordIsStoredLowByteFirst()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QByteArray, value);
        awaitReply(AREA_D);
        decode(reply);
        QCOMPARE(cacheRecords(), one("1/1/40=" + value));
    }

    void byteOfXIsStored_data()
    {
        addReplyColumns();
        addReply("06 30 31 41 42 0D", "AB");
        addReply("06 30 31 30 31 0D", "01");
        addReply("06 30 31 46 46 0D", "FF");
        addReply("06 30 31 61 62 0D", "CB");
        addReply("06 30 31 3F 3A 0D", "FA");
        addReply("06 30 31 40 39 0D", "09");
        addReply("06 30 31 FF 30 0D", "80");
        addReply("06 30 31 30 FF 0D", "C8");
        addReply("15 FF FF 37 38 00", "78");
        addReply("06 30 31 31 32 41 42 0D", "12");
        addReply("06 30 31 41 42", "AB");
        addReply("06 30 31 41", "A0");
        addReply("06 30 31", "00");
        addReply("06", "00");
        addReply("", "00");
    }

    void byteOfXIsStored()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QByteArray, value);
        awaitReply(AREA_X);
        decode(reply);
        QCOMPARE(cacheRecords(), one("1/0/40=" + value));
    }

    void bytesBehindTheReplyAreNotRead()
    {
        // A view of the first bytes of a longer buffer has no zero byte at its end.
        const QByteArray buffer = bytes("06 30 31 31 32 33 39 39");
        awaitReply(AREA_D);
        decode(QByteArray::fromRawData(buffer.constData(), 6));
        QCOMPARE(cacheRecords(), one("1/1/40=3012"));

        resetDriver(info_);
        awaitReply(AREA_X);
        decode(QByteArray::fromRawData(buffer.constData(), 4));
        QCOMPARE(cacheRecords(), one("1/0/40=10"));
    }

    void wordAndByteAreAtFixedPlaces()
    {
        Protocol &word = awaitReply(AREA_D);
        word.builderParam1 = 5;
        word.builderParam2 = 99;
        decode(bytes("06 30 31 31 32 41 42 0D"));
        QCOMPARE(cacheRecords(), one("1/1/40=AB12"));

        resetDriver(info_);
        Protocol &byte = awaitReply(AREA_X);
        byte.builderParam1 = -7;
        byte.builderParam2 = 0;
        decode(bytes("06 30 31 41 42 0D"));
        QCOMPARE(cacheRecords(), one("1/0/40=AB"));
    }

    void keyIsStationAreaAndAddress()
    {
        const QByteArray reply = bytes("06 30 31 31 32 41 42 0D");
        Protocol &head = awaitReply(AREA_D);
        decode(reply);
        head.var.station = 2;
        decode(reply);
        head.var.address = -41;
        decode(reply);
        head.var.areaType = AREA_X;
        decode(reply);
        QCOMPARE(cacheRecords(),
                 one("1/1/40=AB12") + one("2/1/40=AB12") + one("2/1/-41=AB12") + one("2/0/-41=12"));
    }

    void laterReplyReplacesTheValue()
    {
        awaitReply(AREA_D);
        decode(bytes("06 30 31 31 32 41 42 0D"));
        decode(bytes("06 30 31 30 30 30 37 0D"));
        QCOMPARE(cacheRecords(), one("1/1/40=0700"));
    }

    void copyTakenEarlierKeepsItsValue()
    {
        for (const int area : {AREA_D, AREA_X}) {
            resetDriver(info_);
            awaitReply(area);
            decode(bytes("06 30 31 31 32 41 42 0D"));
            const QByteArray taken = PLC_driver.extendVars.first().data;
            decode(bytes("06 30 31 30 30 30 37 0D"));
            QCOMPARE(taken, area == AREA_D ? bytes("AB 12") : bytes("12"));
        }
    }

    void recordIsReplacedWhole_data()
    {
        QTest::addColumn<QByteArray>("old");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("one byte") << bytes("99");
        QTest::newRow("four bytes") << bytes("99 98 97 96");
    }

    void recordIsReplacedWhole()
    {
        QFETCH(QByteArray, old);
        PLC_driver.extendVars.append({1, 0, 40, old});
        PLC_driver.extendVars.append({1, 1, 40, old});
        awaitReply(AREA_X);
        decode(bytes("06 30 31 41 42 0D"));
        PLC_driver.pendingFrames.clear();
        awaitReply(AREA_D);
        decode(bytes("06 30 31 31 32 33 34 0D"));
        QCOMPARE(cacheRecords(), one("1/0/40=AB") + one("1/1/40=3412"));
    }

    void unknownAreaStoresNothing_data()
    {
        QTest::addColumn<int>("areaType");
        QTest::newRow("3") << 3;
        QTest::newRow("-1") << -1;
        QTest::newRow("256") << 256;
    }

    void unknownAreaStoresNothing()
    {
        QFETCH(int, areaType);
        PLC_driver.extendVars.append({1, 1, 40, bytes("34 12")});
        awaitReply(areaType);
        decode(bytes("06 30 31 31 32 41 42 0D"));
        QCOMPARE(cacheRecords(), one("1/1/40=3412"));
    }

    void onlyTheHeadRequestIsAnswered()
    {
        awaitReply(AREA_D);
        awaitReply(AREA_X);
        decode(bytes("06 30 31 31 32 41 42 0D"));
        QCOMPARE(cacheRecords(), one("1/1/40=AB12"));
    }

    void directionOfTheRequestIsNotLookedAt()
    {
        awaitReply(AREA_D).var.rwKind = RW_WRITE;
        decode(bytes("06 30 31 31 32 41 42 0D"));
        QCOMPARE(cacheRecords(), one("1/1/40=AB12"));
    }

    void nothingPendingStoresNothing()
    {
        decode(bytes("06 30 31 31 32 41 42 0D"));
        QVERIFY(PLC_driver.extendVars.isEmpty());
        QVERIFY(PLC_driver.pendingFrames.isEmpty());
    }

    void headFrameReplyAndHostBlockStayAsTheyWere()
    {
        fillWords(info_);
        Protocol &head = awaitReply(AREA_C);
        head.var = distinctRequest(AREA_C, "7.9.0.4");
        const QString variable = recordText(head.var);
        const QString fields = fieldsOf(head);
        QByteArray reply = bytes("06 30 31 31 32 33 34 41 42 0D");
        SaveToLocalDataErea(&reply);
        QCOMPARE(reply, bytes("06 30 31 31 32 33 34 41 42 0D"));
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
        QCOMPARE(recordText(PLC_driver.pendingFrames.first().var), variable);
        QCOMPARE(fieldsOf(PLC_driver.pendingFrames.first()), fields);
        QCOMPARE(changedWords(info_), QStringList());
    }

    void noLockIsTaken()
    {
        awaitReply(AREA_D);
        const AllLocksHeld held; // the caller holds the area mutex already
        decode(bytes("06 30 31 31 32 41 42 0D"));
        QCOMPARE(cacheRecords(), one("1/1/40=AB12"));
    }
};

QTEST_APPLESS_MAIN(TestReplyDecoding)
#include "tst_reply_decoding.moc"
