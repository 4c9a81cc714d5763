// Hexadecimal digits, both ways.
#include "protocol/frame_codec.h"

#include "driver/records.h"
#include "tests/support/row_names.h"

#include <QtTest>

#include <limits>

class TestFrameCodec : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valueBecomesItsDigit_data()
    {
        QTest::addColumn<int>("value");
        QTest::addColumn<char>("digit");
        const char digits[] = "0123456789ABCDEF";
        for (int value = 0; value < 16; ++value)
            formattedRow("%d", value) << value << digits[value];
    }

    void valueBecomesItsDigit()
    {
        QFETCH(int, value);
        QFETCH(char, digit);
        QCOMPARE(DigitalToASCII(value), static_cast<int>(digit));
    }

    void valuesThatAreNoNibbleAreNotChecked_data()
    {
        QTest::addColumn<int>("value");
        QTest::addColumn<int>("code");
        QTest::newRow("16 gives G") << 16 << 0x47;
        QTest::newRow("-1 gives slash") << -1 << 0x2F;
        QTest::newRow("-48 gives the zero byte") << -48 << 0;
        QTest::newRow("-49 gives a negative code") << -49 << -1;
        QTest::newRow("255 is not masked") << 255 << 310;
        QTest::newRow("256 is not masked") << 256 << 311;
        QTest::newRow("lowest") << std::numeric_limits<int>::min() << -2147483600;
        QTest::newRow("highest wraps") << std::numeric_limits<int>::max() << -2147483594;
    }

    void valuesThatAreNoNibbleAreNotChecked()
    {
        QFETCH(int, value);
        QFETCH(int, code);
        QCOMPARE(DigitalToASCII(value), code);
    }

    void characterBecomesItsNibble_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("nibble");
        QTest::newRow("0") << 0x30 << 0;
        QTest::newRow("9") << 0x39 << 9;
        QTest::newRow("colon") << 0x3A << 10;
        QTest::newRow("semicolon") << 0x3B << 11;
        QTest::newRow("less than") << 0x3C << 12;
        QTest::newRow("equals") << 0x3D << 13;
        QTest::newRow("greater than") << 0x3E << 14;
        QTest::newRow("question mark") << 0x3F << 15;
        QTest::newRow("at sign") << 0x40 << 0;
        QTest::newRow("A") << 0x41 << 10;
        QTest::newRow("B") << 0x42 << 11;
        QTest::newRow("C") << 0x43 << 12;
        QTest::newRow("D") << 0x44 << 13;
        QTest::newRow("E") << 0x45 << 14;
        QTest::newRow("F") << 0x46 << 15;
        QTest::newRow("G") << 0x47 << 16;
        QTest::newRow("lower-case a is not folded") << 0x61 << 42;
        QTest::newRow("lower-case f is not folded") << 0x66 << 47;
        QTest::newRow("slash") << 0x2F << 0;
        QTest::newRow("blank") << 0x20 << 0;
        QTest::newRow("CR") << 0x0D << 0;
        QTest::newRow("zero byte") << 0 << 0;
        QTest::newRow("0x80") << 0x80 << 73;
        QTest::newRow("0xFF") << 0xFF << 200;
        QTest::newRow("negative code") << -1 << 0;
        QTest::newRow("lowest code") << std::numeric_limits<int>::min() << 0;
        QTest::newRow("code above a byte") << 0x100 << 201;
    }

    void characterBecomesItsNibble()
    {
        QFETCH(int, code);
        QFETCH(int, nibble);
        QCOMPARE(ASCIIToDigital(code), nibble);
    }

    void everyByteDecodesByItsRange()
    {
        for (int code = 0x00; code <= 0x2F; ++code)
            QCOMPARE(ASCIIToDigital(code), 0);
        for (int code = 0x30; code <= 0x3F; ++code)
            QCOMPARE(ASCIIToDigital(code), code - 0x30);
        for (int code = 0x41; code <= 0xFF; ++code)
            QCOMPARE(ASCIIToDigital(code), code - 0x37);
    }

    void everyNibbleSurvivesTheRoundTrip()
    {
        for (int nibble = 0; nibble < 16; ++nibble)
            QCOMPARE(ASCIIToDigital(DigitalToASCII(nibble)), nibble);
    }

    void controlCharactersAreThoseOfTheLine()
    {
        QCOMPARE(static_cast<int>(FRAME_ENQ), 0x05);
        QCOMPARE(static_cast<int>(FRAME_CR), 0x0D);
        QCOMPARE(static_cast<int>(FRAME_NAK), 0x15);
    }
};

QTEST_APPLESS_MAIN(TestFrameCodec)
#include "tst_frame_codec.moc"
