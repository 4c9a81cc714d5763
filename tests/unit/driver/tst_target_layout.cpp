// The records as rows of 32-bit slots, and what differs between processors: the sign of plain
// char, and the alignment of words. Runs everywhere; the slots are those of a 32-bit processor.
#include "driver/byte_access.h"
#include "driver/driver_object.h"
#include "driver/record_layout.h"

#include <QtTest>

#include <cstring>

namespace
{

/// Size of a slot that holds a string or a byte array.
constexpr int POINTER = int(sizeof(void *));

/// The 32-bit word at slot `slot` of a record whose slots are all 32 bits wide.
template <typename Record>
qint32 wordAt(const Record &record, int slot)
{
    qint32 word = 0;
    std::memcpy(&word, reinterpret_cast<const char *>(&record) + 4 * slot, sizeof word);
    return word;
}

bool isAligned(const void *address, quintptr bytes)
{
    return reinterpret_cast<quintptr>(address) % bytes == 0;
}

// The row of slots is that of a 32-bit processor.
constexpr bool HAS_SLOTS = sizeof(void *) == 4;

} // namespace

class TestTargetLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stringsAndBytesArePointers()
    {
        QCOMPARE(int(sizeof(QString)), POINTER);
        QCOMPARE(int(sizeof(QByteArray)), POINTER);
    }

    void hostBlockIsNineteenWords()
    {
        QCOMPARE(int(sizeof(ComInfo)), 76);
        ComInfo info = {};
        info.defaultStation = 6;
        info.retryLimit = 7;
        info.framesExpected = 11;
        info.remoteMode = 14;
        info.localPlcNo = 15;
        info.hostWriteMode = 16;
        info.portTag = 18;
        for (const int slot : {6, 7, 11, 14, 15, 16, 18})
            QCOMPARE(wordAt(info, slot), slot);
    }

    void variableIsFifteenSlots()
    {
        if (!HAS_SLOTS)
            QSKIP("the row of slots is that of a 32-bit processor", SkipSingle);
        QCOMPARE(int(sizeof(RW_VAR)), 60);
        RW_VAR var;
        qint32 *const words[] = {&var.ownerId, &var.ownerSubId, &var.rwKind,    &var.reserved3,
                                 &var.plcNo,   &var.result,     &var.areaType,  &var.address,
                                 &var.station, &var.count,      &var.remoteTag, &var.reserved13};
        const int slots[] = {0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13};
        for (int i = 0; i < 12; ++i)
            *words[i] = 100 + slots[i];
        for (const int slot : slots)
            QCOMPARE(wordAt(var, slot), 100 + slot);
        QCOMPARE(int(offsetof(RW_VAR, name)), 24);
        QCOMPARE(int(offsetof(RW_VAR, addressText)), 28);
        QCOMPARE(int(offsetof(RW_VAR, data)), 56);
    }

    void frameIsTwentyThreeSlots()
    {
        if (!HAS_SLOTS)
            QSKIP("the row of slots is that of a 32-bit processor", SkipSingle);
        QCOMPARE(int(sizeof(Protocol)), 92);
        Protocol frame;
        frame.frameLength = 101;
        frame.expectedReplyLength = 102;
        frame.builderParam1 = 103;
        frame.builderParam2 = 104;
        frame.var.ownerId = 105;
        frame.var.reserved13 = 118;
        frame.extra0 = 120;
        frame.extra1 = 121;
        frame.extra2 = 122;
        for (const int slot : {1, 2, 3, 4, 5, 18, 20, 21, 22})
            QCOMPARE(wordAt(frame, slot), 100 + slot);
        QCOMPARE(int(offsetof(Protocol, frame)), 0);
    }

    void cachedValueIsFourSlots()
    {
        if (!HAS_SLOTS)
            QSKIP("the row of slots is that of a 32-bit processor", SkipSingle);
        QCOMPARE(int(sizeof(EXTENDVAR)), 16);
        EXTENDVAR value = {100, 101, 102, QByteArray()};
        for (const int slot : {0, 1, 2})
            QCOMPARE(wordAt(value, slot), 100 + slot);
        QCOMPARE(int(offsetof(EXTENDVAR, data)), 12);
    }

    void bytesAreUnsigned()
    {
        const QByteArray high("\x7F\x80\xFF", 3);
        QCOMPARE(int(byteOrZero(high, 0)), 127);
        QCOMPARE(int(byteOrZero(high, 1)), 128);
        QCOMPARE(int(byteOrZero(high, 2)), 255);
    }

    void imageAreasAreAlignedForWords()
    {
        QVERIFY(isAligned(PLC_driver.imageArea1, 4));
        QVERIFY(isAligned(PLC_driver.imageArea2, 4));
        QVERIFY(isAligned(PLC_driver.imageArea3, 4));
    }
};

QTEST_APPLESS_MAIN(TestTargetLayout)
#include "tst_target_layout.moc"
