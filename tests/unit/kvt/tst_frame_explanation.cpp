// The explanation of frames, field by field.
#include "apps/kvt/frames/explainers.h"
#include "apps/kvt/frames/frame_text.h"
#include "tests/support/damage.h"
#include "tests/support/frames.h"

#include <QtTest>

using namespace kvt;

namespace
{

// The frame that the row is named by.
QByteArray rowFrame()
{
    return QByteArray::fromHex(QTest::currentDataTag());
}

FrameExplanation explained(const QByteArray &frame, const QByteArray &request = QByteArray())
{
    return explainFrame(frame, request, QVector<Tag>());
}

// Bytes of all fields, in order; empty when a field is not where it says.
QByteArray fieldBytes(const FrameExplanation &explanation)
{
    QByteArray bytes;
    for (const FrameField &field : explanation.fields) {
        if (field.offset != bytes.size() || field.bytes.isEmpty())
            return QByteArray();
        bytes += field.bytes;
    }
    return bytes;
}

QString problemsOf(const FrameExplanation &explanation)
{
    return explanation.problems.join(QStringLiteral("; "));
}

QByteArray blockReply(const QByteArray &digits)
{
    return reply("01" + digits);
}

} // namespace

class TestFrameExplanation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesAreSummarized_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("station");
        QTest::addColumn<QString>("part"); // of the summary
        QTest::newRow("05 30 31 30 35 32 38 0D") << "request" << 1 << "read of 5.2.1 (or 5.b.40";
        QTest::newRow("05 30 31 30 35 30 33 0D") << "request" << 1 << "read of 5.b.3,";
        QTest::newRow("05 30 31 30 37 33 30 0D") << "request" << 1 << "read of 7.3.0 (or 7.b.48";
        QTest::newRow("05 30 31 30 31 32 31 46 46 0D")
            << "request" << 1 << "write of 255 (0xFF) to X 1.2.0 (or 1.b.33";
        QTest::newRow("05 30 32 30 33 34 31 31 32 33 34 0D")
            << "request" << 2 << "write of 4660 (0x1234) to D 3.4.0 (or 3.b.65";
        QTest::newRow("05 30 32 30 33 34 39 31 32 33 34 0D")
            << "request" << 2 << "to D 3.4.1 (or 3.b.73";
        QTest::newRow("05 30 31 31 32 31 31 0D")
            << "request" << 1 << "command without a value (or read of address byte 0x11), D 18.1.0";
        QTest::newRow("06 30 31 31 32 41 42 0D") << "reply" << 1 << "value 4779 (0x12AB) of area D";
        QTest::newRow("06 46 46 38 30 30 30 0D") << "reply" << 255 << "with sign -32768";
        QTest::newRow("06 30 31 37 42 0D") << "reply" << 1 << "value 123 (0x7B) of area X, or ack";
        QTest::newRow("15 30 31 30 31 0D") << "refusal" << 1 << "refused";
        QTest::newRow("15 30 31 0D") << "refusal" << 1 << "refused";
        QTest::newRow("16 07 00 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 86")
            << "envelope" << 1 << "read of 1 in area D, number 100, at station 1 of PLC 2";
        QTest::newRow("18 07 01 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 34 12 CF")
            << "envelope" << 1 << "write of 1 in area D, number 100, at station 1 of PLC 2";
    }

    void framesAreSummarized()
    {
        QFETCH(QString, kind);
        QFETCH(int, station);
        QFETCH(QString, part);
        const FrameExplanation explanation = explained(rowFrame());
        QCOMPARE(frameKindName(explanation.kind), kind);
        QCOMPARE(explanation.station, station);
        QVERIFY2(explanation.summary.contains(part), qPrintable(explanation.summary));
        QCOMPARE(problemsOf(explanation), QString());
    }

    void noTruncationPassesForTheWhole_data() { framesAreSummarized_data(); }

    // What was cut off is at least the CR, or the checksum.
    void noTruncationPassesForTheWhole()
    {
        const QByteArray frame = rowFrame();
        for (int size = 0; size < frame.size(); ++size) {
            const QByteArray part = frame.left(size);
            QVERIFY2(!problemsOf(explained(part)).isEmpty(), part.toHex(' '));
        }
    }

    void everyByteBelongsToAField_data() { framesAreSummarized_data(); }

    // Of the frame, of all its beginnings, and of one with surplus.
    void everyByteBelongsToAField()
    {
        const QByteArray frame = rowFrame() + '\0' + "7";
        for (int size = 0; size <= frame.size(); ++size)
            QCOMPARE(fieldBytes(explained(frame.left(size))), frame.left(size));
    }

    void everyByteOfADamagedFrameBelongsToAField_data() { framesAreSummarized_data(); }
    void everyByteOfADamagedFrameBelongsToAField()
    {
        const auto judge = [](const QByteArray &damaged) {
            const bool whole = fieldBytes(explained(damaged)) == damaged;
            return whole ? QString() : QStringLiteral("a byte is in no field");
        };
        QCOMPARE(faultAtDamage(rowFrame(), judge), QString());
    }

    void damagedFramesAreExplained_data()
    {
        QTest::addColumn<QString>("problem");
        QTest::newRow("05") << "before the end of its station";
        QTest::newRow("05 30 31 30 35 32 38") << "does not end with CR";
        QTest::newRow("05 30 31 30 35 32 38 0A") << "does not end with CR";
        QTest::newRow("05 30 67 30 35 32 38 0D") << "station: 30 67 are not upper-case";
        QTest::newRow("05 30 31 30 35 32 38 31 0D") << "a value has 2 digits";
        QTest::newRow("06 30 31 31 32 0D 0D") << "7 bytes: replies have";
        QTest::newRow("06 30 31 31 61 0D") << "value: 31 61 are not upper-case";
        QTest::newRow("15") << "before the end of its station";
        QTest::newRow("41 42") << "begins neither with ENQ";
        QTest::newRow("16 07 00 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 87")
            << "checksum is 0x87, the bytes before it add up to 0x86";
    }

    void damagedFramesAreExplained()
    {
        QFETCH(QString, problem);
        const QString problems = problemsOf(explained(rowFrame()));
        QVERIFY2(problems.contains(problem), qPrintable(problems));
    }

    void aBlockShowsItsSeventyValues()
    {
        QByteArray digits;
        for (int i = 0; i < 70; ++i)
            digits += i == 69 ? "FF" : "0A";
        const FrameExplanation block = explained(blockReply(digits));
        QCOMPARE(block.summary, QStringLiteral("block of 70 values of area C, from station 1"));
        QCOMPARE(block.fields.at(2).meaning, QStringLiteral("10 10 10 10 10 10 10 10 10 10"));
        QVERIFY(block.fields.at(8).name == QLatin1String("elements 60-69") &&
                block.fields.at(8).meaning.endsWith(QLatin1String(" 10 255")));
        QCOMPARE(problemsOf(block), QString());
    }

    void aBlockNamesTheFieldWithBadDigits()
    {
        QByteArray digits(140, '0');
        digits[45] = 'g';
        const FrameExplanation block = explained(blockReply(digits));
        QCOMPARE(problemsOf(block),
                 QStringLiteral("elements 20-29: not all are upper-case hexadecimal digits"));
        QCOMPARE(block.fields.at(4).meaning, QStringLiteral("0 0 ? 0 0 0 0 0 0 0"));
    }

    void nothingIsNoFrame()
    {
        const FrameExplanation nothing = explained(QByteArray());
        QCOMPARE(frameKindName(nothing.kind), QStringLiteral("unknown"));
        QCOMPARE(nothing.station, -1);
        QVERIFY(nothing.fields.isEmpty());
        QVERIFY(!problemsOf(nothing).isEmpty());
    }

    void replyAndRequestAreHeldAgainstEachOther()
    {
        const QByteArray write = QByteArray::fromHex("05303130313231 4646 0D");
        const FrameExplanation other = explained(QByteArray::fromHex("063032 3231 0D"), write);
        QCOMPARE(other.summary, QStringLiteral("acknowledgement of the write, from station 2"));
        QCOMPARE(problemsOf(other),
                 QStringLiteral("the request was for station 1, the reply names station 2"));
        const FrameExplanation refusal = explained(QByteArray::fromHex("153031 0D"), write);
        QCOMPARE(refusal.summary, QStringLiteral("the request is refused, from station 1"));
        QCOMPARE(problemsOf(refusal), QString());
    }

    // 22 bytes around 256 of data; they add up to 0x16 + 1 + 2 + 1 + 1 + 1.
    void theLengthOfALongEnvelopeIsModulo256()
    {
        const QByteArray head =
            QByteArray::fromHex("16 00 01 02 01 0001 00000000 0001 00000000 00000000");
        const QByteArray frame = head + QByteArray(256, '\0') + '\x1C';
        const FrameExplanation envelope = explained(frame);
        QCOMPARE(problemsOf(envelope), QString());
        QCOMPARE(envelope.fields.first().meaning, QStringLiteral("22, modulo 256"));
        QVERIFY(isEnvelope(frame));
        QVERIFY(!isEnvelope(frame.chopped(1)));
    }

    void digitsAreUpperCaseHexadecimal_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("0") << 0;
        QTest::newRow("FFFF") << 65535;
        QTest::newRow("ff") << -1;
        QTest::newRow("0x1") << -1;
        QTest::newRow(" 1") << -1;
        QTest::newRow("+1") << -1;
        QTest::newRow("") << -1;
        QTest::newRow("FFFFFFFFF") << -1;
    }

    void digitsAreUpperCaseHexadecimal()
    {
        QFETCH(int, number);
        QCOMPARE(hexNumber(QTest::currentDataTag()), number);
    }
};

QTEST_GUILESS_MAIN(TestFrameExplanation)
#include "tst_frame_explanation.moc"
