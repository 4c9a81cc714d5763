// Which faults happen when.
#include "simulator/fault_plan.h"

#include <QtTest>

using namespace kvt;

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
    void everyKindHasAName()
    {
        QSet<QByteArray> names;
        for (int i = 0; i < FAULT_KINDS; ++i)
            names.insert(faultName(static_cast<FaultKind>(i)));
        QCOMPARE(names.size(), FAULT_KINDS);
        QCOMPARE(QByteArray(faultName(FaultKind::NoReply)), QByteArray("noreply"));
        QCOMPARE(QByteArray(faultName(FaultKind::LateReply)), QByteArray("late"));
        QCOMPARE(QByteArray(faultName(FaultKind::LineBreak)), QByteArray("break"));
    }

    void aRangeHoldsBothEnds()
    {
        QCOMPARE(hits(range(FaultKind::NoReply, 3, 5), 10), (QVector<qint64>{3, 4, 5}));
    }

    void everyNthExchangeIsHit()
    {
        FaultRule rule;
        rule.trigger = FaultRule::Trigger::Every;
        rule.every = 4;
        QCOMPARE(hits(rule, 12), (QVector<qint64>{4, 8, 12}));
    }

    void aChanceIsMetAboutAsOften()
    {
        const int count = hits(chance(FaultKind::NoReply, CERTAIN / 100), 100000).size();
        QVERIFY2(count > 900 && count < 1100, qPrintable(QString::number(count)));
    }

    void certainIsAlwaysAndNoneNever()
    {
        QCOMPARE(hits(chance(FaultKind::NoReply, CERTAIN), 1000).size(), 1000);
        QCOMPARE(hits(chance(FaultKind::NoReply, 0), 1000).size(), 0);
    }

    void aRuleCanBeOfOneStation()
    {
        FaultRule rule = range(FaultKind::NoReply, 1, 5);
        rule.station = 3;
        QCOMPARE(hits(rule, 5, 3).size(), 5);
        QCOMPARE(hits(rule, 5, 4).size(), 0);
    }

    void delaysAddUpAndGoWithAnotherFault()
    {
        FaultRule delay = range(FaultKind::Delay, 1, 2);
        delay.duration_ns = 5;
        FaultRule late = range(FaultKind::LateReply, 2, 2);
        late.duration_ns = 100;
        FaultPlan plan({range(FaultKind::Duplicate, 2, 2), delay, late}, 1);
        const FaultDecision first = plan.decide(1, 1);
        QCOMPARE(first.delay_ns, 5);
        QCOMPARE(first.kinds, QVector<FaultKind>{FaultKind::Delay});
        const FaultDecision second = plan.decide(2, 1);
        QCOMPARE(second.delay_ns, 105);
        QCOMPARE(second.kinds, (QVector<FaultKind>{FaultKind::Delay, FaultKind::LateReply,
                                                   FaultKind::Duplicate}));
        QVERIFY(second.hasContentFault(FaultKind::Duplicate));
        QVERIFY(!second.hasContentFault(FaultKind::Delay));
        QVERIFY(plan.decide(3, 1).kinds.isEmpty());
    }

    void ofOtherFaultsTheFirstRuleWins()
    {
        FaultRule silence = range(FaultKind::Silence, 2, 3);
        silence.duration_ns = 77;
        FaultPlan plan({range(FaultKind::Echo, 1, 2), silence}, 1);
        QCOMPARE(plan.decide(1, 1).kinds, QVector<FaultKind>{FaultKind::Echo});
        const FaultDecision both = plan.decide(2, 1);
        QCOMPARE(both.kinds, QVector<FaultKind>{FaultKind::Echo});
        QCOMPARE(both.duration_ns, 0);
        const FaultDecision second = plan.decide(3, 1);
        QCOMPARE(second.kinds, QVector<FaultKind>{FaultKind::Silence});
        QCOMPARE(second.duration_ns, 77);
    }

    void jitterStaysWithinItsBound()
    {
        FaultRule delay = chance(FaultKind::Delay, CERTAIN);
        delay.duration_ns = 5000000;
        delay.jitter_ns = 2000000;
        FaultPlan plan({delay}, 1);
        qint64 shortest = delay.duration_ns + delay.jitter_ns;
        qint64 longest = 0;
        for (int i = 1; i <= 1000; ++i) {
            const qint64 delay_ns = plan.decide(i, 1).delay_ns;
            shortest = qMin(shortest, delay_ns);
            longest = qMax(longest, delay_ns);
        }
        QVERIFY(shortest >= 5000000 && shortest < 5100000);
        QVERIFY(longest <= 7000000 && longest > 6900000);
    }

    void equalSeedsGiveEqualFaults()
    {
        const QVector<FaultRule> rules = {chance(FaultKind::NoReply, CERTAIN / 10),
                                          chance(FaultKind::Echo, CERTAIN / 10)};
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
};

QTEST_GUILESS_MAIN(TestFaultPlan)
#include "tst_fault_plan.moc"
