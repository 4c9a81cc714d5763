// What the simulated PLC answers when nothing goes wrong, byte by byte.
#include "simulator/simulated_plc.h"

#include "tests/support/damage.h"
#include "tests/unit/simulator/sample_plc.h"

#include <QtTest>

using namespace kvt;

namespace
{

constexpr qint64 BYTE_ns = 1000;
constexpr qint64 TURNAROUND_ns = 50000;

PlcConfig quietConfig()
{
    PlcConfig config;
    config.byteTime_ns = BYTE_ns;
    config.turnaround_ns = TURNAROUND_ns;
    config.signalPlan.all = SignalKind::Counter;
    return config;
}

/// Says what is wrong after `bytes`, of which only `whole` writes 1234 to 3.4.0 at station 2.
QString faultAfter(const QByteArray &bytes, const QByteArray &whole)
{
    SimulatedPlc plc = samplePlc();
    ask(&plc, bytes);
    const int expected = bytes.startsWith(whole) ? 0x1234 : 0;
    const int held = plc.memory().value(2, Area::D, QStringLiteral("3.4.0")).value_or(-1);
    if (held != expected)
        return QStringLiteral("3.4.0 is %1").arg(held);
    return ask(&plc, READ_1) == REPLY_1 ? QString() : QStringLiteral("the next read is lost");
}

} // namespace

