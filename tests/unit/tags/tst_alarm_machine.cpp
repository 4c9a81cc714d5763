// The life of an alarm: a row of the table is what happens and what is told after each step.
//
// v5 the value is 5, b it is bad, a somebody acknowledges, s it is shelved, s9 for nine seconds,
// u it is unshelved, 3s so much time passes. Behind each stands what is told: state, level, and *
// if nobody has acknowledged; = if nothing is told.
#include "tags/alarm_machine.h"

#include <QtTest>

using namespace kvt;

namespace
{

constexpr qint64 SECOND_ns = 1000000000;

/// Limits -20, -10, 10 and 20.
AlarmRule limits(double hysteresis = 0, int onDelay_s = 0, int offDelay_s = 0)
{
    AlarmRule rule;
    rule.lolo = -20;
    rule.lo = -10;
    rule.hi = 10;
    rule.hihi = 20;
    rule.hysteresis = hysteresis;
    rule.onDelay_ns = onDelay_s * SECOND_ns;
    rule.offDelay_ns = offDelay_s * SECOND_ns;
    return rule;
}

QString shown(const AlarmStatus &status)
{
    QString text = alarmStateName(status.state);
    if (status.level != AlarmLevel::None)
        text += QLatin1Char(' ') + alarmLevelName(status.level);
    return status.acknowledged ? text : text + QLatin1Char('*');
}

/// An alarm with its clock.
class Bench
{
public:
    explicit Bench(const AlarmRule &rule) : machine_(rule) {}

    /// Returns what is told.
    QString step(const QString &what)
    {
        const AlarmStatus before = machine_.status();
        const bool told = happens(what);
        if (told && machine_.status() == before)
            return QStringLiteral("told without a change");
        return told ? shown(machine_.status()) : QStringLiteral("=");
    }

    AlarmMachine machine_;
    qint64 now_ns_ = 100 * SECOND_ns;

private:
    bool happens(const QString &what)
    {
        const QString rest = what.mid(1);
        if (what.startsWith(QLatin1Char('v')))
            return machine_.update({true, rest.toDouble(), rest.toULongLong()}, now_ns_);
        if (what == QLatin1String("b"))
            return machine_.update({false, 0, 0}, now_ns_);
        if (what == QLatin1String("a"))
            return machine_.acknowledge();
        if (what == QLatin1String("u"))
            return machine_.unshelve();
        if (what.startsWith(QLatin1Char('s')))
            return machine_.shelve(rest.isEmpty() ? AlarmMachine::NO_DEADLINE
                                                  : now_ns_ + rest.toInt() * SECOND_ns);
        now_ns_ += what.leftRef(what.size() - 1).toInt() * SECOND_ns;
        return machine_.passed(now_ns_);
    }
};

struct Row {
    const char *name;
    AlarmRule rule;
    const char *script; ///< steps and what is told, parted by commas
};

AlarmRule bitRule()
{
    AlarmRule rule;
    rule.bits = AlarmBits{4, 4};
    return rule;
}

AlarmRule highOnly()
{
    AlarmRule rule;
    rule.hi = 10;
    return rule;
}

} // namespace

Q_DECLARE_METATYPE(kvt::AlarmRule)

class TestAlarmMachine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachStepIsToldOnce_data();
    void eachStepIsToldOnce();
    void noValueIsNoAlarm();
    void theDeadlineIsThatOfTheNextChange();
    void aNumberThatIsNoneIsNotGood();
};

