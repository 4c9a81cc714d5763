// What the simulated PLC answers to the binary envelopes of remote mode.
#include "simulator/simulated_plc.h"

#include "tests/support/damage.h"
#include "tests/unit/simulator/sample_plc.h"

#include <QtTest>

using namespace kvt;

namespace
{

PlcConfig envelopeConfig()
{
    PlcConfig config;
    config.mode = FrameFinder::Mode::Envelope;
    return config;
}

/// Returns an envelope of PLC 2 with its length and checksum in place.
QByteArray envelope(int rwKind, int station, int area, int number, const QByteArray &data)
{
    QByteArray bytes = QByteArray::fromHex("000700020000000000000000010000000000000000") + data;
    bytes[0] = static_cast<char>(bytes.size() + 1);
    bytes[2] = static_cast<char>(rwKind);
    bytes[4] = static_cast<char>(station);
    bytes[6] = static_cast<char>(area);
    bytes[9] = static_cast<char>(number >> 8);
    bytes[10] = static_cast<char>(number);
    int sum = 0;
    for (const char byte : bytes)
        sum += static_cast<quint8>(byte);
    return bytes.append(static_cast<char>(sum));
}

/// Says what is wrong after `bytes`, of which only `whole` writes 1234 to 5.2.1 at station 1.
QString faultAfter(const QByteArray &bytes, const QByteArray &whole)
{
    SimulatedPlc plc(sampleTags(), envelopeConfig(), 1);
    ask(&plc, bytes);
    const int expected = bytes.startsWith(whole) ? 0x1234 : 0;
    const int held = plc.memory().value(1, Area::D, QStringLiteral("5.2.1")).value_or(-1);
    if (held != expected)
        return QStringLiteral("5.2.1 is %1").arg(held);
    plc.memory().setValue(1, Area::D, QStringLiteral("5.2.1"), 0x12AB);
    const qint64 afterPause_ns = 2 * plc.config().frameGap_ns;
    return ask(&plc, envelope(0, 1, 1, 165, {}), afterPause_ns) == REPLY_1
               ? QString()
               : QStringLiteral("the next read is lost");
}

} // namespace

class TestSimulatedPlcEnvelopes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAreAnsweredByArea()
    {
        SimulatedPlc plc(sampleTags(), envelopeConfig(), 1);
        plc.memory().setValue(1, Area::D, QStringLiteral("5.2.1"), 0x12AB);
        plc.memory().setValue(1, Area::X, QStringLiteral("1.2.0"), 0x7F);
        plc.memory().setValue(1, Area::C, QStringLiteral("9.1.1.5"), 0xC5);
        QCOMPARE(ask(&plc, envelope(0, 1, 1, 165, {})), reply("0112AB"));
        QCOMPARE(ask(&plc, envelope(0, 1, 0, 36, {})), reply("017F"));
        QCOMPARE(ask(&plc, envelope(0, 1, 2, 240, {})),
                 reply("01" + QByteArray(10, '0') + "C5" + QByteArray(128, '0')));
    }

    void writesAreAcknowledgedAndKept()
    {
        SimulatedPlc plc(sampleTags(), envelopeConfig(), 1);
        const QByteArray word = envelope(1, 1, 1, 165, QByteArray::fromHex("3412"));
        QCOMPARE(ask(&plc, word), reply("01" + word.right(1).toHex().toUpper()));
        QCOMPARE(plc.memory().value(1, Area::D, QStringLiteral("5.2.1")),
                 std::optional<int>(0x1234));
        QCOMPARE(ask(&plc, envelope(1, 1, 0, 36, QByteArray::fromHex("01"))).size(), 6);
        QCOMPARE(plc.memory().value(1, Area::X, QStringLiteral("1.2.0")), std::optional<int>(1));
    }

    void anUnknownCellIsRefused_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::newRow("address") << envelope(0, 1, 1, 166, {});
        QTest::newRow("area") << envelope(0, 1, 3, 165, {});
        QTest::newRow("write to a block") << envelope(1, 1, 2, 240, QByteArray::fromHex("0100"));
        QTest::newRow("write beyond the last cell")
            << envelope(1, 1, 1, 165, QByteArray::fromHex("01000200"));
    }

    void anUnknownCellIsRefused()
    {
        QFETCH(QByteArray, request);
        SimulatedPlc plc(sampleTags(), envelopeConfig(), 1);
        QCOMPARE(ask(&plc, request), refusal("01"));
        QCOMPARE(plc.memory().value(1, Area::D, QStringLiteral("5.2.1")), std::optional<int>(0));
    }

    void aStationThatIsNotHereSaysNothing()
    {
        SimulatedPlc plc(sampleTags(), envelopeConfig(), 1);
        QCOMPARE(ask(&plc, envelope(0, 9, 1, 165, {})), QByteArray());
        QCOMPARE(plc.counters().notAddressed, 1);
    }

    void aDamagedWriteChangesNothingAndTheNextOneAfterAPauseIsAnswered()
    {
        const QByteArray write = envelope(1, 1, 1, 165, QByteArray::fromHex("3412"));
        QCOMPARE(faultAfter(write, write), QString());
        QCOMPARE(
            faultAtDamage(write, [&](const QByteArray &bytes) { return faultAfter(bytes, write); }),
            QString());
    }
};

QTEST_GUILESS_MAIN(TestSimulatedPlcEnvelopes)
#include "tst_simulated_plc_envelopes.moc"
