// Replies copied into an image area by the frame that they answer.
#include "cache/image_accessors.h"

#include "tests/support/driver_test.h"
#include "tests/support/image_areas.h"

#include <QtTest>

#include <limits>

namespace
{

constexpr int LOWEST = std::numeric_limits<int>::min();
constexpr int HIGHEST = std::numeric_limits<int>::max();

/// Puts a frame on the line whose reply has `count` data bytes from `first` on.
void pending(int first, int count, int address)
{
    Protocol frame;
    frame.builderParam1 = first;
    frame.builderParam2 = count;
    frame.var.address = address;
    PLC_driver.pendingFrames.append(frame);
}

void addColumns()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("address");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<Changes>("changed");
}

/// Has `save` copy the reply of a row of these columns.
template <typename Unit>
void copyRow(void (*save)(QByteArray *, Unit *))
{
    QFETCH(int, first);
    QFETCH(int, count);
    QFETCH(int, address);
    QFETCH(QByteArray, reply);
    QFETCH(Changes, changed);
    pending(first, count, address);
    const QByteArray before(reply.constData(), reply.size());
    WideArea<Unit> area;
    save(&reply, area.data());
    QCOMPARE(area.changed(), changed);
    QCOMPARE(reply, before);
    QCOMPARE(PLC_driver.pendingFrames.size(), 1);
}

} // namespace

