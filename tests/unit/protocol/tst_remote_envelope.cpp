// The binary envelope of remote mode.
#include "protocol/remote_envelope.h"

#include "tests/support/callback_log.h"
#include "tests/support/driver_test.h"
#include "tests/support/frame_requests.h"
#include "tests/support/row_names.h"

#include <QtTest>

#include <limits>

namespace
{

/// The word at address 100 of station 1 on PLC 2.
RW_VAR wordAt100(int rwKind, const QByteArray &data = QByteArray())
{
    RW_VAR var;
    var.ownerId = 7;
    var.rwKind = rwKind;
    var.plcNo = 2;
    var.areaType = AREA_D;
    var.address = 100;
    var.station = 1;
    var.count = 1;
    var.data = data;
    return var;
}

/// A request whose fields are all wider than what the envelope keeps of them.
RW_VAR wideRequest()
{
    RW_VAR var;
    var.ownerId = 0x11223344;
    var.ownerSubId = 0x55667788;
    var.rwKind = 0x101;
    var.plcNo = 0x1FF;
    var.station = 0x1AB;
    var.areaType = 0x10001;
    var.address = 0x01234567;
    var.count = 0x12345;
    var.remoteTag = -1;
    var.reserved13 = static_cast<qint32>(0x89ABCDEFU);
    return var;
}

QStringList one(const char *text)
{
    return {QString::fromLatin1(text)};
}

int byteAt(int index)
{
    return static_cast<quint8>(PLC_driver.pendingFrames.first().frame.at(index));
}

using Builder = void (*)(RW_VAR *);

} // namespace

Q_DECLARE_METATYPE(Builder)