class TestSimulatedPlc : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAreAnsweredByArea()
    {
        SimulatedPlc plc(sampleTags(), quietConfig(), 1);
        plc.memory().setValue(1, Area::D, QStringLiteral("5.2.1"), 0x12AB);
        plc.memory().setValue(1, Area::X, QStringLiteral("1.2.0"), 0x7F);
        plc.memory().setValue(1, Area::C, QStringLiteral("9.1.1.5"), 0xC5);
        QCOMPARE(ask(&plc, request("010528")), reply("0112AB"));
        QCOMPARE(ask(&plc, request("010120")), reply("017F"));
        const QByteArray block = ask(&plc, request("010918"));
        QCOMPARE(block.size(), 144);
        QCOMPARE(block, reply("01" + QByteArray(10, '0') + "C5" + QByteArray(128, '0')));
        QCOMPARE(plc.counters().reads, 3);
    }

    void writesAreAcknowledgedAndKept()
    {
        SimulatedPlc plc(sampleTags(), quietConfig(), 1);
        QCOMPARE(ask(&plc, request("0203411234")), reply("0203"));
        QCOMPARE(ask(&plc, request("010121FE")), reply("0101"));
        QCOMPARE(plc.memory().value(2, Area::D, QStringLiteral("3.4.0")),
                 std::optional<int>(0x1234));
        QCOMPARE(plc.memory().value(1, Area::X, QStringLiteral("1.2.0")), std::optional<int>(0xFE));
        QCOMPARE(ask(&plc, request("020340")), reply("021234"));
        QCOMPARE(plc.counters().writes, 2);
    }

    void theCommandWithoutAValueIsCounted()
    {
        SimulatedPlc plc(sampleTags(), quietConfig(), 1);
        QCOMPARE(ask(&plc, request("011211")), reply("0112"));
        QCOMPARE(ask(&plc, request("021219")), reply("0212"));
        QCOMPARE(plc.counters().commands, 2);
        QCOMPARE(plc.counters().reads, 0);
    }

    void whatCannotBeDoneIsRefused_data()
    {
        QTest::addColumn<QByteArray>("frame");
        QTest::addColumn<QByteArray>("reply");
        QTest::newRow("read of an unknown cell") << request("010529") << refusal("01");
        QTest::newRow("read of a cell of another station") << request("020528") << refusal("02");
        QTest::newRow("write without the write bit") << request("0203401234") << refusal("02");
        QTest::newRow("a word written to a byte") << request("0101211234") << refusal("01");
        QTest::newRow("a byte written to a block") << request("01091912") << refusal("01");
        QTest::newRow("wrong length") << request("01052") << refusal("01");
        QTest::newRow("bad digit") << request("0105 8") << refusal("01");
        QTest::newRow("command 12, other address") << request("011213") << refusal("01");
    }

    void whatCannotBeDoneIsRefused()
    {
        QFETCH(QByteArray, frame);
        SimulatedPlc plc(sampleTags(), quietConfig(), 1);
        QTEST(ask(&plc, frame), "reply");
        QCOMPARE(plc.counters().refusals, 1);
        QCOMPARE(plc.counters().reads + plc.counters().writes + plc.counters().commands, 0);
    }

    void aStationThatIsNotHereSaysNothing()
    {
        SimulatedPlc plc(sampleTags(), quietConfig(), 1);
        QCOMPARE(ask(&plc, request("030528")), QByteArray());
        QCOMPARE(ask(&plc, request("0G0528")), QByteArray());
        QCOMPARE(ask(&plc, "\x05\r"), QByteArray());
        QCOMPARE(plc.counters().notAddressed, 3);
        QCOMPARE(plc.counters().exchanges, 3);
    }

    void aStationThatIsOffSaysNothingUntilItIsOn()
    {
        SimulatedPlc plc(sampleTags(), quietConfig(), 1);
        plc.setStationOff(2, true);
        QCOMPARE(ask(&plc, request("0203411234")), QByteArray());
        QCOMPARE(plc.memory().value(2, Area::D, QStringLiteral("3.4.0")), std::optional<int>(0));
        QCOMPARE(ask(&plc, request("010528")).size(), 8);
        plc.setStationOff(2, false);
        QCOMPARE(ask(&plc, request("0203411234")), reply("0203"));
        QCOMPARE(plc.counters().unanswered, 1);
    }

    void theReplyBeginsAfterTheTurnaround()
    {
        SimulatedPlc plc(sampleTags(), quietConfig(), 1);
        const PlcReaction reaction = plc.receive(request("010528"), 1000000);
        QCOMPARE(reaction.transmissions.size(), 1);
        QCOMPARE(reaction.transmissions[0].start_ns, 1000000 + TURNAROUND_ns);
        QCOMPARE(reaction.lineBreak_ns, 0);
    }

    void twoRequestsAreAnsweredOneAfterTheOther()
    {
        PlcConfig config = quietConfig();
        config.turnaround_ns = 0;
        SimulatedPlc plc(sampleTags(), config, 1);
        const PlcReaction reaction = plc.receive(request("010918") + request("010528"), 1000000);
        QCOMPARE(reaction.transmissions.size(), 2);
        QCOMPARE(reaction.transmissions[0].start_ns, 1000000 - 8 * BYTE_ns);
        QCOMPARE(reaction.transmissions[1].start_ns, 1000000 - 8 * BYTE_ns + 144 * BYTE_ns);
    }

    void aFrameMayArriveInPieces()
    {
        SimulatedPlc plc(sampleTags(), quietConfig(), 1);
        QCOMPARE(ask(&plc,
                     "??\x05"
                     "01",
                     100),
                 QByteArray());
        QCOMPARE(ask(&plc, "0528", 200), QByteArray());
        QCOMPARE(ask(&plc, "\r", 300).size(), 8);
        QCOMPARE(plc.counters().droppedBytes, 2);
    }

    void anOpenedLineHasForgottenTheOldOne()
    {
        SimulatedPlc plc(sampleTags(), quietConfig(), 1);
        ask(&plc,
            request("010528") + "\x05"
                                "0105",
            100);
        plc.lineOpened();
        QCOMPARE(ask(&plc, "28\r", 200), QByteArray());
        const PlcReaction reaction = plc.receive(request("010528"), 300);
        QCOMPARE(reaction.transmissions[0].start_ns, 300 + TURNAROUND_ns);
    }

    void theLatestExchangeIsKnown()
    {
        SimulatedPlc plc(sampleTags(), quietConfig(), 1);
        ask(&plc, request("010528"));
        ask(&plc, request("0203411234"));
        QCOMPARE(plc.lastExchange().number, 2);
        QCOMPARE(plc.lastExchange().station, 2);
        QCOMPARE(plc.lastExchange().kind, PlcRequest::Kind::Write);
        QVERIFY(plc.lastExchange().faults.isEmpty());
    }

    void everyExchangeIsLogged()
    {
        QByteArrayList log;
        PlcConfig config = quietConfig();
        config.log = [&log](const Exchange &exchange) {
            log.append(QByteArray::number(exchange.number) + ' ' + exchange.request +
                       exchange.reply);
        };
        SimulatedPlc plc(sampleTags(), config, 1);
        ask(&plc, request("010529"));
        ask(&plc, request("030528"));
        QCOMPARE(log, (QByteArrayList{"1 " + request("010529") + refusal("01"),
                                      "2 " + request("030528")}));
    }

    void aDamagedWriteChangesNothingAndTheNextRequestIsAnswered()
    {
        const QByteArray write = request("0203411234");
        QCOMPARE(faultAfter(write, write), QString());
        QCOMPARE(
            faultAtDamage(write, [&](const QByteArray &bytes) { return faultAfter(bytes, write); }),
            QString());
    }
};

QTEST_GUILESS_MAIN(TestSimulatedPlc)
#include "tst_simulated_plc.moc"
