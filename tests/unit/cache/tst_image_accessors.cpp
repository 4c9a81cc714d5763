// Bits and words inside an area; what lies outside is in tst_image_bounds.cpp.
#include "cache/image_accessors.h"

#include "tests/support/driver_test.h"
#include "tests/support/image_areas.h"
#include "tests/support/output_capture.h"
#include "tests/support/row_names.h"

#include <QtTest>

class TestImageAccessors : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void bitsOfAByteAreaAreReadFromTheLeastSignificantOn_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("read");
        // Bytes 0, 1, 2 are 0x81, 0xA0, 0x01.
        QTest::newRow("0 1") << 0 << 1 << bytes("01");
        QTest::newRow("0 8") << 0 << 8 << bytes("01 00 00 00 00 00 00 01");
        QTest::newRow("7 2") << 7 << 2 << bytes("01 00");
        QTest::newRow("13 3") << 13 << 3 << bytes("01 00 01");
        QTest::newRow("15 3") << 15 << 3 << bytes("01 01 00");
        QTest::newRow("16 1") << 16 << 1 << bytes("01");
        QTest::newRow("0 0") << 0 << 0 << bytes("");
        QTest::newRow("0 -1") << 0 << -1 << bytes("");
    }
    void bitsOfAByteAreaAreReadFromTheLeastSignificantOn()
    {
        QFETCH(int, start);
        QFETCH(int, count);
        QFETCH(QByteArray, read);
        ByteArea area = byteArea();
        area[0] = 0x81;
        area[1] = 0xA0;
        area[2] = 0x01;
        QByteArray out;
        GetBitFromUC(out, area.data(), start, count);
        QCOMPARE(out, read);
        QCOMPARE(changes(area), changesAt({{0, 0x81}, {1, 0xA0}, {2, 0x01}}));
    }

    void bitsOfAWordAreaAreReadSixteenToAWord_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("read");
        // Words 0 and 1 are 0x8101 and 0x0003.
        QTest::newRow("0 9") << 0 << 9 << bytes("01 00 00 00 00 00 00 00 01");
        QTest::newRow("13 3") << 13 << 3 << bytes("00 00 01");
        QTest::newRow("15 4") << 15 << 4 << bytes("01 01 01 00");
        QTest::newRow("16 2") << 16 << 2 << bytes("01 01");
        QTest::newRow("31 2") << 31 << 2 << bytes("00 00");
        QTest::newRow("0 0") << 0 << 0 << bytes("");
        QTest::newRow("0 -5") << 0 << -5 << bytes("");
    }
    void bitsOfAWordAreaAreReadSixteenToAWord()
    {
        QFETCH(int, start);
        QFETCH(int, count);
        QFETCH(QByteArray, read);
        WordArea area = wordArea();
        area[0] = 0x8101;
        area[1] = 0x0003;
        QByteArray out;
        GetBitFromUS(out, area.data(), start, count);
        QCOMPARE(out, read);
        QCOMPARE(changes(area), changesAt({{0, 0x8101}, {1, 0x0003}}));
    }

    void wordsAreReadLowByteFirst_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("read");
        // Words 10 to 13 are 0x1234, 0x5678, 0x9ABC and 0xDEF0.
        QTest::newRow("10 1") << 10 << 1 << bytes("34 12");
        QTest::newRow("10 4") << 10 << 4 << bytes("34 12 78 56 BC 9A F0 DE");
        QTest::newRow("9 2") << 9 << 2 << bytes("00 00 34 12");
        QTest::newRow("10 0") << 10 << 0 << bytes("");
        QTest::newRow("10 -1") << 10 << -1 << bytes("");
    }
    void wordsAreReadLowByteFirst()
    {
        QFETCH(int, start);
        QFETCH(int, count);
        QFETCH(QByteArray, read);
        WordArea area = fourWords();
        QByteArray out;
        GetWordFromUS(out, area.data(), start, count);
        QCOMPARE(out, read);
        QVERIFY(area == fourWords());
    }

    void doubleWordsAreReadFromTheHighHalfOn_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("read");
        // Words 10 to 13 are 0x1234, 0x5678, 0x9ABC and 0xDEF0.
        QTest::newRow("10 1: low half alone") << 10 << 1 << bytes("78 56");
        QTest::newRow("10 2") << 10 << 2 << bytes("78 56 34 12");
        QTest::newRow("10 3: odd word left") << 10 << 3 << bytes("78 56 34 12");
        QTest::newRow("10 4") << 10 << 4 << bytes("78 56 34 12 F0 DE BC 9A");
        QTest::newRow("11 2") << 11 << 2 << bytes("BC 9A 78 56");
        QTest::newRow("10 0") << 10 << 0 << bytes("");
        QTest::newRow("10 -1") << 10 << -1 << bytes("");
        QTest::newRow("10 -2") << 10 << -2 << bytes("");
    }
    void doubleWordsAreReadFromTheHighHalfOn()
    {
        QFETCH(int, start);
        QFETCH(int, count);
        QFETCH(QByteArray, read);
        WordArea area = fourWords();
        QByteArray out;
        GetWordFromUI(out, area.data(), start, count);
        QCOMPARE(out, read);
        QVERIFY(area == fourWords());
    }

    void readingKeepsWhatLiesBeyond()
    {
        const QByteArray ten = bytes("EE EE EE EE EE EE EE EE EE EE");
        ByteArea byteBits = byteArea(0x01);
        WordArea words = wordArea(0x0201);
        QByteArray out = ten;
        GetBitFromUC(out, byteBits.data(), 0, 2);
        QCOMPARE(out, bytes("01 00 EE EE EE EE EE EE EE EE"));
        out = ten;
        GetBitFromUS(out, words.data(), 0, 2);
        QCOMPARE(out, bytes("01 00 EE EE EE EE EE EE EE EE"));
        out = ten;
        GetWordFromUS(out, words.data(), 0, 2);
        QCOMPARE(out, bytes("01 02 01 02 EE EE EE EE EE EE"));
        out = ten;
        GetWordFromUI(out, words.data(), 0, 2);
        QCOMPARE(out, bytes("01 02 01 02 EE EE EE EE EE EE"));
        out = ten;
        GetWordFromUI(out, words.data(), 0, 1);
        QCOMPARE(out, bytes("01 02 EE EE EE EE EE EE EE EE"));
        QCOMPARE(ten, bytes("EE EE EE EE EE EE EE EE EE EE"));
    }

    void readingGrowsAShorterBuffer()
    {
        WordArea words = wordArea(0x0201);
        QByteArray out = bytes("EE");
        GetWordFromUS(out, words.data(), 0, 1);
        QCOMPARE(out, bytes("01 02"));
        out = bytes("EE EE EE");
        GetWordFromUI(out, words.data(), 0, 2);
        QCOMPARE(out, bytes("01 02 01 02"));
        out = bytes("EE");
        GetBitFromUS(out, words.data(), 0, 3);
        QCOMPARE(out, bytes("01 00 00"));
        ByteArea bits = byteArea(0x05);
        out = bytes("EE");
        GetBitFromUC(out, bits.data(), 0, 3);
        QCOMPARE(out, bytes("01 00 01"));
    }

    void growingABufferPrintsNothing()
    {
        WordArea words = wordArea(0x0201);
        ByteArea bits = byteArea(0x05);
        OutputCapture printed;
        QByteArray all[4];
        GetBitFromUC(all[0], bits.data(), 0, 3);
        GetBitFromUS(all[1], words.data(), 0, 3);
        GetWordFromUS(all[2], words.data(), 0, 3);
        GetWordFromUI(all[3], words.data(), 0, 4);
        QCOMPARE(printed.stop(), QByteArray());
        QCOMPARE(all[3], bytes("01 02 01 02 01 02 01 02"));
    }

    void readingNothingKeepsTheBuffer()
    {
        ByteArea bits = byteArea(0xFF);
        WordArea words = wordArea(0xFFFF);
        for (const int count : {0, -1, -2147483647 - 1}) {
            QByteArray out = bytes("EE EE");
            GetBitFromUC(out, bits.data(), 0, count);
            GetBitFromUS(out, words.data(), 0, count);
            GetWordFromUS(out, words.data(), 0, count);
            GetWordFromUI(out, words.data(), 0, count);
            QCOMPARE(out, bytes("EE EE"));
        }
    }

    void onlyTheValueOneSetsABitOfAByteArea()
    {
        ByteArea area = byteArea(0xFF);
        QByteArray in = bytes("00 01 02 81 FF 01");
        SetBitToUC(5, area.data(), &in, 6);
        // Bits 5, 7, 8 and 9 are cleared, 6 and 10 stay set.
        QCOMPARE(changes(area, 0xFF), changesAt({{0, 0x5F}, {1, 0xFC}}));

        ByteArea clear = byteArea();
        SetBitToUC(5, clear.data(), &in, 6);
        QCOMPARE(changes(clear), changesAt({{0, 0x40}, {1, 0x04}}));
        QCOMPARE(in, bytes("00 01 02 81 FF 01"));
    }

    void onlyTheValueOneSetsABitOfAWordArea()
    {
        WordArea area = wordArea(0xFFFF);
        QByteArray in = bytes("00 01 02 81 FF 01");
        SetBitToUS(13, area.data(), &in, 6);
        // Bits 13, 15, 16 and 17 are cleared, 14 and 18 stay set.
        QCOMPARE(changes(area, 0xFFFF), changesAt({{0, 0x5FFF}, {1, 0xFFFC}}));

        WordArea clear = wordArea();
        SetBitToUS(13, clear.data(), &in, 6);
        QCOMPARE(changes(clear), changesAt({{0, 0x4000}, {1, 0x0004}}));
    }

    void bitsThatTheBufferLacksKeepTheirValue()
    {
        QByteArray in = bytes("01 01");
        ByteArea bits = byteArea();
        SetBitToUC(0, bits.data(), &in, 8);
        QCOMPARE(changes(bits), changesAt({{0, 0x03}}));
        WordArea words = wordArea(0xFFFF);
        in = bytes("00 00");
        SetBitToUS(0, words.data(), &in, 16);
        QCOMPARE(changes(words, 0xFFFF), changesAt({{0, 0xFFFC}}));
    }

    void noMoreThanCountIsWritten()
    {
        QByteArray in = bytes("01 01 01 01 01 01 01 01");
        ByteArea bits = byteArea();
        SetBitToUC(0, bits.data(), &in, 3);
        QCOMPARE(changes(bits), changesAt({{0, 0x07}}));
        WordArea words = wordArea();
        SetBitToUS(0, words.data(), &in, 3);
        QCOMPARE(changes(words), changesAt({{0, 0x0007}}));
        SetWordToUS(1, words.data(), &in, 1);
        QCOMPARE(changes(words), changesAt({{0, 0x0007}, {1, 0x0101}}));
        SetWordToUI(4, words.data(), &in, 2);
        QCOMPARE(changes(words), changesAt({{0, 0x0007}, {1, 0x0101}, {4, 0x0101}, {5, 0x0101}}));
    }

    void wordsAreWrittenLowByteFirst()
    {
        WordArea area = wordArea(0xEEEE);
        QByteArray in = bytes("34 12 78 56 FF 80");
        SetWordToUS(10, area.data(), &in, 3);
        QCOMPARE(changes(area, 0xEEEE), changesAt({{10, 0x1234}, {11, 0x5678}, {12, 0x80FF}}));
    }

    void aWordThatTheBufferHoldsHalfOfKeepsItsValue()
    {
        WordArea area = wordArea(0xEEEE);
        QByteArray in = bytes("34 12 78 56 BC");
        SetWordToUS(10, area.data(), &in, 3);
        QCOMPARE(changes(area, 0xEEEE), changesAt({{10, 0x1234}, {11, 0x5678}}));
    }

    void doubleWordsAreWrittenHighHalfFirst()
    {
        WordArea area = wordArea(0xEEEE);
        QByteArray in = bytes("78 56 34 12 F0 DE BC 9A");
        SetWordToUI(10, area.data(), &in, 4);
        QCOMPARE(changes(area, 0xEEEE),
                 changesAt({{10, 0x1234}, {11, 0x5678}, {12, 0x9ABC}, {13, 0xDEF0}}));
    }

    void aDoubleWordThatTheBufferHoldsPartOfKeepsItsValue_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("written");
        for (int size = 0; size <= 8; ++size)
            formattedRow("%d bytes", size) << size << size / 4 * 2;
    }
    void aDoubleWordThatTheBufferHoldsPartOfKeepsItsValue()
    {
        QFETCH(int, size);
        QFETCH(int, written);
        WordArea area = wordArea(0xEEEE);
        QByteArray in = bytes("78 56 34 12 F0 DE BC 9A").left(size);
        SetWordToUI(10, area.data(), &in, 4);
        QCOMPARE(changes(area, 0xEEEE).size(), written);
    }

    void anOddLastWordIsNotWritten()
    {
        WordArea area = wordArea();
        QByteArray in = bytes("78 56 34 12 F0 DE BC 9A");
        SetWordToUI(10, area.data(), &in, 1);
        QCOMPARE(changes(area), Changes());
        SetWordToUI(10, area.data(), &in, 3);
        QCOMPARE(changes(area), changesAt({{10, 0x1234}, {11, 0x5678}}));
    }

    void writingNothingChangesNothing()
    {
        QByteArray in = bytes("01 01 01 01 01 01 01 01");
        QByteArray empty;
        ByteArea bits = byteArea();
        WordArea words = wordArea();
        for (const int count : {0, -1, -2, -2147483647 - 1}) {
            SetBitToUC(0, bits.data(), &in, count);
            SetBitToUS(0, words.data(), &in, count);
            SetWordToUS(0, words.data(), &in, count);
            SetWordToUI(0, words.data(), &in, count);
        }
        SetBitToUC(0, bits.data(), &empty, 9);
        SetBitToUS(0, words.data(), &empty, 9);
        SetWordToUS(0, words.data(), &empty, 9);
        SetWordToUI(0, words.data(), &empty, 9);
        QCOMPARE(changes(bits), Changes());
        QCOMPARE(changes(words), Changes());
    }

    void theAccessorsTakeNoLock()
    {
        ByteArea bits = byteArea();
        WordArea words = wordArea();
        QByteArray buffer = bytes("01 01 01 01");
        const AllLocksHeld held;
        SetBitToUC(0, bits.data(), &buffer, 1);
        SetBitToUS(0, words.data(), &buffer, 1);
        SetWordToUS(2, words.data(), &buffer, 1);
        SetWordToUI(4, words.data(), &buffer, 2);
        GetBitFromUC(buffer, bits.data(), 0, 1);
        GetBitFromUS(buffer, words.data(), 0, 1);
        GetWordFromUS(buffer, words.data(), 0, 1);
        GetWordFromUI(buffer, words.data(), 0, 1);
        QCOMPARE(changes(words), changesAt({{0, 1}, {2, 0x0101}, {4, 0x0101}, {5, 0x0101}}));
    }

private:
    static WordArea fourWords()
    {
        WordArea area = wordArea();
        area[10] = 0x1234;
        area[11] = 0x5678;
        area[12] = 0x9ABC;
        area[13] = 0xDEF0;
        return area;
    }
};

QTEST_APPLESS_MAIN(TestImageAccessors)
#include "tst_image_accessors.moc"
