// The accessors before the pointer and behind the driver's own length, which are theirs to reach,
// and at the ends of the buffer, which are not.
#include "cache/image_accessors.h"

#include "tests/support/driver_fixture.h"
#include "tests/support/image_areas.h"

#include <QtTest>

#include <csignal>
#include <limits>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr int LOWEST = std::numeric_limits<int>::min();
constexpr int HIGHEST = std::numeric_limits<int>::max();

/// So many zero bytes that take no memory until they are written.
class MappedBytes
{
public:
    MappedBytes(size_t size, int protection)
        : size_(size),
          at_(::mmap(nullptr, size, protection, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))
    {
    }
    ~MappedBytes() { ::munmap(at_, size_); }
    Q_DISABLE_COPY(MappedBytes)
    bool isThere() const { return at_ != MAP_FAILED; }
    quint8 *data() const { return static_cast<quint8 *>(at_); }

private:
    size_t size_;
    void *at_;
};

void addReadColumns()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("read");
}

/// Has `get` read a row of these columns from words of 0x1234 with others next to the driver's
/// length.
void readWordsOfRow(void (*get)(QByteArray &, unsigned short *, int, int))
{
    QFETCH(int, start);
    QFETCH(int, count);
    QFETCH(QByteArray, read);
    WideWords area(0x1234);
    area.data()[-2] = 0xFE;
    area.data()[-1] = 0xFF;
    area.data()[AREA_WORDS] = 0x02;
    QByteArray out;
    get(out, area.data(), start, count);
    QCOMPARE(out, read);
}

void addWriteColumns()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<Changes>("changed");
}

} // namespace

