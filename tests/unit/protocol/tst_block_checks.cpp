// The four block checks. Buffers are exactly as long as they say, so that a sanitizer sees any
// byte read beyond the end.
#include "protocol/block_checks.h"

#include "tests/support/driver_fixture.h"
#include "tests/support/frame_requests.h"

#include <QtTest>

#include <vector>

Q_DECLARE_METATYPE(std::vector<quint8>)

namespace
{

using Buffer = std::vector<quint8>;

quint16 lengthOf(const Buffer &buffer)
{
    return static_cast<quint16>(buffer.size());
}

void addBuffer(const char *name, const Buffer &buffer, int expected)
{
    QTest::newRow(name) << buffer << static_cast<quint16>(expected);
}

void addBufferColumns()
{
    QTest::addColumn<std::vector<quint8>>("buffer");
    QTest::addColumn<quint16>("expected");
}

} // namespace

class TestBlockChecks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sumKeepsTheLowSixteenBits_data()
    {
        addBufferColumns();
        addBuffer("00", {0x00}, 0);
        addBuffer("01", {0x01}, 1);
        addBuffer("FF is unsigned", {0xFF}, 0x00FF);
        addBuffer("80 80 is unsigned", {0x80, 0x80}, 0x0100);
        addBuffer("01 02 03 04", {0x01, 0x02, 0x03, 0x04}, 10);
        addBuffer("300 bytes FF", Buffer(300, 0xFF), 0x2AD4);
        addBuffer("257 bytes FF are the highest sum", Buffer(257, 0xFF), 0xFFFF);
        addBuffer("258 bytes FF wrap", Buffer(258, 0xFF), 0x00FE);
        addBuffer("65535 bytes FF", Buffer(65535, 0xFF), 0xFF01);
    }

    void sumKeepsTheLowSixteenBits()
    {
        QFETCH(std::vector<quint8>, buffer);
        QFETCH(quint16, expected);
        QCOMPARE(CalSUM(buffer.data(), lengthOf(buffer)), expected);
    }

    void crcIsThatOfModbusSerialLines_data()
    {
        addBufferColumns();
        addBuffer("123456789", {0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39}, 0x4B37);
        addBuffer("00", {0x00}, 0x40BF);
        addBuffer("FF", {0xFF}, 0x00FF);
        addBuffer("02 07", {0x02, 0x07}, 0x1241);
        addBuffer("01 03 00 00 00 0A", {0x01, 0x03, 0x00, 0x00, 0x00, 0x0A}, 0xCDC5);
        addBuffer("11 03 00 6B 00 03", {0x11, 0x03, 0x00, 0x6B, 0x00, 0x03}, 0x8776);
    }

    void crcIsThatOfModbusSerialLines()
    {
        QFETCH(std::vector<quint8>, buffer);
        QFETCH(quint16, expected);
        QCOMPARE(CalCRC(buffer.data(), lengthOf(buffer)), expected);
    }

    void crcOverABufferAndItsOwnCrcIsZero()
    {
        Buffer buffer(65533);
        unsigned seed = 1;
        for (quint8 &byte : buffer) {
            seed = seed * 1103515245U + 12345U;
            byte = static_cast<quint8>(seed >> 16);
        }
        const quint16 crc = CalCRC(buffer.data(), lengthOf(buffer));
        QVERIFY(crc != 0);
        buffer.push_back(static_cast<quint8>(crc & 0xFF));
        buffer.push_back(static_cast<quint8>(crc >> 8));
        QCOMPARE(lengthOf(buffer), static_cast<quint16>(65535));
        QCOMPARE(CalCRC(buffer.data(), lengthOf(buffer)), static_cast<quint16>(0));
    }

    void lrcAddsOneAfterTheMask_data()
    {
        addBufferColumns();
        addBuffer("01 FF sums to 0 modulo 256", {0x01, 0xFF}, 0x100);
        addBuffer("00", {0x00}, 0x100);
        addBuffer("01", {0x01}, 0xFF);
        addBuffer("02 07", {0x02, 0x07}, 0xF7);
        addBuffer("FF", {0xFF}, 0x01);
        addBuffer("80 80 sums to 0 modulo 256", {0x80, 0x80}, 0x100);
        addBuffer("256 bytes FF sum to 0 modulo 256", Buffer(256, 0xFF), 0x100);
        addBuffer("65535 bytes FF", Buffer(65535, 0xFF), 0xFF);
    }

    void lrcAddsOneAfterTheMask()
    {
        QFETCH(std::vector<quint8>, buffer);
        QFETCH(quint16, expected);
        QCOMPARE(CalLRC(buffer.data(), lengthOf(buffer)), expected);
    }

    void lrcOfASingleByteComplementsIt()
    {
        for (int value = 0; value <= 0xFF; ++value) {
            const Buffer buffer{static_cast<quint8>(value)};
            QCOMPARE(CalLRC(buffer.data(), 1), static_cast<quint16>(256 - value));
        }
    }

    void xorCombinesAllBytes_data()
    {
        addBufferColumns();
        addBuffer("12", {0x12}, 0x12);
        addBuffer("12 34", {0x12, 0x34}, 0x26);
        addBuffer("12 34 26 cancels", {0x12, 0x34, 0x26}, 0x00);
        addBuffer("FF is unsigned", {0xFF}, 0x00FF);
        addBuffer("FF 0F", {0xFF, 0x0F}, 0x00F0);
        addBuffer("65535 bytes FF", Buffer(65535, 0xFF), 0xFF);
    }

    void xorCombinesAllBytes()
    {
        QFETCH(std::vector<quint8>, buffer);
        QFETCH(quint16, expected);
        QCOMPARE(CalXOR(buffer.data(), lengthOf(buffer)), expected);
    }

    void lengthZeroNeedsNoBufferExceptForXor()
    {
        const Buffer buffer{0x12, 0x34};
        QCOMPARE(CalSUM(buffer.data(), 0), static_cast<quint16>(0));
        QCOMPARE(CalCRC(buffer.data(), 0), static_cast<quint16>(0xFFFF));
        QCOMPARE(CalLRC(buffer.data(), 0), static_cast<quint16>(0x100));
        QCOMPARE(CalSUM(nullptr, 0), static_cast<quint16>(0));
        QCOMPARE(CalCRC(nullptr, 0), static_cast<quint16>(0xFFFF));
        QCOMPARE(CalLRC(nullptr, 0), static_cast<quint16>(0x100));
    }

    void xorOfLengthZeroIsTheFirstByte()
    {
        const Buffer one{0x9A};
        QCOMPARE(CalXOR(one.data(), 0), static_cast<quint16>(0x9A));
        const Buffer two{0x12, 0x34};
        QCOMPARE(CalXOR(two.data(), 0), static_cast<quint16>(0x12));
    }

    void onlyTheGivenLengthCounts()
    {
        const Buffer buffer{0x02, 0x07, 0x55};
        QCOMPARE(CalSUM(buffer.data(), 2), static_cast<quint16>(0x0009));
        QCOMPARE(CalCRC(buffer.data(), 2), static_cast<quint16>(0x1241));
        QCOMPARE(CalLRC(buffer.data(), 2), static_cast<quint16>(0x00F7));
        QCOMPARE(CalXOR(buffer.data(), 2), static_cast<quint16>(0x0005));
        QCOMPARE(CalXOR(buffer.data(), 1), static_cast<quint16>(0x0002));
    }

    void noLockIsTaken()
    {
        const AllLocksHeld held;
        const Buffer buffer{0x12, 0x34};
        QCOMPARE(CalSUM(buffer.data(), 2), static_cast<quint16>(0x46));
        QCOMPARE(CalLRC(buffer.data(), 2), static_cast<quint16>(0xBA));
        QCOMPARE(CalXOR(buffer.data(), 2), static_cast<quint16>(0x26));
    }
};

QTEST_APPLESS_MAIN(TestBlockChecks)
#include "tst_block_checks.moc"
