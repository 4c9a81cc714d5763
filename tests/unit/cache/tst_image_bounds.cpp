// The accessors at and beyond the ends of an area, and with absurd starts and counts.
#include "cache/image_accessors.h"

#include "tests/support/driver_fixture.h"
#include "tests/support/image_areas.h"

#include <QtTest>

#include <limits>

namespace
{

const int LOWEST = std::numeric_limits<int>::min();
const int HIGHEST = std::numeric_limits<int>::max();

void addReadColumns()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("read");
}

void addWriteColumns()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<Changes>("changed");
}

} // namespace
Q_DECLARE_METATYPE(Changes)

class tst_image_bounds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bitsOutsideAByteAreaReadAsZero_data()
    {
        addReadColumns();
        QTest::newRow("last") << AREA_BITS - 1 << 1 << bytes("01");
        QTest::newRow("over the end") << AREA_BITS - 2 << 4 << bytes("01 01 00 00");
        QTest::newRow("past the end") << AREA_BITS << 2 << bytes("00 00");
        QTest::newRow("highest") << HIGHEST << 3 << bytes("00 00 00");
        QTest::newRow("-1") << -1 << 1 << bytes("00");
        QTest::newRow("-3") << -3 << 5 << bytes("00 00 00 01 01");
        QTest::newRow("-8, no remainder") << -8 << 9 << bytes("00 00 00 00 00 00 00 00 01");
        QTest::newRow("lowest") << LOWEST << 2 << bytes("00 00");
    }
    void bitsOutsideAByteAreaReadAsZero()
    {
        QFETCH(int, start);
        QFETCH(int, count);
        QFETCH(QByteArray, read);
        ByteArea area = byteArea(0xFF);
        QByteArray out;
        GetBitFromUC(out, area.data(), start, count);
        QCOMPARE(out, read);
    }

    void bitsOutsideAWordAreaReadAsZero_data()
    {
        bitsOutsideAByteAreaReadAsZero_data();
        QTest::newRow("-16, no remainder") << -16 << 17 << QByteArray(16, '\0') + bytes("01");
    }
    void bitsOutsideAWordAreaReadAsZero()
    {
        QFETCH(int, start);
        QFETCH(int, count);
        QFETCH(QByteArray, read);
        WordArea area = wordArea(0xFFFF);
        QByteArray out;
        GetBitFromUS(out, area.data(), start, count);
        QCOMPARE(out, read);
    }

    void wordsOutsideTheAreaReadAsZero_data()
    {
        addReadColumns();
        QTest::newRow("last") << AREA_WORDS - 1 << 1 << bytes("34 12");
        QTest::newRow("over the end") << AREA_WORDS - 1 << 3 << bytes("34 12 00 00 00 00");
        QTest::newRow("past the end") << AREA_WORDS << 1 << bytes("00 00");
        QTest::newRow("highest") << HIGHEST << 2 << bytes("00 00 00 00");
        QTest::newRow("-1") << -1 << 2 << bytes("00 00 34 12");
        QTest::newRow("lowest") << LOWEST << 1 << bytes("00 00");
    }
    void wordsOutsideTheAreaReadAsZero()
    {
        QFETCH(int, start);
        QFETCH(int, count);
        QFETCH(QByteArray, read);
        WordArea area = wordArea(0x1234);
        QByteArray out;
        GetWordFromUS(out, area.data(), start, count);
        QCOMPARE(out, read);
    }

    void doubleWordsOutsideTheAreaReadAsZero_data()
    {
        addReadColumns();
        QTest::newRow("last") << AREA_WORDS - 2 << 2 << bytes("34 12 34 12");
        QTest::newRow("last low half") << AREA_WORDS - 2 << 1 << bytes("34 12");
        QTest::newRow("low half outside") << AREA_WORDS - 1 << 1 << bytes("00 00");
        QTest::newRow("over the end") << AREA_WORDS - 2 << 4 << bytes("34 12 34 12 00 00 00 00");
        QTest::newRow("past the end") << AREA_WORDS << 2 << bytes("00 00 00 00");
        QTest::newRow("highest") << HIGHEST << 4 << bytes("00 00 00 00 00 00 00 00");
        QTest::newRow("highest, low half") << HIGHEST << 1 << bytes("00 00");
        QTest::newRow("-2") << -2 << 4 << bytes("00 00 00 00 34 12 34 12");
        QTest::newRow("-2, low half") << -2 << 1 << bytes("00 00");
        QTest::newRow("-1, low half") << -1 << 1 << bytes("34 12");
        QTest::newRow("lowest") << LOWEST << 2 << bytes("00 00 00 00");
        QTest::newRow("lowest, low half") << LOWEST << 1 << bytes("00 00");
        QTest::newRow("astride the end") << AREA_WORDS - 1 << 2 << bytes("00 00 34 12");
        QTest::newRow("astride the front") << -1 << 2 << bytes("34 12 00 00");
    }
    void doubleWordsOutsideTheAreaReadAsZero()
    {
        QFETCH(int, start);
        QFETCH(int, count);
        QFETCH(QByteArray, read);
        WordArea area = wordArea(0x1234);
        QByteArray out;
        GetWordFromUI(out, area.data(), start, count);
        QCOMPARE(out, read);
    }

    void noReadMovesMoreThanAnAreaHolds()
    {
        ByteArea bits = byteArea(0xFF);
        WordArea words = wordArea(0x0101);
        QByteArray out;
        GetBitFromUC(out, bits.data(), 0, HIGHEST);
        QCOMPARE(out.size(), AREA_BITS);
        QCOMPARE(out.count('\1'), AREA_BITS);
        out.clear();
        GetBitFromUS(out, words.data(), 0, HIGHEST);
        QCOMPARE(out.size(), AREA_BITS);
        QCOMPARE(out.count('\1'), AREA_BITS / 8);
        out.clear();
        GetWordFromUS(out, words.data(), 0, HIGHEST);
        QCOMPARE(out, QByteArray(IMAGE_AREA_BYTES, '\1'));
        out.clear();
        GetWordFromUI(out, words.data(), 0, HIGHEST);
        QCOMPARE(out, QByteArray(IMAGE_AREA_BYTES, '\1'));
    }

    void bitsOutsideAByteAreaAreNotWritten_data()
    {
        addWriteColumns();
        QTest::newRow("last") << AREA_BITS - 1 << changesAt({{IMAGE_AREA_BYTES - 1, 0x80}});
        QTest::newRow("past the end") << AREA_BITS << Changes();
        QTest::newRow("highest") << HIGHEST << Changes();
        QTest::newRow("-1") << -1 << changesAt({{0, 0x07}});
        QTest::newRow("-3") << -3 << changesAt({{0, 0x01}});
        QTest::newRow("-4") << -4 << Changes();
        QTest::newRow("-8, no remainder") << -8 << Changes();
        QTest::newRow("lowest") << LOWEST << Changes();
    }
    void bitsOutsideAByteAreaAreNotWritten()
    {
        QFETCH(int, start);
        QFETCH(Changes, changed);
        QByteArray in = bytes("01 01 01 01");
        ByteArea area = byteArea();
        SetBitToUC(start, area.data(), &in, 4);
        QCOMPARE(changes(area), changed);
    }

    void bitsOutsideAWordAreaAreNotWritten_data()
    {
        addWriteColumns();
        QTest::newRow("last") << AREA_BITS - 1 << changesAt({{AREA_WORDS - 1, 0x8000}});
        QTest::newRow("past the end") << AREA_BITS << Changes();
        QTest::newRow("highest") << HIGHEST << Changes();
        QTest::newRow("-1") << -1 << changesAt({{0, 0x07}});
        QTest::newRow("-4") << -4 << Changes();
        QTest::newRow("-16, no remainder") << -16 << Changes();
        QTest::newRow("lowest") << LOWEST << Changes();
    }
    void bitsOutsideAWordAreaAreNotWritten()
    {
        QFETCH(int, start);
        QFETCH(Changes, changed);
        QByteArray in = bytes("01 01 01 01");
        WordArea area = wordArea();
        SetBitToUS(start, area.data(), &in, 4);
        QCOMPARE(changes(area), changed);
    }

    void clearingANegativeBitChangesNothing()
    {
        QByteArray in = bytes("00 00 00");
        ByteArea byteBits = byteArea(0xFF);
        SetBitToUC(-3, byteBits.data(), &in, 3);
        QCOMPARE(changes(byteBits, 0xFF), Changes());
        WordArea words = wordArea(0xFFFF);
        SetBitToUS(-3, words.data(), &in, 3);
        QCOMPARE(changes(words, 0xFFFF), Changes());
    }

    void wordsOutsideTheAreaAreNotWritten_data()
    {
        addWriteColumns();
        QTest::newRow("last") << AREA_WORDS - 1 << changesAt({{AREA_WORDS - 1, 0x1234}});
        QTest::newRow("past the end") << AREA_WORDS << Changes();
        QTest::newRow("highest") << HIGHEST << Changes();
        QTest::newRow("-1") << -1 << changesAt({{0, 0x5678}});
        QTest::newRow("-2") << -2 << Changes();
        QTest::newRow("lowest") << LOWEST << Changes();
    }
    void wordsOutsideTheAreaAreNotWritten()
    {
        QFETCH(int, start);
        QFETCH(Changes, changed);
        QByteArray in = bytes("34 12 78 56");
        WordArea area = wordArea();
        SetWordToUS(start, area.data(), &in, 2);
        QCOMPARE(changes(area), changed);
    }

    void doubleWordsOutsideTheAreaAreNotWritten_data()
    {
        addWriteColumns();
        QTest::newRow("last") << AREA_WORDS - 2
                              << changesAt({{AREA_WORDS - 2, 0x1234}, {AREA_WORDS - 1, 0x5678}});
        QTest::newRow("past the end") << AREA_WORDS << Changes();
        QTest::newRow("highest") << HIGHEST << Changes();
        QTest::newRow("-2") << -2 << changesAt({{0, 0x9ABC}, {1, 0xDEF0}});
        QTest::newRow("-4") << -4 << Changes();
        QTest::newRow("lowest") << LOWEST << Changes();
        QTest::newRow("astride the end") << AREA_WORDS - 1 << changesAt({{AREA_WORDS - 1, 0x1234}});
        QTest::newRow("astride the front")
            << -1 << changesAt({{0, 0x5678}, {1, 0x9ABC}, {2, 0xDEF0}});
    }
    void doubleWordsOutsideTheAreaAreNotWritten()
    {
        QFETCH(int, start);
        QFETCH(Changes, changed);
        QByteArray in = bytes("78 56 34 12 F0 DE BC 9A");
        WordArea area = wordArea();
        SetWordToUI(start, area.data(), &in, 4);
        QCOMPARE(changes(area), changed);
    }

    void anAbsurdCountWritesWhatTheBufferHolds()
    {
        QByteArray in = bytes("01 01 01 01 01 01");
        ByteArea bits = byteArea();
        SetBitToUC(0, bits.data(), &in, HIGHEST);
        QCOMPARE(changes(bits), changesAt({{0, 0x3F}}));
        WordArea words = wordArea();
        SetBitToUS(0, words.data(), &in, HIGHEST);
        QCOMPARE(changes(words), changesAt({{0, 0x3F}}));
        words = wordArea();
        SetWordToUS(0, words.data(), &in, HIGHEST);
        QCOMPARE(changes(words), changesAt({{0, 0x0101}, {1, 0x0101}, {2, 0x0101}}));
        words = wordArea();
        SetWordToUI(0, words.data(), &in, HIGHEST);
        QCOMPARE(changes(words), changesAt({{0, 0x0101}, {1, 0x0101}}));
    }

    void aBufferLongerThanTheAreaFillsTheArea()
    {
        QByteArray in(IMAGE_AREA_BYTES + 8, '\1');
        WordArea words = wordArea();
        SetWordToUS(0, words.data(), &in, HIGHEST);
        QVERIFY(words == wordArea(0x0101));
        words = wordArea();
        SetWordToUI(0, words.data(), &in, HIGHEST);
        QVERIFY(words == wordArea(0x0101));
        in = QByteArray(AREA_BITS + 8, '\1');
        ByteArea bits = byteArea();
        SetBitToUC(0, bits.data(), &in, HIGHEST);
        QVERIFY(bits == byteArea(0xFF));
        words = wordArea();
        SetBitToUS(0, words.data(), &in, HIGHEST);
        QVERIFY(words == wordArea(0xFFFF));
    }
};

QTEST_APPLESS_MAIN(tst_image_bounds)
#include "tst_image_bounds.moc"
