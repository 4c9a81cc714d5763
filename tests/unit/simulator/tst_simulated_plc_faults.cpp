// What the simulated PLC does to its answers.
#include "simulator/simulated_plc.h"

#include "simulator/fault_text.h"
#include "tests/unit/simulator/sample_plc.h"

#include <QtTest>

using namespace kvt;

namespace
{

constexpr qint64 MS = 1000000;
const QByteArray READ_2 = request("020340");
const QByteArray WRITE_2 = request("0203411234");

/// A PLC whose word 5.2.1 at station 1 is 12AB and 3.4.0 at station 2 is 3456.
SimulatedPlc plcWith(const char *faults, quint64 seed = 1)
{
    PlcConfig config;
    config.byteTime_ns = 1000;
    config.faults = parseFaults(QLatin1String(faults)).rules;
    SimulatedPlc plc = samplePlc(config, seed);
    plc.memory().setValue(2, Area::D, QStringLiteral("3.4.0"), 0x3456);
    return plc;
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
    void aReplyThatIsLostWasStillCarriedOut()
    {
        SimulatedPlc plc = plcWith("noreply=1");
        QCOMPARE(bytesOf(plc.receive(WRITE_2, 0)), QByteArray());
        QCOMPARE(plc.memory().value(2, Area::D, QStringLiteral("3.4.0")),
                 std::optional<int>(0x1234));
        QCOMPARE(bytesOf(plc.receive(READ_1, 0)), REPLY_1);
    }

    void anInjectedRefusalCarriesNothingOut()
    {
        SimulatedPlc plc = plcWith("refuse=1");
        QCOMPARE(bytesOf(plc.receive(WRITE_2, 0)), refusal("02"));
        QCOMPARE(plc.memory().value(2, Area::D, QStringLiteral("3.4.0")),
                 std::optional<int>(0x3456));
        QCOMPARE(plc.counters().refusals, 0);
        QCOMPARE(count(plc, FaultKind::Refusal), 1);
    }

    void aReplyCanBeDamaged_data()
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

    void aReplyCanBeDamaged()
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

    void anotherStationAnswersWithItsOwnValue()
    {
        SimulatedPlc plc = plcWith("foreign=1");
        QCOMPARE(bytesOf(plc.receive(READ_1, 0)), reply("023456"));
    }

    void anotherStationAnswersWithoutAValueOfItsOwn()
    {
        SimulatedPlc plc = plcWith("foreign=1-2");
        plc.memory().setValue(1, Area::X, QStringLiteral("1.2.0"), 0x7F);
        const QByteArray reply = bytesOf(plc.receive(request("010120"), 0));
        QCOMPARE(reply.size(), 6);
        QCOMPARE(reply.mid(3), QByteArray("7F\r"));
        QVERIFY(reply.mid(1, 2) != "01");
        const QByteArray acknowledgement = bytesOf(plc.receive(WRITE_2, MS));
        QCOMPARE(acknowledgement.mid(3), QByteArray("03\r"));
        QVERIFY(acknowledgement.mid(1, 2) != "02");
    }

    void theEchoComesAheadOfTheReply()
    {
        SimulatedPlc plc = plcWith("echo=1");
        const PlcReaction reaction = plc.receive(READ_1, MS);
        QCOMPARE(reaction.transmissions.size(), 2);
        QCOMPARE(reaction.transmissions[0].bytes, READ_1);
        QCOMPARE(reaction.transmissions[0].start_ns, MS);
        QCOMPARE(reaction.transmissions[1].bytes, REPLY_1);
        QCOMPARE(reaction.transmissions[1].start_ns, MS + 8000);
    }

    void aLateReplyComesLater()
    {
        SimulatedPlc plc = plcWith("delay=1:5ms,late=1:80ms");
        const PlcReaction reaction = plc.receive(READ_1, MS);
        QCOMPARE(reaction.transmissions[0].start_ns, 86 * MS);
        QCOMPARE(reaction.transmissions[0].bytes, REPLY_1);
        QCOMPARE(count(plc, FaultKind::Delay), 1);
        QCOMPARE(count(plc, FaultKind::LateReply), 1);
    }

    void aReplyWaitsForTheLateOneBeforeIt()
    {
        SimulatedPlc plc = plcWith("late=1:80ms");
        plc.receive(READ_1, 0);
        const PlcReaction reaction = plc.receive(READ_2, 40 * MS);
        QCOMPARE(reaction.transmissions[0].start_ns, 80 * MS + 8000);
    }

    void aLostReplyIsNotLate()
    {
        SimulatedPlc plc = plcWith("late=1:80ms,noreply=1");
        QCOMPARE(bytesOf(plc.receive(READ_1, 0)), QByteArray());
        QCOMPARE(count(plc, FaultKind::LateReply), 0);
        QCOMPARE(count(plc, FaultKind::NoReply), 1);
        QCOMPARE(plc.lastExchange().faults, QVector<FaultKind>{FaultKind::NoReply});
    }

    void aSilentStationComesBack()
    {
        SimulatedPlc plc = plcWith("silence=1:200ms,noreply=2");
        QCOMPARE(bytesOf(plc.receive(READ_1, 10 * MS)), QByteArray());
        QCOMPARE(bytesOf(plc.receive(READ_1, 209 * MS)), QByteArray());
        QCOMPARE(bytesOf(plc.receive(READ_2, 209 * MS)), reply("023456"));
        QCOMPARE(bytesOf(plc.receive(READ_1, 210 * MS)), REPLY_1);
        QCOMPARE(plc.counters().unanswered, 2);
        QCOMPARE(count(plc, FaultKind::Silence), 1);
        QCOMPARE(count(plc, FaultKind::NoReply), 0);
    }

    void aLineBreakLosesTheRequest()
    {
        SimulatedPlc plc = plcWith("break=1:300ms");
        const PlcReaction reaction = plc.receive(WRITE_2, 0);
        QCOMPARE(reaction.lineBreak_ns, 300 * MS);
        QCOMPARE(reaction.transmissions.size(), 0);
        QCOMPARE(plc.memory().value(2, Area::D, QStringLiteral("3.4.0")),
                 std::optional<int>(0x3456));
    }

    void faultsAreSeenAndCounted()
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

    void runsWithOneSeedAreEqual()
    {
        const char faults[] =
            "delay=100%:1ms~1ms,noreply=5%,truncate=5%,extra=5%,badend=5%,flip=5%,"
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
                QCOMPARE(repeated.transmissions[k].start_ns, reaction.transmissions[k].start_ns);
            differs = bytesOf(other.receive(READ_1, i * 10 * MS)) != bytesOf(reaction) || differs;
        }
        QVERIFY(differs);
    }
};

QTEST_GUILESS_MAIN(TestSimulatedPlcFaults)
#include "tst_simulated_plc_faults.moc"
