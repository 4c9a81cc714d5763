// Request frames in a stream of bytes.
#include "simulator/frame_finder.h"

#include <QtTest>

using namespace kvt;

namespace
{

constexpr qint64 GAP_ns = 1000;
// A read of the word at 100, and the write of 34 12 to it.
constexpr char READ_ENVELOPE[] = "16070002010001000000640001000000000000000086";
constexpr char WRITE_ENVELOPE[] = "180701020100010000006400010000000000000000"
                                  "3412cf";

/// Feeds bytes one nanosecond apart from `start_ns` on and returns the frames found, as hex digits.
QByteArrayList feed(FrameFinder *finder, const QByteArray &bytes, qint64 start_ns = 0)
{
    QByteArrayList frames;
    for (int i = 0; i < bytes.size(); ++i) {
        const auto frame = finder->take(bytes[i], start_ns + i);
        if (frame)
            frames.append(frame->toHex());
    }
    return frames;
}

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

/// Returns a write envelope of `dataSize` zero bytes, which is longer than its first byte can say.
QByteArray longEnvelope(int dataSize)
{
    QByteArray envelope(22 + dataSize, '\0');
    envelope[0] = static_cast<char>((22 + dataSize) % 256);
    envelope[2] = 1;
    envelope[11] = static_cast<char>(dataSize / 2 / 256);
    envelope[12] = static_cast<char>(dataSize / 2 % 256);
    int sum = 0;
    for (int i = 0; i + 1 < envelope.size(); ++i)
        sum += static_cast<quint8>(envelope[i]);
    envelope[envelope.size() - 1] = static_cast<char>(sum);
    return envelope;
}

} // namespace

class TestFrameFinder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textFramesRunFromEnqToCr_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArrayList>("frames");
        QTest::addColumn<qint64>("dropped");
        const QByteArray read = "053031303532380d";
        QTest::newRow("one") << hex(read) << QByteArrayList{read} << qint64(0);
        QTest::newRow("two") << hex(read + read) << QByteArrayList{read, read} << qint64(0);
        QTest::newRow("noise in front")
            << hex("00ff0d30" + read) << QByteArrayList{read} << qint64(4);
        QTest::newRow("a frame cut short")
            << hex("053031" + read) << QByteArrayList{read} << qint64(3);
        QTest::newRow("unfinished") << hex("05303130353238") << QByteArrayList() << qint64(0);
        QTest::newRow("ENQ CR") << hex("050d") << QByteArrayList{"050d"} << qint64(0);
        QTest::newRow("no CR for too long") << hex("05") + QByteArray(40, '0') + hex("0d" + read)
                                            << QByteArrayList{read} << qint64(42);
    }

    void textFramesRunFromEnqToCr()
    {
        QFETCH(QByteArray, bytes);
        FrameFinder finder(FrameFinder::Mode::Text, GAP_ns);
        QTEST(feed(&finder, bytes), "frames");
        QTEST(finder.droppedBytes(), "dropped");
    }

    void clearDropsTheUnfinishedFrame()
    {
        FrameFinder finder(FrameFinder::Mode::Text, GAP_ns);
        feed(&finder, hex("053031"));
        finder.clear();
        QCOMPARE(finder.droppedBytes(), 3);
        QCOMPARE(feed(&finder, hex("303532380d")), QByteArrayList());
    }

    void envelopesEndWhereTheySay()
    {
        FrameFinder finder(FrameFinder::Mode::Envelope, GAP_ns);
        QCOMPARE(feed(&finder, hex(READ_ENVELOPE) + hex(WRITE_ENVELOPE)),
                 (QByteArrayList{READ_ENVELOPE, WRITE_ENVELOPE}));
        QCOMPARE(finder.droppedBytes(), 0);
    }

    void anEnvelopeWithAWrongChecksumIsDropped()
    {
        FrameFinder finder(FrameFinder::Mode::Envelope, GAP_ns);
        QByteArray broken = hex(READ_ENVELOPE);
        broken[21] = '\x87';
        QCOMPARE(feed(&finder, broken + hex(READ_ENVELOPE)), QByteArrayList{READ_ENVELOPE});
        QCOMPARE(finder.droppedBytes(), 22);
    }

    void aPauseBeginsANewEnvelope()
    {
        FrameFinder finder(FrameFinder::Mode::Envelope, GAP_ns);
        QCOMPARE(feed(&finder, hex("ff"), 0), QByteArrayList());
        QCOMPARE(feed(&finder, hex(READ_ENVELOPE), GAP_ns + 1), QByteArrayList{READ_ENVELOPE});
        QCOMPARE(finder.droppedBytes(), 1);
        const QByteArray whole = hex(READ_ENVELOPE);
        QCOMPARE(feed(&finder, whole.left(10), 10000), QByteArrayList());
        QCOMPARE(feed(&finder, whole.mid(10), 10009 + GAP_ns), QByteArrayList{READ_ENVELOPE});
    }

    void envelopesLongerThanTheirFirstByteAreFound_data()
    {
        QTest::addColumn<int>("dataSize");
        QTest::newRow("first byte 0") << 234;
        QTest::newRow("first byte 2") << 236;
        QTest::newRow("first byte 22") << 256;
        QTest::newRow("first byte 24, twice round") << 514;
    }

    void envelopesLongerThanTheirFirstByteAreFound()
    {
        QFETCH(int, dataSize);
        FrameFinder finder(FrameFinder::Mode::Envelope, GAP_ns);
        const QByteArray envelope = longEnvelope(dataSize);
        QCOMPARE(feed(&finder, envelope), QByteArrayList{envelope.toHex()});
    }
};

QTEST_GUILESS_MAIN(TestFrameFinder)
#include "tst_frame_finder.moc"
