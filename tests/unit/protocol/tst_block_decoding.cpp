// A reply of area C: seventy records from one block of digits.
#include "protocol/reply_decoding.h"

#include "tests/support/awaited_reply.h"
#include "tests/support/driver_test.h"
#include "tests/support/frame_requests.h"
#include "tests/support/row_names.h"

#include <QtTest>

#include <limits>

namespace
{

/// The records of a block at address 40: `values` in hex, the rest zero.
QStringList blockRecords(const QByteArray &values)
{
    QStringList records;
    for (int k = 0; k < 70; ++k) {
        const QByteArray value = k < values.size() ? values.mid(k, 1) : QByteArray(1, '\0');
        records.append(
            QString("1/2/%1=%2").arg(40 + k).arg(QString::fromLatin1(value.toHex().toUpper())));
    }
    return records;
}

} // namespace

class TestBlockDecoding : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void blockFillsSeventyRecords()
    {
        // Decimal digits only, so that the bytes of the values can be read off the reply: 00 to 69.
        QByteArray reply = bytes("06 30 31");
        QByteArray values;
        for (int tens = 0; tens < 7; ++tens) {
            for (int units = 0; units < 10; ++units) {
                reply.append(static_cast<char>('0' + tens)).append(static_cast<char>('0' + units));
                values.append(static_cast<char>(tens * 16 + units));
            }
        }
        reply.append('\r');
        QCOMPARE(reply.size(), 144);
        awaitReply(AREA_C);
        decode(reply);
        QCOMPARE(cacheRecords(), blockRecords(values));
    }

    void shortBlockLeavesTheRestZero()
    {
        awaitReply(AREA_C);
        decode(bytes("06 30 31 31 32 33 34 41 42 0D"));
        QCOMPARE(cacheRecords(), blockRecords(bytes("12 34 AB")));
    }

    void halfAPairAtTheEndReadsAsZero()
    {
        awaitReply(AREA_C);
        decode(bytes("06 30 31 31 32 33 34 41 42 37"));
        QCOMPARE(cacheRecords(), blockRecords(bytes("12 34 AB 70")));
    }

    void bytesBehindTheReplyAreNotRead()
    {
        // A view of the first bytes of a longer buffer has no zero byte at its end.
        const QByteArray buffer = bytes("06 30 31 31 32 33 34 41 42 37 39 39 39 39");
        awaitReply(AREA_C);
        decode(QByteArray::fromRawData(buffer.constData(), 10));
        QCOMPARE(cacheRecords(), blockRecords(bytes("12 34 AB 70")));
    }

    void emptyReplyStoresZeros()
    {
        awaitReply(AREA_C);
        decode(QByteArray());
        QCOMPARE(cacheRecords(), blockRecords(QByteArray()));
    }

    void blockLongerThanExpectedFillsNoMoreRecords()
    {
        awaitReply(AREA_C);
        decode(bytes("06 30 31") + QByteArray(400, '5'));
        QCOMPARE(cacheRecords(), blockRecords(QByteArray(70, 0x55)));
    }

    void blockStartsWhereItsFrameSays_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<QByteArray>("values");
        QTest::newRow("0") << 0 << bytes("00 11 23 4A B0");
        QTest::newRow("4") << 4 << bytes("23 4A B0");
        QTest::newRow("5") << 5 << bytes("34 AB");
        QTest::newRow("8, half a pair") << 8 << bytes("B0");
        QTest::newRow("10, the end") << 10 << QByteArray();
        QTest::newRow("far behind the end") << 1000000 << QByteArray();
        QTest::newRow("two thousand million") << 2000000000 << QByteArray();
        QTest::newRow("-1") << -1 << bytes("00 01 12 34 AB");
        QTest::newRow("-2") << -2 << bytes("00 00 11 23 4A B0");
        for (const int below : {0, 1, 2, 137, 138, 139})
            formattedRow("%d below the highest", below)
                << std::numeric_limits<int>::max() - below << QByteArray();
        QTest::newRow("lowest") << std::numeric_limits<int>::min() << QByteArray();
    }

    void blockStartsWhereItsFrameSays()
    {
        QFETCH(int, start);
        QFETCH(QByteArray, values);
        awaitReply(AREA_C).builderParam1 = start;
        decode(bytes("06 30 31 31 32 33 34 41 42 0D"));
        QCOMPARE(cacheRecords(), blockRecords(values));
    }

    void aPairThatBeginsBeforeTheReplyHasItsFirstDigit()
    {
        awaitReply(AREA_C).builderParam1 = -1;
        decode(bytes("41 32 33 34 0D"));
        QCOMPARE(cacheRecords(), blockRecords(bytes("0A 23 40")));
    }

    void blockIgnoresTheCountOfItsVariable()
    {
        for (const int count : {0, -1, 3, 1000}) {
            resetDriver(info_);
            Protocol &head = awaitReply(AREA_C);
            head.var.count = count;
            head.builderParam2 = count;
            decode(bytes("06 30 31 31 32 33 34 41 42 0D"));
            QCOMPARE(cacheRecords(), blockRecords(bytes("12 34 AB")));
        }
    }

    void blockAtTheHighestAddressWraps()
    {
        awaitReply(AREA_C).var.address = std::numeric_limits<int>::max();
        decode(bytes("06 30 31 31 32 33 34 0D"));
        QCOMPARE(cacheRecords().size(), 70);
        QCOMPARE(QStringList(cacheRecords().mid(0, 2)),
                 one("1/2/2147483647=12") + one("1/2/-2147483648=34"));
    }

    void blockReusesRecordsThatExist()
    {
        PLC_driver.extendVars.append({1, 2, 41, bytes("99 98 97 96")});
        awaitReply(AREA_C);
        decode(bytes("06 30 31 31 32 33 34 41 42 0D"));
        QStringList expected = blockRecords(bytes("12 34 AB"));
        expected.move(1, 0); // the older record keeps its place at the front
        QCOMPARE(cacheRecords(), expected);
    }
};

QTEST_APPLESS_MAIN(TestBlockDecoding)
#include "tst_block_decoding.moc"
