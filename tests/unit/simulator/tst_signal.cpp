// How values move.
#include "simulator/signal.h"

#include <QtTest>

#include <algorithm>

using namespace kvt;

Q_DECLARE_METATYPE(SignalKind)
Q_DECLARE_METATYPE(SignalRange)

namespace
{

const SignalRange BYTE = {0, 255};

QVector<int> values(SignalKind kind, SignalRange range, quint32 start, int count)
{
    Signal signal(kind, range, start, 1);
    QVector<int> result;
    for (int i = 0; i < count; ++i)
        result.append(signal.next());
    return result;
}

} // namespace

class TestSignal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aConstantStays()
    {
        QCOMPARE(values(SignalKind::Constant, BYTE, 7, 3), (QVector<int>{7, 7, 7}));
        QCOMPARE(values(SignalKind::Constant, {-10, 9}, 27, 2), (QVector<int>{-3, -3}));
    }

    void aCounterCountsAndWraps()
    {
        QCOMPARE(values(SignalKind::Counter, BYTE, 254, 4), (QVector<int>{254, 255, 0, 1}));
        QCOMPARE(values(SignalKind::Counter, {0, 1}, 0, 4), (QVector<int>{0, 1, 0, 1}));
        QCOMPARE(values(SignalKind::Counter, {-32768, 32767}, 65535, 2),
                 (QVector<int>{32767, -32768}));
    }

    void aRampRisesFromEndToEndInAHundredSteps()
    {
        const QVector<int> ramp = values(SignalKind::Ramp, {0, 990}, 0, 101);
        for (int i = 0; i < 100; ++i)
            QCOMPARE(ramp[i], 10 * i);
        QCOMPARE(ramp[100], 0);
    }

    void aSineSwingsAroundTheMiddle()
    {
        const QVector<int> sine = values(SignalKind::Sine, {-1000, 1000}, 0, 65);
        QCOMPARE(sine[0], 0);
        QCOMPARE(sine[16], 1000);
        QCOMPARE(sine[32], 0);
        QCOMPARE(sine[48], -1000);
        QCOMPARE(sine[64], sine[0]);
        QVERIFY(qAbs(sine[8] - 707) <= 2);
        QVERIFY(qAbs(sine[5] - 471) <= 2);
    }

    void aRandomWalkStepsByASixteenth()
    {
        const QVector<int> walk = values(SignalKind::RandomWalk, {0, 1599}, 800, 1000);
        bool moved = false;
        for (int i = 1; i < walk.size(); ++i) {
            QVERIFY(qAbs(walk[i] - walk[i - 1]) <= 100);
            moved = moved || walk[i] != walk[i - 1];
        }
        QVERIFY(moved);
    }

    void aRandomWalkRepeatsWithItsSeed()
    {
        QCOMPARE(values(SignalKind::RandomWalk, BYTE, 3, 50),
                 values(SignalKind::RandomWalk, BYTE, 3, 50));
        Signal other(SignalKind::RandomWalk, BYTE, 3, 2);
        QVector<int> otherValues;
        for (int i = 0; i < 50; ++i)
            otherValues.append(other.next());
        QVERIFY(otherValues != values(SignalKind::RandomWalk, BYTE, 3, 50));
    }

    void noKindLeavesItsRange_data()
    {
        QTest::addColumn<SignalKind>("kind");
        QTest::addColumn<SignalRange>("range");
        const SignalKind kinds[] = {SignalKind::Constant, SignalKind::Counter, SignalKind::Ramp,
                                    SignalKind::Sine, SignalKind::RandomWalk};
        const SignalRange ranges[] = {{0, 1}, {0, 255}, {0, 65535}, {-32768, 32767}};
        for (const SignalKind kind : kinds) {
            for (const SignalRange range : ranges)
                QTest::addRow("kind %d, %d to %d", static_cast<int>(kind), range.lowest,
                              range.highest)
                    << kind << range;
        }
    }

    void noKindLeavesItsRange()
    {
        QFETCH(SignalKind, kind);
        QFETCH(SignalRange, range);
        const QVector<int> all = values(kind, range, 12345, 1000);
        QVERIFY(*std::min_element(all.begin(), all.end()) >= range.lowest);
        QVERIFY(*std::max_element(all.begin(), all.end()) <= range.highest);
    }
};

QTEST_GUILESS_MAIN(TestSignal)
#include "tst_signal.moc"