class TestRemoteEnvelope : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void readIsTwentyTwoBytes()
    {
        RW_VAR var = wordAt100(RW_READ);
        Remote_ReadVar(&var);
        QCOMPARE(pendingHex(),
                 one("16 07 00 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 86"));
        QCOMPARE(fieldsOf(PLC_driver.pendingFrames.first()), expectedFields(22, 8, 3, 4));
    }

    void readIgnoresTheData()
    {
        RW_VAR var = wordAt100(RW_READ, QByteArray(500, 'x'));
        Remote_ReadVar(&var);
        QCOMPARE(pendingHex(),
                 one("16 07 00 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 86"));
    }

    void fieldsAreBigEndianAndCutToTheirWidth()
    {
        RW_VAR var = wideRequest();
        Remote_ReadVar(&var);
        QCOMPARE(pendingHex(),
                 one("16 44 01 FF AB 00 01 01 23 45 67 23 45 FF FF FF FF 89 AB CD EF 2A"));
        // The area as it stands is no area, though its low half is that of a word.
        QCOMPARE(fieldsOf(PLC_driver.pendingFrames.first()), expectedFields(22, 0, 0, 0));
    }

    void negativeFieldsAreSentAsTheirBits()
    {
        RW_VAR var;
        var.ownerId = -1;
        var.rwKind = -2;
        var.plcNo = -3;
        var.station = -4;
        var.areaType = -5;
        var.address = -6;
        var.count = -7;
        var.remoteTag = std::numeric_limits<int>::min();
        var.reserved13 = -8;
        Remote_ReadVar(&var);
        QCOMPARE(pendingHex(),
                 one("16 FF FE FD FC FF FB FF FF FF FA FF F9 80 00 00 00 FF FF FF F8 6A"));
    }

    void areaDecidesTheReplyOfARead_data()
    {
        QTest::addColumn<int>("areaType");
        QTest::addColumn<QString>("fields");
        QTest::newRow("bit") << 0 << expectedFields(22, 6, 3, 2);
        QTest::newRow("word") << 1 << expectedFields(22, 8, 3, 4);
        QTest::newRow("block") << 2 << expectedFields(22, 144, 3, 140);
        QTest::newRow("3") << 3 << expectedFields(22, 0, 0, 0);
        QTest::newRow("-1") << -1 << expectedFields(22, 0, 0, 0);
        QTest::newRow("65536") << 65536 << expectedFields(22, 0, 0, 0);
    }

    void areaDecidesTheReplyOfARead()
    {
        QFETCH(int, areaType);
        QFETCH(QString, fields);
        RW_VAR var = wordAt100(RW_READ);
        var.areaType = areaType;
        Remote_ReadVar(&var);
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
        QCOMPARE(fieldsOf(PLC_driver.pendingFrames.first()), fields);
        QCOMPARE(byteAt(5), (areaType >> 8) & 0xFF);
        QCOMPARE(byteAt(6), areaType & 0xFF);
    }

    void writeCarriesItsDataAsTheyStand()
    {
        RW_VAR var = wordAt100(RW_WRITE, bytes("34 12"));
        Remote_WriteVar(&var);
        QCOMPARE(pendingHex(),
                 one("18 07 01 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 34 12 CF"));
        QCOMPARE(fieldsOf(PLC_driver.pendingFrames.first()), expectedFields(24, 6, 0, 0));
        QCOMPARE(cacheRecords(), one("1/1/100=3412"));
    }

    void writeWithoutDataIsTheBareHeader()
    {
        RW_VAR var = wordAt100(RW_WRITE);
        Remote_WriteVar(&var);
        QCOMPARE(pendingHex(),
                 one("16 07 01 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 87"));
        QCOMPARE(fieldsOf(PLC_driver.pendingFrames.first()), expectedFields(22, 6, 0, 0));
        QVERIFY(PLC_driver.extendVars.isEmpty());
    }

    void everyTruncationOfTheDataIsFramedAsItStands_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QByteArray>("frame");
        QTest::addColumn<QStringList>("records");
        const auto row = [](const char *data, const char *length, const char *sum,
                            const QStringList &records) {
            const QByteArray header(
                " 07 01 02 01 00 01 00 00 00 64 00 02 00 00 00 00 00 00 00 00 ");
            formattedRow("%d bytes", bytes(data).size())
                << bytes(data) << length + header + data + sum << records;
        };
        const QStringList first = one("1/1/100=3412");
        row("", "16", "88", QStringList());
        row("34 ", "17", "BD", QStringList());
        row("34 12 ", "18", "D0", first);
        row("34 12 78 ", "19", "49", first);
        row("34 12 78 56 ", "1A", "A0", first + one("1/1/101=7856"));
    }

    void everyTruncationOfTheDataIsFramedAsItStands()
    {
        QFETCH(QByteArray, data);
        QFETCH(QByteArray, frame);
        QFETCH(QStringList, records);
        RW_VAR var = wordAt100(RW_WRITE, data);
        var.count = 2;
        Remote_WriteVar(&var);
        QCOMPARE(pendingHex(), one(frame.constData()));
        QCOMPARE(fieldsOf(PLC_driver.pendingFrames.first()),
                 expectedFields(22 + data.size(), 6, 0, 0));
        QCOMPARE(cacheRecords(), records);
    }

    void writeExpectsAnAcknowledgementWhateverTheArea_data()
    {
        QTest::addColumn<int>("areaType");
        QTest::addColumn<QByteArray>("frame");
        const char *const header = "18 07 00 02 01 ";
        const char *const rest = " 00 00 00 64 00 01 00 00 00 00 00 00 00 00 34 12 ";
        const auto row = [&](int areaType, const char *area, const char *sum) {
            formattedRow("%d", areaType)
                << areaType << QByteArray(header).append(area).append(rest).append(sum);
        };
        row(0, "00 00", "CD");
        row(2, "00 02", "CF");
        row(3, "00 03", "D0");
        row(-1, "FF FF", "CB");
    }

    void writeExpectsAnAcknowledgementWhateverTheArea()
    {
        QFETCH(int, areaType);
        QFETCH(QByteArray, frame);
        RW_VAR var = wordAt100(RW_READ, bytes("34 12")); // the direction too is sent as it stands
        var.areaType = areaType;
        Remote_WriteVar(&var);
        QCOMPARE(pendingHex(), one(frame.constData()));
        QCOMPARE(fieldsOf(PLC_driver.pendingFrames.first()), expectedFields(24, 6, 0, 0));
    }

    void lengthByteWraps_data()
    {
        QTest::addColumn<int>("dataSize");
        QTest::addColumn<int>("lengthByte");
        QTest::newRow("233 bytes are the last that fit") << 233 << 255;
        QTest::newRow("234 bytes") << 234 << 0;
        QTest::newRow("235 bytes") << 235 << 1;
        QTest::newRow("300 bytes") << 300 << 66;
        QTest::newRow("490 bytes") << 490 << 0;
    }

    void lengthByteWraps()
    {
        QFETCH(int, dataSize);
        QFETCH(int, lengthByte);
        RW_VAR var; // all zero: the checksum is the length byte and what the data add
        var.data = QByteArray(dataSize, '\0');
        var.data[dataSize - 1] = 0x05;
        Remote_WriteVar(&var);
        const Protocol &queued = PLC_driver.pendingFrames.first();
        QCOMPARE(queued.frame.size(), dataSize + 22);
        QCOMPARE(queued.frameLength, dataSize + 22);
        QCOMPARE(queued.frame.mid(21, dataSize), var.data);
        QCOMPARE(byteAt(0), lengthByte);
        QCOMPARE(byteAt(dataSize + 21), (lengthByte + 5) % 256);
    }

    void checksumCoversMoreThanSixteenBitsOfBytes_data()
    {
        QTest::addColumn<int>("dataSize");
        QTest::addColumn<int>("lengthByte");
        QTest::newRow("65,535 bytes are summed") << 65514 << 0x00;
        QTest::newRow("65,536 bytes are summed") << 65515 << 0x01;
        QTest::newRow("70,021 bytes are summed") << 70000 << 0x86;
        QTest::newRow("131,072 bytes are summed") << 131051 << 0x01;
    }

    void checksumCoversMoreThanSixteenBitsOfBytes()
    {
        QFETCH(int, dataSize);
        QFETCH(int, lengthByte);
        RW_VAR var;
        var.data = QByteArray(dataSize, '\0');
        var.data[0] = 0x10;
        var.data[dataSize - 1] = 0x07;
        Remote_WriteVar(&var);
        QCOMPARE(PLC_driver.pendingFrames.first().frameLength, dataSize + 22);
        QCOMPARE(byteAt(0), lengthByte);
        QCOMPARE(byteAt(dataSize + 21), lengthByte + 0x17);
    }

    void envelopeIsQueuedWithACopyOfItsRequest_data()
    {
        QTest::addColumn<Builder>("builder");
        QTest::newRow("read") << &Remote_ReadVar;
        QTest::newRow("write") << &Remote_WriteVar;
    }

    void envelopeIsQueuedWithACopyOfItsRequest()
    {
        QFETCH(Builder, builder);
        fillWords(info_);
        RW_VAR var = distinctRequest(AREA_D, "5.2.1");
        const QString before = recordText(var);
        builder(&var);
        QCOMPARE(recordText(var), before);
        QCOMPARE(changedWords(info_), oneReplyAwaited());
        var.name.clear();
        var.data[0] = 'x';
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
        QCOMPARE(recordText(PLC_driver.pendingFrames.first().var), before);
    }

    void envelopesQueueInCallOrder()
    {
        RW_VAR write = wordAt100(RW_WRITE);
        RW_VAR read = wordAt100(RW_READ);
        Remote_WriteVar(&write);
        info_.framesReceived = 9;
        Remote_ReadVar(&read);
        QCOMPARE(pendingHex(),
                 one("16 07 01 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 87") +
                     one("16 07 00 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 86"));
        QCOMPARE(info_.framesExpected, 1);
        QCOMPARE(info_.framesReceived, 0);
    }

    void writeIsMirroredIntoTheCache_data()
    {
        QTest::addColumn<int>("areaType");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QStringList>("records");
        QTest::newRow("bit of two bytes") << 0 << 1 << bytes("01 00") << one("1/0/100=01");
        QTest::newRow("bit of one byte") << 0 << 1 << bytes("01") << QStringList();
        QTest::newRow("word") << 1 << 1 << bytes("34 12") << one("1/1/100=3412");
        QTest::newRow("two words")
            << 1 << 2 << bytes("34 12 78 56") << one("1/1/100=3412") + one("1/1/101=7856");
        QTest::newRow("more words than data") << 1 << 9 << bytes("34 12 78") << one("1/1/100=3412");
        QTest::newRow("no elements") << 1 << 0 << bytes("34 12") << QStringList();
        QTest::newRow("area C") << 2 << 1 << bytes("34 12") << QStringList();
    }

    void writeIsMirroredIntoTheCache()
    {
        QFETCH(int, areaType);
        QFETCH(int, count);
        QFETCH(QByteArray, data);
        QFETCH(QStringList, records);
        RW_VAR var = wordAt100(RW_WRITE, data);
        var.areaType = areaType;
        var.count = count;
        Remote_WriteVar(&var);
        QCOMPARE(cacheRecords(), records);
        QCOMPARE(PLC_driver.pendingFrames.first().frame.size(), 22 + data.size());
        QCOMPARE(byteAt(0), 22 + data.size());
    }

    void writeIsMirroredEvenAfterAFailedExchange()
    {
        PLC_driver.errorFlag = 1;
        RW_VAR var = wordAt100(RW_WRITE, bytes("34 12"));
        Remote_WriteVar(&var);
        QCOMPARE(cacheRecords(), one("1/1/100=3412"));
    }

    void readLeavesTheCacheAndEveryLockAlone()
    {
        RW_VAR var = wordAt100(RW_READ, bytes("34 12"));
        const AllLocksHeld held;
        Remote_ReadVar(&var);
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
        QVERIFY(PLC_driver.extendVars.isEmpty());
    }

    void writeTakesTheAreaMutexOnly()
    {
        RW_VAR var = wordAt100(RW_WRITE, bytes("34 12"));
        const QMutexLocker lists(&PLC_driver.listMutex);
        const QMutexLocker stations(&PLC_driver.stationMutex);
        Remote_WriteVar(&var);
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
        QVERIFY(isFree(PLC_driver.areaMutex));
    }

    void hostIsNotNotified()
    {
        PLC_driver.ownerNotify = &logOwnerNotify;
        PLC_driver.onceReadDone = &logOnceReadDone;
        RW_VAR var = wordAt100(RW_WRITE, bytes("34 12"));
        Remote_WriteVar(&var);
        Remote_ReadVar(&var);
        QCOMPARE(callbackLog().calls, QStringList());
    }
};

QTEST_APPLESS_MAIN(TestRemoteEnvelope)
#include "tst_remote_envelope.moc"
