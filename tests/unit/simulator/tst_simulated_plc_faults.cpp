// What the simulated PLC does to its answers.
#include "simulator/simulated_plc.h"

#include "simulator/fault_text.h"
#include "tests/unit/simulator/sample_tags.h"

#include <QtTest>

using kvt::Area;
using kvt::FaultKind;
using kvt::PlcReaction;
using kvt::SimulatedPlc;

namespace
{

const qint64 MS = 1000000;
const QByteArray READ_1 = QByteArray("\x05"
                                     "010528\r");
const QByteArray READ_2 = QByteArray("\x05"
                                     "020340\r");
const QByteArray REPLY_1 = QByteArray("\x06"
                                      "0112AB\r");
const QByteArray WRITE_2 = QByteArray("\x05"
                                      "0203411234\r");

/// A PLC whose word 5.2.1 at station 1 is 12AB and 3.4.0 at station 2 is 3456.
SimulatedPlc plcWith(const char *faults, quint64 seed = 1)
{
    kvt::PlcConfig config;
    config.byteTimeNs = 1000;
    config.faults = kvt::parseFaults(QLatin1String(faults)).rules;
    SimulatedPlc plc(sampleTags(), config, seed);
    plc.memory().setValue(1, Area::D, QStringLiteral("5.2.1"), 0x12AB);
    plc.memory().setValue(2, Area::D, QStringLiteral("3.4.0"), 0x3456);
    return plc;
}

QByteArray bytesOf(const PlcReaction &reaction)
{
    QByteArray bytes;
    for (const kvt::Transmission &sent : reaction.transmissions)
        bytes.append(sent.bytes);
    return bytes;
}

qint64 count(const SimulatedPlc &plc, FaultKind kind)
{
    return plc.counters().faults[static_cast<size_t>(kind)];
}

} // namespace

class TestSimulatedPlcFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aReplyThatIsLostWasStillCarriedOut();
    void anInjectedRefusalCarriesNothingOut();
    void aReplyCanBeDamaged_data();
    void aReplyCanBeDamaged();
    void anotherStationAnswersWithItsOwnValue();
    void anotherStationAnswersWithoutAValueOfItsOwn();
    void theEchoComesAheadOfTheReply();
    void aLateReplyComesLater();
    void aReplyWaitsForTheLateOneBeforeIt();
    void aLostReplyIsNotLate();
    void aSilentStationComesBack();
    void aLineBreakLosesTheRequest();
    void faultsAreSeenAndCounted();
    void runsWithOneSeedAreEqual();
};

void TestSimulatedPlcFaults::aReplyThatIsLostWasStillCarriedOut()
{
    SimulatedPlc plc = plcWith("noreply=1");
    QCOMPARE(bytesOf(plc.receive(WRITE_2, 0)), QByteArray());
    QCOMPARE(plc.memory().value(2, Area::D, QStringLiteral("3.4.0")), std::optional<int>(0x1234));
    QCOMPARE(bytesOf(plc.receive(READ_1, 0)), REPLY_1);
}

void TestSimulatedPlcFaults::anInjectedRefusalCarriesNothingOut()
{
    SimulatedPlc plc = plcWith("refuse=1");
    QCOMPARE(bytesOf(plc.receive(WRITE_2, 0)), QByteArray("\x15"
                                                          "0203\r"));
    QCOMPARE(plc.memory().value(2, Area::D, QStringLiteral("3.4.0")), std::optional<int>(0x3456));
    QCOMPARE(plc.counters().refusals, 0);
    QCOMPARE(count(plc, FaultKind::Refusal), 1);
}

void TestSimulatedPlcFaults::aReplyCanBeDamaged_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<int>("shortest");
    QTest::addColumn<int>("longest");
    QTest::newRow("truncate") << QByteArray("truncate=1") << 1 << 7;
    QTest::newRow("extra") << QByteArray("extra=1") << 9 << 12;
    QTest::newRow("badend") << QByteArray("badend=1") << 8 << 8;
    QTest::newRow("flip") << QByteArray("flip=1") << 8 << 8;
    QTest::newRow("duplicate") << QByteArray("duplicate=1") << 16 << 16;
}

void TestSimulatedPlcFaults::aReplyCanBeDamaged()
{
    QFETCH(QByteArray, fault);
    QFETCH(int, shortest);
    QFETCH(int, longest);
    SimulatedPlc plc = plcWith(fault.constData());
    const QByteArray reply = bytesOf(plc.receive(READ_1, 0));
    QVERIFY(reply != REPLY_1);
    QVERIFY(reply.size() >= shortest && reply.size() <= longest);
    QCOMPARE(bytesOf(plc.receive(READ_1, MS)), REPLY_1);
}

void TestSimulatedPlcFaults::anotherStationAnswersWithItsOwnValue()
{
    SimulatedPlc plc = plcWith("foreign=1");
    QCOMPARE(bytesOf(plc.receive(READ_1, 0)), QByteArray("\x06"
                                                         "023456\r"));
}

void TestSimulatedPlcFaults::anotherStationAnswersWithoutAValueOfItsOwn()
{
    SimulatedPlc plc = plcWith("foreign=1-2");
    plc.memory().setValue(1, Area::X, QStringLiteral("1.2.0"), 0x7F);
    const QByteArray reply = bytesOf(plc.receive("\x05"
                                                 "010120\r",
                                                 0));
    QCOMPARE(reply.size(), 6);
    QCOMPARE(reply.mid(3), QByteArray("7F\r"));
    QVERIFY(reply.mid(1, 2) != "01");
    const QByteArray acknowledgement = bytesOf(plc.receive(WRITE_2, MS));
    QCOMPARE(acknowledgement.mid(3), QByteArray("03\r"));
    QVERIFY(acknowledgement.mid(1, 2) != "02");
}