class TestImageReplies : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void bytesAreCopiedWhole_data()
    {
        addColumns();
        const QByteArray reply = bytes("06 30 31 A5 00 FF 0D");
        QTest::newRow("from bit 0") << 3 << 3 << 0 << reply << changesAt({{0, 0xA5}, {2, 0xFF}});
        QTest::newRow("from bit 16") << 3 << 1 << 16 << reply << changesAt({{2, 0xA5}});
        QTest::newRow("remainder ignored") << 3 << 1 << 23 << reply << changesAt({{2, 0xA5}});
        QTest::newRow("from the front")
            << 0 << 2 << 0 << reply << changesAt({{0, 0x06}, {1, 0x30}});
        QTest::newRow("no data") << 3 << 0 << 0 << reply << Changes();
        QTest::newRow("negative count") << 3 << -1 << 0 << reply << Changes();
        QTest::newRow("reply one byte short")
            << 3 << 3 << 0 << reply.left(5) << changesAt({{0, 0xA5}});
        QTest::newRow("reply ends before the data") << 3 << 3 << 0 << reply.left(3) << Changes();
        QTest::newRow("empty reply") << 3 << 3 << 0 << QByteArray() << Changes();
        QTest::newRow("over the driver's length")
            << 3 << 3 << AREA_BITS - 8 << reply
            << changesAt({{IMAGE_AREA_BYTES - 1, 0xA5}, {IMAGE_AREA_BYTES + 1, 0xFF}});
        QTest::newRow("behind the driver's length")
            << 3 << 1 << AREA_BITS << reply << changesAt({{IMAGE_AREA_BYTES, 0xA5}});
        QTest::newRow("below zero, remainder ignored")
            << 3 << 1 << -7 << reply << changesAt({{0, 0xA5}});
        QTest::newRow("first two bytes below")
            << 3 << 3 << -16 << reply << changesAt({{-2, 0xA5}, {0, 0xFF}});
        QTest::newRow("first two data before the front")
            << -2 << 4 << 0 << reply << changesAt({{2, 0x06}, {3, 0x30}});
        QTest::newRow("all below") << 3 << 3 << -24 << reply << changesAt({{-3, 0xA5}, {-1, 0xFF}});
        QTest::newRow("data after the end") << HIGHEST << 3 << 0 << reply << Changes();
        QTest::newRow("data at the last byte") << 6 << 2 << 0 << reply << changesAt({{0, 0x0D}});
        QTest::newRow("data before the front") << LOWEST << 3 << 0 << reply << Changes();
        QTest::newRow("absurd count")
            << 5 << HIGHEST << 0 << reply << changesAt({{0, 0xFF}, {1, 0x0D}});
    }
    void bytesAreCopiedWhole() { copyRow(&SaveBitToUC); }

    void wordsAreCopiedHighByteFirst_data()
    {
        addColumns();
        const QByteArray reply = bytes("00 00 00 12 34 56 78");
        const Changes both = changesAt({{40, 0x1234}, {41, 0x5678}});
        const Changes one = changesAt({{40, 0x1234}});
        QTest::newRow("two words") << 3 << 4 << 40 << reply << both;
        QTest::newRow("one byte short") << 3 << 4 << 40 << reply.left(6) << one;
        QTest::newRow("two bytes short") << 3 << 4 << 40 << reply.left(5) << one;
        QTest::newRow("three bytes short") << 3 << 4 << 40 << reply.left(4) << Changes();
        QTest::newRow("empty reply") << 3 << 4 << 40 << QByteArray() << Changes();
        QTest::newRow("odd count") << 3 << 3 << 40 << reply << one;
        QTest::newRow("count 2") << 3 << 2 << 40 << reply << one;
        QTest::newRow("count 1") << 3 << 1 << 40 << reply << Changes();
        QTest::newRow("count 0") << 3 << 0 << 40 << reply << Changes();
        QTest::newRow("count -4") << 3 << -4 << 40 << reply << Changes();
        QTest::newRow("high bytes") << 0 << 2 << 40 << bytes("FF 80") << changesAt({{40, 0xFF80}});
        QTest::newRow("from the front") << 2 << 2 << 40 << reply << changesAt({{40, 0x0012}});
        QTest::newRow("over the driver's length")
            << 3 << 4 << AREA_WORDS - 1 << reply
            << changesAt({{AREA_WORDS - 1, 0x1234}, {AREA_WORDS, 0x5678}});
        QTest::newRow("address -1")
            << 3 << 4 << -1 << reply << changesAt({{-1, 0x1234}, {0, 0x5678}});
        QTest::newRow("first word before the front")
            << -2 << 6 << 40 << reply << changesAt({{42, 0x0012}});
        QTest::newRow("first word astride the front")
            << -1 << 6 << 40 << bytes("11 22 33 44") << changesAt({{41, 0x2233}});
        QTest::newRow("data after the end") << HIGHEST << 4 << 0 << reply << Changes();
        QTest::newRow("data before the front") << LOWEST << 4 << 0 << reply << Changes();
        QTest::newRow("absurd count") << 3 << HIGHEST << 40 << reply << both;
    }
    void wordsAreCopiedHighByteFirst() { copyRow(&SaveWordToUS); }

    void theFrameOnTheLineDecides()
    {
        pending(1, 2, 8);
        pending(0, 4, 0);
        QByteArray reply = bytes("11 22 33 44");
        ByteArea bits = byteArea();
        SaveBitToUC(&reply, bits.data());
        QCOMPARE(changes(bits), changesAt({{1, 0x22}, {2, 0x33}}));
        WordArea words = wordArea();
        SaveWordToUS(&reply, words.data());
        QCOMPARE(changes(words), changesAt({{8, 0x2233}}));
    }

    void withoutAFrameNothingHappens()
    {
        QByteArray reply = bytes("11 22 33 44");
        ByteArea bits = byteArea();
        SaveBitToUC(&reply, bits.data());
        QCOMPARE(changes(bits), Changes());
        WordArea words = wordArea();
        SaveWordToUS(&reply, words.data());
        QCOMPARE(changes(words), Changes());
    }

    void copyingTakesNoLock()
    {
        pending(0, 2, 0);
        QByteArray reply = bytes("11 22");
        ByteArea bits = byteArea();
        WordArea words = wordArea();
        const AllLocksHeld held;
        SaveBitToUC(&reply, bits.data());
        SaveWordToUS(&reply, words.data());
        QCOMPARE(changes(bits), changesAt({{0, 0x11}, {1, 0x22}}));
        QCOMPARE(changes(words), changesAt({{0, 0x1122}}));
    }
};

QTEST_APPLESS_MAIN(TestImageReplies)
#include "tst_image_replies.moc"