void TestAlarmMachine::eachStepIsToldOnce_data()
{
    QTest::addColumn<AlarmRule>("rule");
    QTest::addColumn<QString>("script");
    const Row rows[] = {
        // Normal
        {"normal: the first good value is no news", limits(), "v0:=,v1:=,v10:=,v-10:="},
        {"normal: bad and good again", limits(), "v0:=,b:suppressed,b:=,v0:normal"},
        {"normal: nothing to acknowledge", limits(), "v0:=,a:=,v11:unacknowledged hi*"},
        {"normal: shelved and taken back", limits(), "v0:=,s:shelved,s:=,u:normal,u:="},
        // Unacknowledged
        {"unacknowledged: stays", limits(), "v11:unacknowledged hi*,v12:=,v15:="},
        {"unacknowledged: acknowledged", limits(), "v11:unacknowledged hi*,a:acknowledged hi,a:="},
        {"unacknowledged: back", limits(), "v11:unacknowledged hi*,v9:returned*"},
        {"unacknowledged: worse and better", limits(),
         "v11:unacknowledged hi*,v21:unacknowledged hihi*,v11:unacknowledged hi*"},
        {"unacknowledged: to the other side", limits(),
         "v11:unacknowledged hi*,v-11:unacknowledged lo*,v-21:unacknowledged lolo*"},
        {"unacknowledged: bad neither clears nor raises", limits(),
         "v11:unacknowledged hi*,b:suppressed hi*,b:=,v11:unacknowledged hi*"},
        {"unacknowledged: back while it was bad", limits(),
         "v11:unacknowledged hi*,b:suppressed hi*,v0:returned*"},
        {"unacknowledged: shelved and taken back", limits(),
         "v11:unacknowledged hi*,s:shelved hi*,u:unacknowledged hi*"},
        // Acknowledged
        {"acknowledged: back", limits(), "v11:unacknowledged hi*,a:acknowledged hi,v0:normal"},
        {"acknowledged: worse needs a person anew", limits(),
         "v11:unacknowledged hi*,a:acknowledged hi,v21:unacknowledged hihi*,a:acknowledged hihi"},
        {"acknowledged: better does not", limits(),
         "v21:unacknowledged hihi*,a:acknowledged hihi,v11:acknowledged hi,v0:normal"},
        {"acknowledged: the other side needs a person anew", limits(),
         "v-21:unacknowledged lolo*,a:acknowledged lolo,v11:unacknowledged hi*"},
        {"acknowledged: bad and good again", limits(),
         "v11:unacknowledged hi*,a:acknowledged hi,b:suppressed hi,v11:acknowledged hi"},
        {"acknowledged: back while it was bad", limits(),
         "v11:unacknowledged hi*,a:acknowledged hi,b:suppressed hi,v0:normal"},
        {"acknowledged: shelved and taken back", limits(),
         "v11:unacknowledged hi*,a:acknowledged hi,s:shelved hi,u:acknowledged hi"},
        // Returned
        {"returned: acknowledged", limits(), "v11:unacknowledged hi*,v0:returned*,a:normal"},
        {"returned: again", limits(),
         "v11:unacknowledged hi*,v0:returned*,v11:unacknowledged hi*,a:acknowledged hi"},
        {"returned: bad and good again", limits(),
         "v11:unacknowledged hi*,v0:returned*,b:suppressed*,v0:returned*"},
        {"returned: shelved and taken back", limits(),
         "v11:unacknowledged hi*,v0:returned*,s:shelved*,u:returned*"},
        // Suppressed
        {"suppressed: acknowledged meanwhile", limits(),
         "v11:unacknowledged hi*,b:suppressed hi*,a:suppressed hi,v11:acknowledged hi"},
        {"suppressed: returned and acknowledged meanwhile", limits(),
         "v11:unacknowledged hi*,v0:returned*,b:suppressed*,a:suppressed,v0:normal"},
        {"suppressed: shelved on top", limits(), "v0:=,b:suppressed,s:shelved,v0:=,u:normal"},
        {"suppressed: from the first", limits(), "b:=,b:=,v11:unacknowledged hi*"},
        // Shelved
        {"shelved: the alarm comes meanwhile", limits(),
         "v0:=,s:shelved,v11:shelved hi*,u:unacknowledged hi*"},
        {"shelved: it comes and goes meanwhile", limits(),
         "v0:=,s:shelved,v11:shelved hi*,v0:shelved*,u:returned*"},
        {"shelved: acknowledged meanwhile", limits(),
         "v11:unacknowledged hi*,s:shelved hi*,a:shelved hi,u:acknowledged hi"},
        {"shelved: bad meanwhile", limits(), "v0:=,s:shelved,b:=,u:suppressed,v0:normal"},
        {"shelved for a time", limits(),
         "v11:unacknowledged hi*,s9:shelved hi*,8s:=,"
         "1s:unacknowledged hi*"},
        {"shelved anew for longer", limits(), "v0:=,s9:shelved,5s:=,s9:=,8s:=,1s:normal"},
        // Hysteresis
        {"hysteresis", limits(2),
         "v10:=,v10.1:unacknowledged hi*,v9:=,v8.1:=,v8:returned*,v9:=,v10.1:unacknowledged hi*"},
        {"hysteresis of the low side", limits(2),
         "v-10:=,v-11:unacknowledged lo*,v-9:=,v-8.1:=,v-8:returned*"},
        {"hysteresis of the outer limit", limits(2),
         "v21:unacknowledged hihi*,v19:=,v18:unacknowledged hi*,v8:returned*"},
        {"at a limit it is none", limits(), "v10:=,v11:unacknowledged hi*,v10:returned*"},
        // Delays
        {"on-delay", limits(0, 3), "v11:=,2s:=,v12:=,1s:unacknowledged hi*"},
        {"on-delay, back in time", limits(0, 3), "v11:=,2s:=,v9:=,5s:=,v11:=,2s:=,v9:="},
        {"on-delay, a value at its end", limits(0, 3), "v11:=,2s:=,v11:=,1s:unacknowledged hi*"},
        {"on-delay, worse meanwhile", limits(0, 3),
         "v11:=,2s:=,v21:=,1s:unacknowledged hi*,1s:=,1s:unacknowledged hihi*"},
        {"on-delay, bad starts it anew", limits(0, 3),
         "v11:=,2s:=,b:suppressed,5s:=,v11:normal,2s:=,1s:unacknowledged hi*"},
        {"off-delay", limits(0, 0, 3), "v11:unacknowledged hi*,v9:=,2s:=,1s:returned*"},
        {"off-delay, out again in time", limits(0, 0, 3),
         "v11:unacknowledged hi*,v9:=,2s:=,v11:=,5s:=,v9:=,2s:=,1s:returned*"},
        {"off-delay, bad starts it anew", limits(0, 0, 3),
         "v11:unacknowledged hi*,v9:=,2s:=,b:suppressed hi*,5s:=,v9:unacknowledged hi*,"
         "2s:=,1s:returned*"},
        {"both, with hysteresis", limits(2, 1, 3),
         "v11:=,1s:unacknowledged hi*,v9:=,5s:=,v8:=,3s:returned*"},
        // Bits
        {"a bit", bitRule(), "v0:=,v3:=,v4:unacknowledged set*,v7:=,a:acknowledged set,v3:normal"},
        {"a bit, bad", bitRule(), "v4:unacknowledged set*,b:suppressed set*,v0:returned*"},
        // Limits that are not given
        {"one limit", highOnly(), "v-1000:=,v1000:unacknowledged hi*,v10:returned*"},
    };
    for (const Row &row : rows)
        QTest::newRow(row.name) << row.rule << QString(QLatin1String(row.script));
}

