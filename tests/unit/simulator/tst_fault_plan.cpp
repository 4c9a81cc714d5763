// Which faults happen when.
#include "simulator/fault_plan.h"

#include <QtTest>

using kvt::FaultDecision;
using kvt::FaultKind;
using kvt::FaultPlan;
using kvt::FaultRule;

namespace
{

FaultRule chance(FaultKind kind, quint32 outOfCertain)
{
    FaultRule rule;
    rule.kind = kind;
    rule.chance = outOfCertain;
    return rule;
}

FaultRule range(FaultKind kind, qint64 first, qint64 last)
{
    FaultRule rule;
    rule.kind = kind;
    rule.trigger = FaultRule::Trigger::Range;
    rule.first = first;
    rule.last = last;
    return rule;
}

/// Returns the exchanges from 1 to `count` at which a plan of one rule has its fault.
QVector<qint64> hits(const FaultRule &rule, qint64 count, int station = 1)
{
    FaultPlan plan({rule}, 1);
    QVector<qint64> result;
    for (qint64 exchange = 1; exchange <= count; ++exchange) {
        if (!plan.decide(exchange, station).kinds.isEmpty())
            result.append(exchange);
    }
    return result;
}

} // namespace

class TestFaultPlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyKindHasAName();
    void aRangeHoldsBothEnds();
    void everyNthExchangeIsHit();
    void aChanceIsMetAboutAsOften();
    void certainIsAlwaysAndNoneNever();
    void aRuleCanBeOfOneStation();
    void delaysAddUpAndGoWithAnotherFault();
    void ofOtherFaultsTheFirstRuleWins();
    void jitterStaysWithinItsBound();
    void equalSeedsGiveEqualFaults();
};

void TestFaultPlan::everyKindHasAName()
{
    QSet<QByteArray> names;
    for (int i = 0; i < kvt::FAULT_KINDS; ++i)
        names.insert(kvt::faultName(static_cast<FaultKind>(i)));
    QCOMPARE(names.size(), kvt::FAULT_KINDS);
    QCOMPARE(QByteArray(kvt::faultName(FaultKind::NoReply)), QByteArray("noreply"));
    QCOMPARE(QByteArray(kvt::faultName(FaultKind::LateReply)), QByteArray("late"));
    QCOMPARE(QByteArray(kvt::faultName(FaultKind::LineBreak)), QByteArray("break"));
}

void TestFaultPlan::aRangeHoldsBothEnds()
{
    QCOMPARE(hits(range(FaultKind::NoReply, 3, 5), 10), (QVector<qint64>{3, 4, 5}));
}

void TestFaultPlan::everyNthExchangeIsHit()
{
    FaultRule rule;
    rule.trigger = FaultRule::Trigger::Every;
    rule.every = 4;
    QCOMPARE(hits(rule, 12), (QVector<qint64>{4, 8, 12}));
}

void TestFaultPlan::aChanceIsMetAboutAsOften()
{
    const int count = hits(chance(FaultKind::NoReply, kvt::CERTAIN / 100), 100000).size();
    QVERIFY2(count > 900 && count < 1100, qPrintable(QString::number(count)));
}

void TestFaultPlan::certainIsAlwaysAndNoneNever()
{
    QCOMPARE(hits(chance(FaultKind::NoReply, kvt::CERTAIN), 1000).size(), 1000);
    QCOMPARE(hits(chance(FaultKind::NoReply, 0), 1000).size(), 0);
}

void TestFaultPlan::aRuleCanBeOfOneStation()
{
    FaultRule rule = range(FaultKind::NoReply, 1, 5);
    rule.station = 3;
    QCOMPARE(hits(rule, 5, 3).size(), 5);
    QCOMPARE(hits(rule, 5, 4).size(), 0);
}

void TestFaultPlan::delaysAddUpAndGoWithAnotherFault()
{
    FaultRule delay = range(FaultKind::Delay, 1, 2);
    delay.durationNs = 5;
    FaultRule late = range(FaultKind::LateReply, 2, 2);
    late.durationNs = 100;
    FaultPlan plan({range(FaultKind::Duplicate, 2, 2), delay, late}, 1);
    const FaultDecision first = plan.decide(1, 1);
    QCOMPARE(first.delayNs, 5);
    QCOMPARE(first.kinds, QVector<FaultKind>{FaultKind::Delay});
    const FaultDecision second = plan.decide(2, 1);
    QCOMPARE(second.delayNs, 105);
    QCOMPARE(second.kinds,
             (QVector<FaultKind>{FaultKind::Delay, FaultKind::LateReply, FaultKind::Duplicate}));
    QVERIFY(second.hasContentFault(FaultKind::Duplicate));
    QVERIFY(!second.hasContentFault(FaultKind::Delay));
    QVERIFY(plan.decide(3, 1).kinds.isEmpty());
}

void TestFaultPlan::ofOtherFaultsTheFirstRuleWins()
{
    FaultRule silence = range(FaultKind::Silence, 2, 3);
    silence.durationNs = 77;
    FaultPlan plan({range(FaultKind::Echo, 1, 2), silence}, 1);
    QCOMPARE(plan.decide(1, 1).kinds, QVector<FaultKind>{FaultKind::Echo});
    const FaultDecision both = plan.decide(2, 1);
    QCOMPARE(both.kinds, QVector<FaultKind>{FaultKind::Echo});
    QCOMPARE(both.durationNs, 0);
    const FaultDecision second = plan.decide(3, 1);
    QCOMPARE(second.kinds, QVector<FaultKind>{FaultKind::Silence});
    QCOMPARE(second.durationNs, 77);
}

void TestFaultPlan::jitterStaysWithinItsBound()
{
    FaultRule delay = chance(FaultKind::Delay, kvt::CERTAIN);
    delay.durationNs = 5000000;
    delay.jitterNs = 2000000;
    FaultPlan plan({delay}, 1);
    qint64 shortest = delay.durationNs + delay.jitterNs;
    qint64 longest = 0;
    for (int i = 1; i <= 1000; ++i) {
        const qint64 delayNs = plan.decide(i, 1).delayNs;
        shortest = qMin(shortest, delayNs);
        longest = qMax(longest, delayNs);
    }
    QVERIFY(shortest >= 5000000 && shortest < 5100000);
    QVERIFY(longest <= 7000000 && longest > 6900000);
}

void TestFaultPlan::equalSeedsGiveEqualFaults()
{
    const QVector<FaultRule> rules = {chance(FaultKind::NoReply, kvt::CERTAIN / 10),
                                      chance(FaultKind::Echo, kvt::CERTAIN / 10)};
    FaultPlan one(rules, 7);
    FaultPlan same(rules, 7);
    FaultPlan other(rules, 8);
    bool differs = false;
    for (int i = 1; i <= 1000; ++i) {
        const QVector<FaultKind> kinds = one.decide(i, 1).kinds;
        QCOMPARE(same.decide(i, 1).kinds, kinds);
        differs = other.decide(i, 1).kinds != kinds || differs;
    }
    QVERIFY(differs);
}

QTEST_GUILESS_MAIN(TestFaultPlan)
#include "tst_fault_plan.moc"