void TestSimulatedPlcFaults::theEchoComesAheadOfTheReply()
{
    SimulatedPlc plc = plcWith("echo=1");
    const PlcReaction reaction = plc.receive(READ_1, MS);
    QCOMPARE(reaction.transmissions.size(), 2);
    QCOMPARE(reaction.transmissions[0].bytes, READ_1);
    QCOMPARE(reaction.transmissions[0].startNs, MS);
    QCOMPARE(reaction.transmissions[1].bytes, REPLY_1);
    QCOMPARE(reaction.transmissions[1].startNs, MS + 8000);
}

void TestSimulatedPlcFaults::aLateReplyComesLater()
{
    SimulatedPlc plc = plcWith("delay=1:5ms,late=1:80ms");
    const PlcReaction reaction = plc.receive(READ_1, MS);
    QCOMPARE(reaction.transmissions[0].startNs, 86 * MS);
    QCOMPARE(reaction.transmissions[0].bytes, REPLY_1);
    QCOMPARE(count(plc, FaultKind::Delay), 1);
    QCOMPARE(count(plc, FaultKind::LateReply), 1);
}

void TestSimulatedPlcFaults::aReplyWaitsForTheLateOneBeforeIt()
{
    SimulatedPlc plc = plcWith("late=1:80ms");
    plc.receive(READ_1, 0);
    const PlcReaction reaction = plc.receive(READ_2, 40 * MS);
    QCOMPARE(reaction.transmissions[0].startNs, 80 * MS + 8000);
}

void TestSimulatedPlcFaults::aLostReplyIsNotLate()
{
    SimulatedPlc plc = plcWith("late=1:80ms,noreply=1");
    QCOMPARE(bytesOf(plc.receive(READ_1, 0)), QByteArray());
    QCOMPARE(count(plc, FaultKind::LateReply), 0);
    QCOMPARE(count(plc, FaultKind::NoReply), 1);
    QCOMPARE(plc.lastExchange().faults, QVector<FaultKind>{FaultKind::NoReply});
}

void TestSimulatedPlcFaults::aSilentStationComesBack()
{
    SimulatedPlc plc = plcWith("silence=1:200ms,noreply=2");
    QCOMPARE(bytesOf(plc.receive(READ_1, 10 * MS)), QByteArray());
    QCOMPARE(bytesOf(plc.receive(READ_1, 209 * MS)), QByteArray());
    QCOMPARE(bytesOf(plc.receive(READ_2, 209 * MS)), QByteArray("\x06"
                                                                "023456\r"));
    QCOMPARE(bytesOf(plc.receive(READ_1, 210 * MS)), REPLY_1);
    QCOMPARE(plc.counters().unanswered, 2);
    QCOMPARE(count(plc, FaultKind::Silence), 1);
    QCOMPARE(count(plc, FaultKind::NoReply), 0);
}

void TestSimulatedPlcFaults::aLineBreakLosesTheRequest()
{
    SimulatedPlc plc = plcWith("break=1:300ms");
    const PlcReaction reaction = plc.receive(WRITE_2, 0);
    QCOMPARE(reaction.lineBreakNs, 300 * MS);
    QCOMPARE(reaction.transmissions.size(), 0);
    QCOMPARE(plc.memory().value(2, Area::D, QStringLiteral("3.4.0")), std::optional<int>(0x3456));
}

void TestSimulatedPlcFaults::faultsAreSeenAndCounted()
{
    SimulatedPlc plc = plcWith("duplicate=every2");
    for (int i = 1; i <= 5; ++i) {
        plc.receive(READ_1, i * MS);
        QCOMPARE(plc.lastExchange().number, i);
        QCOMPARE(plc.lastExchange().faults.contains(FaultKind::Duplicate), i % 2 == 0);
    }
    QCOMPARE(count(plc, FaultKind::Duplicate), 2);
    QCOMPARE(plc.counters().reads, 5);
}

void TestSimulatedPlcFaults::runsWithOneSeedAreEqual()
{
    const char faults[] = "delay=100%:1ms~1ms,noreply=5%,truncate=5%,extra=5%,badend=5%,flip=5%,"
                          "foreign=5%,duplicate=5%,echo=5%,refuse=5%,silence=1%:3ms,late=5%:20ms";
    SimulatedPlc one = plcWith(faults, 42);
    SimulatedPlc same = plcWith(faults, 42);
    SimulatedPlc other = plcWith(faults, 43);
    bool differs = false;
    for (int i = 1; i <= 500; ++i) {
        const PlcReaction reaction = one.receive(READ_1, i * 10 * MS);
        const PlcReaction repeated = same.receive(READ_1, i * 10 * MS);
        QCOMPARE(bytesOf(repeated), bytesOf(reaction));
        for (int k = 0; k < reaction.transmissions.size(); ++k)
            QCOMPARE(repeated.transmissions[k].startNs, reaction.transmissions[k].startNs);
        differs = bytesOf(other.receive(READ_1, i * 10 * MS)) != bytesOf(reaction) || differs;
    }
    QVERIFY(differs);
}

QTEST_GUILESS_MAIN(TestSimulatedPlcFaults)
#include "tst_simulated_plc_faults.moc"