void TestAlarmMachine::eachStepIsToldOnce()
{
    QFETCH(AlarmRule, rule);
    QFETCH(QString, script);
    Bench bench(rule);
    int number = 0;
    const QStringList steps = script.split(QLatin1Char(','));
    for (const QString &step : steps) {
        const int colon = step.indexOf(QLatin1Char(':'));
        const QString told = bench.step(step.left(colon));
        const QString expected = step.mid(colon + 1);
        QVERIFY2(told == expected,
                 qPrintable(QStringLiteral("step %1, %2: %3").arg(++number).arg(step, told)));
    }
}

void TestAlarmMachine::noValueIsNoAlarm()
{
    const AlarmMachine machine(limits());
    QCOMPARE(machine.status().state, AlarmState::Suppressed);
    QCOMPARE(machine.deadline_ns(), AlarmMachine::NO_DEADLINE);
}

void TestAlarmMachine::theDeadlineIsThatOfTheNextChange()
{
    Bench bench(limits(0, 3, 5));
    bench.step(QStringLiteral("v11"));
    QCOMPARE(bench.machine_.deadline_ns(), bench.now_ns_ + 3 * SECOND_ns);
    bench.step(QStringLiteral("2s"));
    bench.step(QStringLiteral("v21"));
    QCOMPARE(bench.machine_.deadline_ns(), bench.now_ns_ + 1 * SECOND_ns);
    bench.step(QStringLiteral("1s"));
    QCOMPARE(bench.machine_.deadline_ns(), bench.now_ns_ + 2 * SECOND_ns);
    bench.step(QStringLiteral("2s"));
    QCOMPARE(bench.machine_.deadline_ns(), AlarmMachine::NO_DEADLINE);
    bench.step(QStringLiteral("s9"));
    QCOMPARE(bench.machine_.deadline_ns(), bench.now_ns_ + 9 * SECOND_ns);
    bench.step(QStringLiteral("v0"));
    QCOMPARE(bench.machine_.deadline_ns(), bench.now_ns_ + 5 * SECOND_ns);
    bench.step(QStringLiteral("b"));
    QCOMPARE(bench.machine_.deadline_ns(), bench.now_ns_ + 9 * SECOND_ns);
    bench.step(QStringLiteral("u"));
    QCOMPARE(bench.machine_.deadline_ns(), AlarmMachine::NO_DEADLINE);
}

void TestAlarmMachine::aNumberThatIsNoneIsNotGood()
{
    AlarmMachine machine(limits());
    QVERIFY(machine.update({true, 11, 0}, 1));
    QVERIFY(machine.update({true, std::numeric_limits<double>::quiet_NaN(), 0}, 2));
    QCOMPARE(shown(machine.status()), QString("suppressed hi*"));
    QVERIFY(machine.update({true, std::numeric_limits<double>::infinity(), 0}, 3));
    QCOMPARE(shown(machine.status()), QString("unacknowledged hihi*"));
}

QTEST_APPLESS_MAIN(TestAlarmMachine)
#include "tst_alarm_machine.moc"
