// Fault rules as text.
#include "simulator/fault_text.h"

#include "tests/support/damage.h"

#include <QtTest>

using namespace kvt;
using Trigger = FaultRule::Trigger;

namespace
{

/// Reads the one rule of a text.
FaultRule ruleOf(const char *text)
{
    const FaultTextResult result = parseFaults(QLatin1String(text));
    return result.rules.size() == 1 ? result.rules.first() : FaultRule();
}

/// Says which of a rule's fields is out of its range.
QString faultOf(const FaultRule &rule)
{
    if (rule.station < -1 || rule.station > 255)
        return QStringLiteral("station %1").arg(rule.station);
    if (rule.duration_ns < 0 || rule.jitter_ns < 0)
        return QStringLiteral("a negative time");
    const bool due = rule.trigger == Trigger::Chance  ? rule.chance <= CERTAIN
                     : rule.trigger == Trigger::Every ? rule.every >= 1
                                                      : rule.first >= 1 && rule.last >= rule.first;
    return due ? QString() : QStringLiteral("a rule that is never due");
}

/// Says what is wrong with the reading of a text that may be broken.
QString faultOf(const QByteArray &text)
{
    const FaultTextResult result = parseFaults(QString::fromLatin1(text.constData(), text.size()));
    const bool blank = text.trimmed().isEmpty();
    if (!result.error.isEmpty())
        return result.rules.isEmpty() && result.error.startsWith(QLatin1String("fault \""))
                   ? QString()
                   : QStringLiteral("rules beside an error, or one that quotes nothing");
    if (result.rules.size() != (blank ? 0 : 1 + text.count(',')))
        return QStringLiteral("%1 rules").arg(result.rules.size());
    for (const FaultRule &rule : result.rules)
        if (!faultOf(rule).isEmpty())
            return faultOf(rule);
    return QString();
}

} // namespace

