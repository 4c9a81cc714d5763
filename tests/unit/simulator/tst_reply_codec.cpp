// Replies, whole and damaged.
#include "simulator/reply_codec.h"

#include "tests/support/frames.h"

#include <QtTest>

using namespace kvt;

namespace
{

const QByteArray REPLY = reply("0112AB");
constexpr int ROUNDS = 500;

/// Returns every distinct outcome of many rounds of a fault.
QSet<QByteArray> outcomes(FaultKind fault)
{
    Random random(1);
    QSet<QByteArray> all;
    for (int i = 0; i < ROUNDS; ++i)
        all.insert(damaged(REPLY, fault, &random));
    return all;
}

} // namespace

class TestReplyCodec : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void repliesAreWrittenInDigits()
    {
        QCOMPARE(dataReply(1, QByteArray::fromHex("12AB")), REPLY);
        QCOMPARE(dataReply(0xFE, QByteArray::fromHex("00")), reply("FE00"));
        QCOMPARE(dataReply(3, QByteArray(70, '\x5A')), reply("03" + QByteArray("5A").repeated(70)));
        QCOMPARE(acknowledgement(2, 0x12), reply("0212"));
        QCOMPARE(kvt::refusal(2), refusal("02"));
    }

    void anotherStationsDigitsReplaceTheOwn()
    {
        QCOMPARE(withStation(REPLY, 0xC3), reply("C312AB"));
    }

    void truncationLeavesTheFirstBytes()
    {
        const QSet<QByteArray> all = outcomes(FaultKind::Truncation);
        QCOMPARE(all.size(), REPLY.size() - 1);
        for (const QByteArray &bytes : all)
            QVERIFY(!bytes.isEmpty() && REPLY.startsWith(bytes));
    }

    void extraBytesStandBeforeOrBehind()
    {
        int before = 0;
        int behind = 0;
        const QSet<QByteArray> all = outcomes(FaultKind::ExtraBytes);
        for (const QByteArray &bytes : all) {
            const int extra = bytes.size() - REPLY.size();
            QVERIFY(extra >= 1 && extra <= 4);
            before += bytes.endsWith(REPLY) ? 1 : 0;
            behind += bytes.startsWith(REPLY) ? 1 : 0;
            QCOMPARE(bytes.count('\r'), 1);
        }
        QCOMPARE(before + behind, all.size());
        QVERIFY(before > 0 && behind > 0);
    }

    void theWrongEndIsAnythingButCr()
    {
        const QSet<QByteArray> all = outcomes(FaultKind::WrongEnd);
        QVERIFY(all.size() > 100);
        for (const QByteArray &bytes : all) {
            QCOMPARE(bytes.left(7), REPLY.left(7));
            QCOMPARE(bytes.size(), 8);
            QVERIFY(bytes[7] != '\r');
        }
    }

    void oneFlippedDigitIsStillADigit()
    {
        const QSet<QByteArray> all = outcomes(FaultKind::FlippedDigit);
        QCOMPARE(all.size(), 4 * 15);
        for (const QByteArray &bytes : all) {
            int different = 0;
            for (int i = 0; i < REPLY.size(); ++i)
                different += bytes[i] != REPLY[i] ? 1 : 0;
            QCOMPARE(different, 1);
            QCOMPARE(QByteArray::fromHex(bytes.mid(1, 6)).toHex().toUpper(), bytes.mid(1, 6));
            QCOMPARE(bytes.left(3), REPLY.left(3));
        }
    }

    void duplicateIsTheReplyTwice()
    {
        QCOMPARE(outcomes(FaultKind::Duplicate), QSet<QByteArray>{REPLY + REPLY});
    }

    void otherFaultsLeaveTheReply()
    {
        QCOMPARE(outcomes(FaultKind::LateReply), QSet<QByteArray>{REPLY});
        QCOMPARE(outcomes(FaultKind::Echo), QSet<QByteArray>{REPLY});
    }
};

QTEST_GUILESS_MAIN(TestReplyCodec)
#include "tst_reply_codec.moc"
