// What the simulated PLC answers when nothing goes wrong, byte by byte.
#include "simulator/simulated_plc.h"

#include "tests/unit/simulator/sample_tags.h"

#include <QtTest>

using kvt::Area;
using kvt::PlcConfig;
using kvt::PlcReaction;
using kvt::SimulatedPlc;

namespace
{

const qint64 BYTE_NS = 1000;
const qint64 TURNAROUND_NS = 50000;

PlcConfig quietConfig()
{
    PlcConfig config;
    config.byteTimeNs = BYTE_NS;
    config.turnaroundNs = TURNAROUND_NS;
    config.signalPlan.all = kvt::SignalKind::Counter;
    return config;
}

/// Sends one frame, the last byte of which arrives at `timeNs`, and returns all bytes answered.
QByteArray ask(SimulatedPlc *plc, const QByteArray &frame, qint64 timeNs = 0)
{
    QByteArray bytes;
    const PlcReaction reaction = plc->receive(frame, timeNs);
    for (const kvt::Transmission &sent : reaction.transmissions)
        bytes.append(sent.bytes);
    return bytes;
}

} // namespace

class TestSimulatedPlc : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAreAnsweredByArea();
    void writesAreAcknowledgedAndKept();
    void theCommandWithoutAValueIsCounted();
    void whatCannotBeDoneIsRefused_data();
    void whatCannotBeDoneIsRefused();
    void aStationThatIsNotHereSaysNothing();
    void aStationThatIsOffSaysNothingUntilItIsOn();
    void theReplyBeginsAfterTheTurnaround();
    void twoRequestsAreAnsweredOneAfterTheOther();
    void aFrameMayArriveInPieces();
    void anOpenedLineHasForgottenTheOldOne();
    void theLatestExchangeIsKnown();
    void everyExchangeIsLogged();
};

void TestSimulatedPlc::readsAreAnsweredByArea()
{
    SimulatedPlc plc(sampleTags(), quietConfig(), 1);
    plc.memory().setValue(1, Area::D, QStringLiteral("5.2.1"), 0x12AB);
    plc.memory().setValue(1, Area::X, QStringLiteral("1.2.0"), 0x7F);
    plc.memory().setValue(1, Area::C, QStringLiteral("9.1.1.5"), 0xC5);
    QCOMPARE(ask(&plc, "\x05"
                       "010528\r"),
             QByteArray("\x06"
                        "0112AB\r"));
    QCOMPARE(ask(&plc, "\x05"
                       "010120\r"),
             QByteArray("\x06"
                        "017F\r"));
    const QByteArray block = ask(&plc, "\x05"
                                       "010918\r");
    QCOMPARE(block.size(), 144);
    QCOMPARE(block, "\x06"
                    "01" +
                        QByteArray(10, '0') + "C5" + QByteArray(128, '0') + '\r');
    QCOMPARE(plc.counters().reads, 3);
}

void TestSimulatedPlc::writesAreAcknowledgedAndKept()
{
    SimulatedPlc plc(sampleTags(), quietConfig(), 1);
    QCOMPARE(ask(&plc, "\x05"
                       "0203411234\r"),
             QByteArray("\x06"
                        "0203\r"));
    QCOMPARE(ask(&plc, "\x05"
                       "010121FE\r"),
             QByteArray("\x06"
                        "0101\r"));
    QCOMPARE(plc.memory().value(2, Area::D, QStringLiteral("3.4.0")), std::optional<int>(0x1234));
    QCOMPARE(plc.memory().value(1, Area::X, QStringLiteral("1.2.0")), std::optional<int>(0xFE));
    QCOMPARE(ask(&plc, "\x05"
                       "020340\r"),
             QByteArray("\x06"
                        "021234\r"));
    QCOMPARE(plc.counters().writes, 2);
}

void TestSimulatedPlc::theCommandWithoutAValueIsCounted()
{
    SimulatedPlc plc(sampleTags(), quietConfig(), 1);
    QCOMPARE(ask(&plc, "\x05"
                       "011211\r"),
             QByteArray("\x06"
                        "0112\r"));
    QCOMPARE(ask(&plc, "\x05"
                       "021219\r"),
             QByteArray("\x06"
                        "0212\r"));
    QCOMPARE(plc.counters().commands, 2);
    QCOMPARE(plc.counters().reads, 0);
}

void TestSimulatedPlc::whatCannotBeDoneIsRefused_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("read of an unknown cell") << QByteArray("\x05"
                                                           "010529\r")
                                             << QByteArray("\x15"
                                                           "0101\r");
    QTest::newRow("read of a cell of another station") << QByteArray("\x05"
                                                                     "020528\r")
                                                       << QByteArray("\x15"
                                                                     "0201\r");
    QTest::newRow("write without the write bit") << QByteArray("\x05"
                                                               "0203401234\r")
                                                 << QByteArray("\x15"
                                                               "0201\r");
    QTest::newRow("a word written to a byte") << QByteArray("\x05"
                                                            "0101211234\r")
                                              << QByteArray("\x15"
                                                            "0101\r");
    QTest::newRow("a byte written to a block") << QByteArray("\x05"
                                                             "01091912\r")
                                               << QByteArray("\x15"
                                                             "0101\r");
    QTest::newRow("wrong length") << QByteArray("\x05"
                                                "01052\r")
                                  << QByteArray("\x15"
                                                "0102\r");
    QTest::newRow("bad digit") << QByteArray("\x05"
                                             "0105 8\r")
                               << QByteArray("\x15"
                                             "0102\r");
    QTest::newRow("command 12, other address") << QByteArray("\x05"
                                                             "011213\r")
                                               << QByteArray("\x15"
                                                             "0101\r");
}

