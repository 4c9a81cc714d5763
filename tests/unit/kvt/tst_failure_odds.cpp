// Whether one rate of failures is really higher than another.
#include "apps/kvt/common/failure_odds.h"

#include <QtTest>

using namespace kvt;

class TestFailureOdds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Worked out by hand from binomial coefficients.
    void theChanceIsThatOfTheExactTest_data()
    {
        QTest::addColumn<quint64>("failures");
        QTest::addColumn<quint64>("attempts");
        QTest::addColumn<quint64>("otherFailures");
        QTest::addColumn<quint64>("otherAttempts");
        QTest::addColumn<double>("chance");
        QTest::newRow("none at all")
            << quint64(0) << quint64(50) << quint64(0) << quint64(50) << 1.0;
        QTest::newRow("1 of 50, 0 of 50")
            << quint64(1) << quint64(50) << quint64(0) << quint64(50) << 0.5;
        QTest::newRow("2 of 50, 0 of 50") // 50 * 49 / (100 * 99)
            << quint64(2) << quint64(50) << quint64(0) << quint64(50) << 2450.0 / 9900;
        QTest::newRow("3 of 4, 1 of 4") // (4 * 4 + 1 * 1) / 70
            << quint64(3) << quint64(4) << quint64(1) << quint64(4) << 17.0 / 70;
        QTest::newRow("4 of 4, 0 of 4")
            << quint64(4) << quint64(4) << quint64(0) << quint64(4) << 1.0 / 70;
        QTest::newRow("0 of 4, 4 of 4")
            << quint64(0) << quint64(4) << quint64(4) << quint64(4) << 1.0;
        QTest::newRow("no attempts") << quint64(0) << quint64(0) << quint64(1) << quint64(4) << 1.0;
        QTest::newRow("nothing to compare with")
            << quint64(1) << quint64(4) << quint64(0) << quint64(0) << 1.0;
    }

    void theChanceIsThatOfTheExactTest()
    {
        QFETCH(quint64, failures);
        QFETCH(quint64, attempts);
        QFETCH(quint64, otherFailures);
        QFETCH(quint64, otherAttempts);
        QFETCH(double, chance);
        const double found = chanceOfExcess({failures, attempts}, {otherFailures, otherAttempts});
        QVERIFY2(qAbs(found - chance) < 1e-9, qPrintable(QString::number(found)));
    }

    void moreFailuresAreLessLikelyByChance()
    {
        double before = 1.1;
        for (quint64 failures = 0; failures <= 300; failures += 50) {
            const double chance = chanceOfExcess({failures, 1000}, {0, 1000});
            QVERIFY(chance < before);
            before = chance;
        }
        QVERIFY(before < 1e-80);
    }
};

QTEST_GUILESS_MAIN(TestFailureOdds)
#include "tst_failure_odds.moc"