class TestFaultText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anEmptyTextHasNoRules()
    {
        QCOMPARE(parseFaults(QString()).rules.size(), 0);
        QCOMPARE(parseFaults(QStringLiteral("  ")).error, QString());
    }

    void rulesStandInTheirOrder()
    {
        const FaultTextResult result = parseFaults(QStringLiteral("late=1%:80ms, noreply=0.5%@3"));
        QCOMPARE(result.error, QString());
        QCOMPARE(result.rules.size(), 2);
        QCOMPARE(result.rules[0].kind, FaultKind::LateReply);
        QCOMPARE(result.rules[0].chance, 10000000U);
        QCOMPARE(result.rules[0].duration_ns, 80000000);
        QCOMPARE(result.rules[0].station, -1);
        QCOMPARE(result.rules[1].kind, FaultKind::NoReply);
        QCOMPARE(result.rules[1].chance, 5000000U);
        QCOMPARE(result.rules[1].station, 3);
    }

    void everyNameIsKnown()
    {
        for (int i = 0; i < FAULT_KINDS; ++i) {
            const auto kind = static_cast<FaultKind>(i);
            const bool delay = kind == FaultKind::Delay || kind == FaultKind::LateReply;
            const QByteArray text = QByteArray(faultName(kind)) + "=1%" + (delay ? ":1ms" : "");
            const FaultTextResult result =
                parseFaults(QString::fromLatin1(text.constData(), text.size()));
            QCOMPARE(result.error, QString());
            QCOMPARE(result.rules[0].kind, kind);
        }
    }

    void chancesAreExact_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<quint32>("chance");
        QTest::newRow("0%") << "echo=0%" << 0U;
        QTest::newRow("100%") << "echo=100%" << 1000000000U;
        QTest::newRow("0.0000001%") << "echo=0.0000001%" << 1U;
        QTest::newRow("12.5%") << "echo=12.5%" << 125000000U;
        QTest::newRow("99.9999999%") << "echo=99.9999999%" << 999999999U;
    }

    void chancesAreExact()
    {
        QFETCH(QString, text);
        const FaultTextResult result = parseFaults(text);
        QCOMPARE(result.error, QString());
        QCOMPARE(result.rules[0].trigger, Trigger::Chance);
        QTEST(result.rules[0].chance, "chance");
    }

    void schedulesAreRead()
    {
        QCOMPARE(ruleOf("flip=every100").trigger, Trigger::Every);
        QCOMPARE(ruleOf("flip=every100").every, 100);
        QCOMPARE(ruleOf("flip=5-20").trigger, Trigger::Range);
        QCOMPARE(ruleOf("flip=5-20").first, 5);
        QCOMPARE(ruleOf("flip=5-20").last, 20);
        QCOMPARE(ruleOf("flip=7").first, 7);
        QCOMPARE(ruleOf("flip=7").last, 7);
        QCOMPARE(ruleOf("flip=7@0").station, 0);
        QCOMPARE(ruleOf("flip=7@255").station, 255);
    }

    void timesAreRead()
    {
        QCOMPARE(ruleOf("delay=100%:300us").duration_ns, 300000);
        QCOMPARE(ruleOf("delay=100%:5ms~2ms").duration_ns, 5000000);
        QCOMPARE(ruleOf("delay=100%:5ms~2ms").jitter_ns, 2000000);
        QCOMPARE(ruleOf("silence=3:2s").duration_ns, 2000000000);
        QCOMPARE(ruleOf("silence=3").duration_ns, 1000000000);
        QCOMPARE(ruleOf("break=3").duration_ns, 1000000000);
        QCOMPARE(ruleOf("late=3:80ms~10ms@4").station, 4);
    }

    void badRulesAreNamed_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("error");
        const QString form = "is not of the form name=when[:duration[~jitter]][@station]";
        const QString when = "does not say when (0.5%, every100, 7 or 5-20)";
        const QString station = "names no station from 0 to 255";
        const QString duration = "has a duration that is none (80ms, 2s, 300us)";
        QTest::newRow("name alone") << "late"
                                    << "fault \"late\" " + form;
        QTest::newRow("nothing behind a comma") << "echo=1%,"
                                                << "fault \"\" " + form;
        QTest::newRow("two durations") << "late=1%:1ms:2ms"
                                       << "fault \"late=1%:1ms:2ms\" " + form;
        QTest::newRow("no station behind @") << "echo=1%@"
                                             << "fault \"echo=1%@\" " + form;
        QTest::newRow("unknown name")
            << "echo=1%,lat=1%:1ms"
            << "fault \"lat=1%:1ms\" names no fault that is known (noreply, "
               "refuse, truncate, extra, badend, flip, foreign, duplicate, "
               "echo, delay, late, silence, break)";
        QTest::newRow("no number") << "echo=often"
                                   << "fault \"echo=often\" " + when;
        QTest::newRow("more than all") << "echo=101%"
                                       << "fault \"echo=101%\" " + when;
        QTest::newRow("eight decimals") << "echo=0.00000001%"
                                        << "fault \"echo=0.00000001%\" " + when;
        QTest::newRow("every 0") << "echo=every0"
                                 << "fault \"echo=every0\" " + when;
        QTest::newRow("every nothing") << "echo=every"
                                       << "fault \"echo=every\" " + when;
        QTest::newRow("from 0") << "echo=0-4"
                                << "fault \"echo=0-4\" " + when;
        QTest::newRow("backwards") << "echo=5-4"
                                   << "fault \"echo=5-4\" " + when;
        QTest::newRow("three ends") << "echo=5-6-7"
                                    << "fault \"echo=5-6-7\" " + when;
        QTest::newRow("station 256") << "echo=1%@256"
                                     << "fault \"echo=1%@256\" " + station;
        QTest::newRow("station x") << "echo=1%@x"
                                   << "fault \"echo=1%@x\" " + station;
        QTest::newRow("late without a time")
            << "late=1%"
            << "fault \"late=1%\" needs a duration, for example 80ms";
        QTest::newRow("echo with a time") << "echo=1%:5ms"
                                          << "fault \"echo=1%:5ms\" takes no duration";
        QTest::newRow("silence with a jitter") << "silence=1%:5ms~1ms"
                                               << "fault \"silence=1%:5ms~1ms\" takes no jitter";
        QTest::newRow("time without a unit") << "late=1%:80"
                                             << "fault \"late=1%:80\" " + duration;
        QTest::newRow("negative time") << "late=1%:-8ms"
                                       << "fault \"late=1%:-8ms\" " + duration;
        QTest::newRow("bad jitter") << "late=1%:8ms~x"
                                    << "fault \"late=1%:8ms~x\" " + duration;
        QTest::newRow("huge jitter")
            << "late=1%:8ms~3601s"
            << "fault \"late=1%:8ms~3601s\" has a jitter of more than an hour";
    }

    void badRulesAreNamed()
    {
        QFETCH(QString, text);
        const FaultTextResult result = parseFaults(text);
        QCOMPARE(result.rules.size(), 0);
        QTEST(result.error, "error");
    }

    void aDamagedTextIsRefusedOrHasItsRules_data()
    {
        QTest::addColumn<QByteArray>("text");
        for (const char *text : {"late=12.5%:80ms~10ms@25, noreply=0.5%@3", "flip=every100,echo=7",
                                 "silence=5-20:2s,delay=100%:300us"})
            QTest::newRow(text) << QByteArray(text);
    }

    void aDamagedTextIsRefusedOrHasItsRules()
    {
        QFETCH(QByteArray, text);
        QCOMPARE(faultAtDamage(text, [](const QByteArray &damaged) { return faultOf(damaged); }),
                 QString());
    }
};

QTEST_GUILESS_MAIN(TestFaultText)
#include "tst_fault_text.moc"