class TestImageBounds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bitsOfAByteAreaLieOnBothSidesOfThePointer_data()
    {
        addReadColumns();
        QTest::newRow("over the driver's length") << AREA_BITS - 1 << 3 << bytes("01 01 01");
        QTest::newRow("-1, no bit") << -1 << 2 << bytes("00 01");
        QTest::newRow("-8, bit 0 of the byte before") << -8 << 9 << bytes("010000000000000001");
        QTest::newRow("-16, bit 0 of two bytes before") << -16 << 1 << bytes("01");
        QTest::newRow("-15, no bit") << -15 << 7 << QByteArray(7, '\0');
    }
    void bitsOfAByteAreaLieOnBothSidesOfThePointer()
    {
        QFETCH(int, start);
        QFETCH(int, count);
        QFETCH(QByteArray, read);
        WideBytes area(0xFF);
        QByteArray out;
        GetBitFromUC(out, area.data(), start, count);
        QCOMPARE(out, read);
    }

    void bitsOfAWordAreaLieOnBothSidesOfThePointer_data()
    {
        addReadColumns();
        QTest::newRow("over the driver's length") << AREA_BITS - 1 << 3 << bytes("01 01 01");
        QTest::newRow("-1, no bit") << -1 << 2 << bytes("00 01");
        QTest::newRow("-8, no bit") << -8 << 1 << bytes("00");
        QTest::newRow("-16, bit 0 of the word before")
            << -16 << 17 << bytes("01") + QByteArray(15, '\0') + bytes("01");
    }
    void bitsOfAWordAreaLieOnBothSidesOfThePointer()
    {
        QFETCH(int, start);
        QFETCH(int, count);
        QFETCH(QByteArray, read);
        WideWords area(0xFFFF);
        QByteArray out;
        GetBitFromUS(out, area.data(), start, count);
        QCOMPARE(out, read);
    }

    void wordsLieOnBothSidesOfThePointer_data()
    {
        addReadColumns();
        QTest::newRow("over the driver's length") << AREA_WORDS - 1 << 2 << bytes("34 12 02 00");
        QTest::newRow("the two before") << -2 << 2 << bytes("FE 00 FF 00");
        QTest::newRow("astride the pointer") << -1 << 2 << bytes("FF 00 34 12");
    }
    void wordsLieOnBothSidesOfThePointer() { readWordsOfRow(&GetWordFromUS); }

    void doubleWordsLieOnBothSidesOfThePointer_data()
    {
        addReadColumns();
        QTest::newRow("over the driver's length") << AREA_WORDS - 1 << 2 << bytes("02 00 34 12");
        QTest::newRow("low half behind") << AREA_WORDS - 1 << 1 << bytes("02 00");
        QTest::newRow("the one before") << -2 << 2 << bytes("FF 00 FE 00");
        QTest::newRow("low half before") << -2 << 1 << bytes("FF 00");
        QTest::newRow("astride the pointer") << -1 << 3 << bytes("34 12 FF 00");
    }
    void doubleWordsLieOnBothSidesOfThePointer() { readWordsOfRow(&GetWordFromUI); }

    void bitsOfAByteAreaAreWrittenOnBothSidesOfThePointer_data()
    {
        addWriteColumns();
        QTest::newRow("over the driver's length")
            << AREA_BITS - 2 << changesAt({{AREA_BITS / 8 - 1, 0xC0}, {AREA_BITS / 8, 0x03}});
        QTest::newRow("-1") << -1 << changesAt({{0, 0x07}});
        QTest::newRow("-4") << -4 << Changes();
        QTest::newRow("-8") << -8 << changesAt({{-1, 0x01}});
        QTest::newRow("-17") << -17 << changesAt({{-2, 0x01}});
    }
    void bitsOfAByteAreaAreWrittenOnBothSidesOfThePointer()
    {
        QFETCH(int, start);
        QFETCH(Changes, changed);
        QByteArray in = bytes("01 01 01 01");
        WideBytes area;
        SetBitToUC(start, area.data(), &in, 4);
        QCOMPARE(area.changed(), changed);
    }

    void bitsOfAWordAreaAreWrittenOnBothSidesOfThePointer_data()
    {
        addWriteColumns();
        QTest::newRow("over the driver's length")
            << AREA_BITS - 2 << changesAt({{AREA_WORDS - 1, 0xC000}, {AREA_WORDS, 0x0003}});
        QTest::newRow("-1") << -1 << changesAt({{0, 0x07}});
        QTest::newRow("-8") << -8 << Changes();
        QTest::newRow("-16") << -16 << changesAt({{-1, 0x01}});
    }
    void bitsOfAWordAreaAreWrittenOnBothSidesOfThePointer()
    {
        QFETCH(int, start);
        QFETCH(Changes, changed);
        QByteArray in = bytes("01 01 01 01");
        WideWords area;
        SetBitToUS(start, area.data(), &in, 4);
        QCOMPARE(area.changed(), changed);
    }

    void clearingWhatIsNoBitChangesNothing()
    {
        QByteArray in = bytes("00 00 00");
        WideBytes byteBits(0xFF);
        SetBitToUC(-3, byteBits.data(), &in, 3);
        SetBitToUC(-11, byteBits.data(), &in, 3);
        QCOMPARE(byteBits.changed(), Changes());
        WideWords words(0xFFFF);
        SetBitToUS(-3, words.data(), &in, 3);
        QCOMPARE(words.changed(), Changes());
    }

    // A byte that cannot be written shows that it is stored back: the process does not survive.
    void writingWhatIsNoBitStoresItsByteBack()
    {
        const MappedBytes area(64, PROT_READ);
        QVERIFY(area.isThere());
        const pid_t child = ::fork();
        if (child == 0) {
            ::signal(SIGSEGV, SIG_DFL); // Qt Test and sanitizers would report it
            QByteArray in = bytes("01");
            SetBitToUC(-3, area.data(), &in, 1);
            ::_exit(0);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV);
    }

    void wordsAreWrittenOnBothSidesOfThePointer_data()
    {
        addWriteColumns();
        QTest::newRow("over the driver's length")
            << AREA_WORDS - 1 << changesAt({{AREA_WORDS - 1, 0x1234}, {AREA_WORDS, 0x5678}});
        QTest::newRow("-1") << -1 << changesAt({{-1, 0x1234}, {0, 0x5678}});
        QTest::newRow("-2") << -2 << changesAt({{-2, 0x1234}, {-1, 0x5678}});
    }
    void wordsAreWrittenOnBothSidesOfThePointer()
    {
        QFETCH(int, start);
        QFETCH(Changes, changed);
        QByteArray in = bytes("34 12 78 56");
        WideWords area;
        SetWordToUS(start, area.data(), &in, 2);
        QCOMPARE(area.changed(), changed);
    }

    void doubleWordsAreWrittenOnBothSidesOfThePointer_data()
    {
        addWriteColumns();
        QTest::newRow("over the driver's length")
            << AREA_WORDS - 1 << changesAt({{AREA_WORDS - 1, 0x1234}, {AREA_WORDS, 0x5678}});
        QTest::newRow("-2") << -2 << changesAt({{-2, 0x1234}, {-1, 0x5678}});
        QTest::newRow("astride the pointer") << -1 << changesAt({{-1, 0x1234}, {0, 0x5678}});
    }
    void doubleWordsAreWrittenOnBothSidesOfThePointer()
    {
        QFETCH(int, start);
        QFETCH(Changes, changed);
        QByteArray in = bytes("78 56 34 12");
        WideWords area;
        SetWordToUI(start, area.data(), &in, 2);
        QCOMPARE(area.changed(), changed);
    }

    void theHighestAndTheLowestBitAreReached()
    {
        const int farthest = 1 << 28; // byte of bit 2^31, which no int holds
        const MappedBytes area(size_t(farthest) + 1, PROT_READ | PROT_WRITE);
        QVERIFY(area.isThere());
        QByteArray in = bytes("01 01");
        SetBitToUC(HIGHEST, area.data(), &in, 2);
        QCOMPARE(int(area.data()[farthest - 1]), 0x80);
        QCOMPARE(int(area.data()[farthest]), 0x01);
        QByteArray out;
        GetBitFromUC(out, area.data(), HIGHEST, 2);
        QCOMPARE(out, bytes("01 01"));
        SetBitToUC(LOWEST, area.data() + farthest, &in, 1);
        QCOMPARE(int(area.data()[0]), 0x01);
        out.clear();
        GetBitFromUC(out, area.data() + farthest, LOWEST, 1);
        QCOMPARE(out, bytes("01"));
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

    void aBufferMayBeLongerThanTheDriversAreas()
    {
        QByteArray in(IMAGE_AREA_BYTES + 8, '\1');
        WordArea words(size_t(AREA_WORDS) + 4);
        SetWordToUS(0, words.data(), &in, HIGHEST);
        QVERIFY(words == WordArea(words.size(), 0x0101));
        QByteArray out;
        GetWordFromUS(out, words.data(), 0, AREA_WORDS + 4);
        QCOMPARE(out, in);
        words.assign(words.size(), 0);
        SetWordToUI(0, words.data(), &in, HIGHEST);
        QVERIFY(words == WordArea(words.size(), 0x0101));
    }
};

QTEST_APPLESS_MAIN(TestImageBounds)
#include "tst_image_bounds.moc"
