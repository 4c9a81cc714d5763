// What a reply's own bytes say about whether it answers the request.
#include "host/reply_check.h"

#include <QtTest>

using namespace kvt;

class TestReplyShape : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aReplyLooksLikeOneOrNot_data();
    void aReplyLooksLikeOneOrNot();
    void anAcknowledgementMayCarryAnything();
    void onlyACompleteNakIsARefusal();
};

namespace
{

Request wordRead(int station)
{
    Request request;
    request.station = station;
    request.expectedLength = 8;
    request.dataStart = 3;
    request.dataLength = 4;
    return request;
}

} // namespace

void TestReplyShape::aReplyLooksLikeOneOrNot_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("station");
    QTest::addColumn<bool>("looksRight");

    const auto row = [](const char *hex, int station, bool looksRight) {
        QTest::newRow(hex) << QByteArray::fromHex(hex) << station << looksRight;
    };
    row("", 1, true);
    row("06", 1, true);
    row("05", 1, false);
    row("0D", 1, false);
    row("06 30", 1, true);
    row("06 31", 1, false);
    row("06 30 31", 1, true);
    row("06 30 32", 1, false);
    row("06 30 31 31 32 41 46 0D", 1, true);
    row("06 31 30 31 32 41 46 0D", 1, false);
    row("06 41 42 31 32 41 46 0D", 0xAB, true);
    row("06 61 62 31 32 41 46 0D", 0xAB, false);
    row("06 41 42 31 32 41 46 0D", 0x1AB, true);
    row("06 30 31 31 32 61 46 0D", 1, false);
    row("06 30 31 31 32 3A 46 0D", 1, false);
    row("06 30 31 31 32 2F 46 0D", 1, false);
    row("06 30 31 31 32 47 46 0D", 1, false);
    row("06 30 31 31 0D", 1, true);
    row("15 30 31 30 33 0D", 1, true);
    row("15 30 32 30 33 0D", 1, false);
    row("15 30 31 3F 3F 3F 3F 0D", 1, true);
    row("86 30 31 31 32 41 46 0D", 1, false);
}

void TestReplyShape::aReplyLooksLikeOneOrNot()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, station);
    QFETCH(bool, looksRight);
    QCOMPARE(looksLikeReply(wordRead(station), reply), looksRight);
}

void TestReplyShape::anAcknowledgementMayCarryAnything()
{
    Request write;
    write.kind = RequestKind::Write;
    write.station = 1;
    write.expectedLength = 6;
    QVERIFY(looksLikeReply(write, QByteArray::fromHex("06 30 31 FF 00 0D")));
    QVERIFY(!looksLikeReply(write, QByteArray::fromHex("06 30 33 30 30 0D")));
}

void TestReplyShape::onlyACompleteNakIsARefusal()
{
    QVERIFY(isRefusal(QByteArray::fromHex("15 30 31 30 33 0D")));
    QVERIFY(isRefusal(QByteArray::fromHex("15 0D")));
    QVERIFY(!isRefusal(QByteArray::fromHex("15 30 31 30 33")));
    QVERIFY(!isRefusal(QByteArray::fromHex("06 30 31 30 33 0D")));
    QVERIFY(!isRefusal(QByteArray()));
}

QTEST_APPLESS_MAIN(TestReplyShape)
#include "tst_reply_shape.moc"