void TestSimulatedPlc::whatCannotBeDoneIsRefused()
{
    QFETCH(QByteArray, frame);
    SimulatedPlc plc(sampleTags(), quietConfig(), 1);
    QTEST(ask(&plc, frame), "reply");
    QCOMPARE(plc.counters().refusals, 1);
    QCOMPARE(plc.counters().reads + plc.counters().writes + plc.counters().commands, 0);
}

void TestSimulatedPlc::aStationThatIsNotHereSaysNothing()
{
    SimulatedPlc plc(sampleTags(), quietConfig(), 1);
    QCOMPARE(ask(&plc, "\x05"
                       "030528\r"),
             QByteArray());
    QCOMPARE(ask(&plc, "\x05"
                       "0G0528\r"),
             QByteArray());
    QCOMPARE(ask(&plc, "\x05\r"), QByteArray());
    QCOMPARE(plc.counters().notAddressed, 3);
    QCOMPARE(plc.counters().exchanges, 3);
}

void TestSimulatedPlc::aStationThatIsOffSaysNothingUntilItIsOn()
{
    SimulatedPlc plc(sampleTags(), quietConfig(), 1);
    plc.setStationOff(2, true);
    QCOMPARE(ask(&plc, "\x05"
                       "0203411234\r"),
             QByteArray());
    QCOMPARE(plc.memory().value(2, Area::D, QStringLiteral("3.4.0")), std::optional<int>(0));
    QCOMPARE(ask(&plc, "\x05"
                       "010528\r")
                 .size(),
             8);
    plc.setStationOff(2, false);
    QCOMPARE(ask(&plc, "\x05"
                       "0203411234\r"),
             QByteArray("\x06"
                        "0203\r"));
    QCOMPARE(plc.counters().unanswered, 1);
}

void TestSimulatedPlc::theReplyBeginsAfterTheTurnaround()
{
    SimulatedPlc plc(sampleTags(), quietConfig(), 1);
    const PlcReaction reaction = plc.receive("\x05"
                                             "010528\r",
                                             1000000);
    QCOMPARE(reaction.transmissions.size(), 1);
    QCOMPARE(reaction.transmissions[0].startNs, 1000000 + TURNAROUND_NS);
    QCOMPARE(reaction.lineBreakNs, 0);
}

void TestSimulatedPlc::twoRequestsAreAnsweredOneAfterTheOther()
{
    PlcConfig config = quietConfig();
    config.turnaroundNs = 0;
    SimulatedPlc plc(sampleTags(), config, 1);
    const PlcReaction reaction = plc.receive("\x05"
                                             "010918\r"
                                             "\x05"
                                             "010528\r",
                                             1000000);
    QCOMPARE(reaction.transmissions.size(), 2);
    QCOMPARE(reaction.transmissions[0].startNs, 1000000 - 8 * BYTE_NS);
    QCOMPARE(reaction.transmissions[1].startNs, 1000000 - 8 * BYTE_NS + 144 * BYTE_NS);
}

void TestSimulatedPlc::aFrameMayArriveInPieces()
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

void TestSimulatedPlc::anOpenedLineHasForgottenTheOldOne()
{
    SimulatedPlc plc(sampleTags(), quietConfig(), 1);
    ask(&plc,
        "\x05"
        "010528\r\x05"
        "0105",
        100);
    plc.lineOpened();
    QCOMPARE(ask(&plc, "28\r", 200), QByteArray());
    const PlcReaction reaction = plc.receive("\x05"
                                             "010528\r",
                                             300);
    QCOMPARE(reaction.transmissions[0].startNs, 300 + TURNAROUND_NS);
}

void TestSimulatedPlc::theLatestExchangeIsKnown()
{
    SimulatedPlc plc(sampleTags(), quietConfig(), 1);
    ask(&plc, "\x05"
              "010528\r");
    ask(&plc, "\x05"
              "0203411234\r");
    QCOMPARE(plc.lastExchange().number, 2);
    QCOMPARE(plc.lastExchange().station, 2);
    QCOMPARE(plc.lastExchange().kind, kvt::PlcRequest::Kind::Write);
    QVERIFY(plc.lastExchange().faults.isEmpty());
}

void TestSimulatedPlc::everyExchangeIsLogged()
{
    QByteArrayList log;
    PlcConfig config = quietConfig();
    config.log = [&log](const kvt::Exchange &exchange) {
        log.append(QByteArray::number(exchange.number) + ' ' + exchange.request + exchange.reply);
    };
    SimulatedPlc plc(sampleTags(), config, 1);
    ask(&plc, "\x05"
              "010529\r");
    ask(&plc, "\x05"
              "030528\r");
    QCOMPARE(log, (QByteArrayList{"1 \x05"
                                  "010529\r\x15"
                                  "0101\r",
                                  "2 \x05"
                                  "030528\r"}));
}

QTEST_GUILESS_MAIN(TestSimulatedPlc)
#include "tst_simulated_plc.moc"
