// The random generator: published numbers, and its bounds.
#include "simulator/random.h"

#include <QtTest>

using namespace kvt;

class TestRandom : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theNumbersAreTheGeneratorsPublishedOnes()
    {
        Random random(1234567);
        QCOMPARE(random.next(), Q_UINT64_C(6457827717110365317));
        QCOMPARE(random.next(), Q_UINT64_C(3203168211198807973));
        QCOMPARE(random.next(), Q_UINT64_C(9817491932198370423));
    }

    void belowStaysBelow()
    {
        Random random(1);
        for (int i = 0; i < 1000; ++i)
            QVERIFY(random.below(3) < 3);
        QCOMPARE(random.below(1), 0U);
        QCOMPARE(random.below(0), 0U);
    }

    void belowReachesEveryNumber()
    {
        Random random(1);
        QVector<int> counts(10, 0);
        for (int i = 0; i < 10000; ++i)
            ++counts[static_cast<int>(random.below(10))];
        for (const int count : counts)
            QVERIFY(count > 800 && count < 1200);
    }
};

QTEST_GUILESS_MAIN(TestRandom)
#include "tst_random.moc"
