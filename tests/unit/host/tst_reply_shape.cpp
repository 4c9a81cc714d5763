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
    void aReplyIsKnownByItsBeginning();
    void aWholeReplyIsMadeOfDigits();
    void onlyAWholeRefusalIsOne();
    void aStationThatOnceConformedIsHeldToIt();
    void theOtherWaysOfChecking();
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

void TestReplyShape::aReplyIsKnownByItsBeginning()
{
    QVERIFY(beginsAsReplyOf(1, QByteArray::fromHex("06 30 31")));
    QVERIFY(!beginsAsReplyOf(1, QByteArray::fromHex("06 30")));
    QVERIFY(!beginsAsReplyOf(1, QByteArray::fromHex("06 30 32")));
    QVERIFY(!beginsAsReplyOf(1, QByteArray::fromHex("15 30 31")));
}

void TestReplyShape::aWholeReplyIsMadeOfDigits()
{
    QVERIFY(isWholeReply(QByteArray::fromHex("06 30 31 31 32 0D")));
    QVERIFY(!isWholeReply(QByteArray::fromHex("06 30 31 31 0D")));
    QVERIFY(!isWholeReply(QByteArray::fromHex("06 3A 31 31 32 0D")));
    QVERIFY(!isWholeReply(QByteArray::fromHex("06 30 31 31 3A 0D")));
    QVERIFY(!isWholeReply(QByteArray::fromHex("06 30 31 31 32 33")));
    QVERIFY(!isWholeReply(QByteArray::fromHex("15 30 31 31 32 0D")));
}

void TestReplyShape::onlyAWholeRefusalIsOne()
{
    Request request;
    request.station = 0x1A;
    const QByteArray refusal = QByteArray::fromHex("15 31 41 0D");
    QVERIFY(isRefusal(request, refusal));
    for (int length = 0; length < refusal.size(); ++length)
        QVERIFY(!isRefusal(request, refusal.left(length)));
    for (const char *bytes : {"15 0D", "15 31 0D", "15 31 42 0D", "15 31 61 0D", "06 31 41 0D",
                              "15 31 41 30 0D", "15 31 41 0D 0D", "15 31 41 0A"})
        QVERIFY2(!isRefusal(request, QByteArray::fromHex(bytes)), bytes);
}

void TestReplyShape::aStationThatOnceConformedIsHeldToIt()
{
    Request request;
    request.station = 1;
    request.expectedLength = 8;
    request.dataStart = 3;
    request.dataLength = 4;
    const QByteArray sound = QByteArray::fromHex("06 30 31 31 32 41 42 0D");
    const QByteArray foreign = QByteArray::fromHex("06 30 32 31 32 41 42 0D");
    const QByteArray noDigits = QByteArray::fromHex("06 30 31 31 32 7A 7A 0D");
    ReplyJudge judge(ReplyChecking::Auto);
    QVERIFY(judge.judge(request, foreign) == ReplyJudge::Verdict::Doubtful);
    QVERIFY(judge.judge(request, noDigits) == ReplyJudge::Verdict::Doubtful);
    QVERIFY(judge.judge(request, sound) == ReplyJudge::Verdict::Sound);
    judge.accepted(request);
    QVERIFY(judge.judge(request, foreign) == ReplyJudge::Verdict::Foreign);
    QVERIFY(judge.judge(request, noDigits) == ReplyJudge::Verdict::Foreign);
    QVERIFY(judge.judge(request, sound) == ReplyJudge::Verdict::Sound);
    // Each station for itself; the low 8 bits are what goes on the line.
    Request other = request;
    other.station = 2;
    QVERIFY(judge.judge(other, sound) == ReplyJudge::Verdict::Doubtful);
    other.station = 0x101;
    QVERIFY(judge.judge(other, foreign) == ReplyJudge::Verdict::Foreign);
}

void TestReplyShape::theOtherWaysOfChecking()
{
    Request request;
    request.station = 1;
    const QByteArray foreign = QByteArray::fromHex("06 30 32 31 32 41 42 0D");
    for (const ReplyChecking checking :
         {ReplyChecking::Off, ReplyChecking::Count, ReplyChecking::Refuse}) {
        ReplyJudge judge(checking);
        const ReplyJudge::Verdict expected =
            checking == ReplyChecking::Off     ? ReplyJudge::Verdict::Sound
            : checking == ReplyChecking::Count ? ReplyJudge::Verdict::Doubtful
                                               : ReplyJudge::Verdict::Foreign;
        QVERIFY(judge.judge(request, foreign) == expected);
        judge.accepted(request);
        QVERIFY(judge.judge(request, foreign) == expected);
    }
}

QTEST_APPLESS_MAIN(TestReplyShape)
#include "tst_reply_shape.moc"
