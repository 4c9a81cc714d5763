// Durations and their quantiles.
#include "host/histogram.h"
#include "host/host_time.h"

#include <QtTest>

using namespace kvt;

class TestHistogram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anEmptyOneIsZeroEverywhere()
    {
        const Histogram histogram;
        QCOMPARE(histogram.count(), quint64(0));
        QCOMPARE(histogram.least_ns(), qint64(0));
        QCOMPARE(histogram.greatest_ns(), qint64(0));
        QCOMPARE(histogram.mean_ns(), qint64(0));
        QCOMPARE(histogram.quantile_ns(0.5), qint64(0));
    }

    void leastGreatestAndMeanAreExact()
    {
        Histogram histogram;
        for (const qint64 duration_ns : {3001, 1001, 2001})
            histogram.add(duration_ns);
        QCOMPARE(histogram.count(), quint64(3));
        QCOMPARE(histogram.least_ns(), qint64(1001));
        QCOMPARE(histogram.greatest_ns(), qint64(3001));
        QCOMPARE(histogram.mean_ns(), qint64(2001));
    }

    void quantilesAreWithinTheirStep_data()
    {
        QTest::addColumn<qint64>("unit_ns");
        QTest::newRow("10 us") << microseconds(10);
        QTest::newRow("1 ms") << milliseconds(1);
        QTest::newRow("100 ms") << milliseconds(100);
        QTest::newRow("1 s") << seconds(1);
    }

    void quantilesAreWithinTheirStep()
    {
        QFETCH(qint64, unit_ns);
        Histogram histogram;
        for (int i = 1; i <= 100; ++i)
            histogram.add(i * unit_ns);
        for (const int percent : {1, 10, 50, 90, 99, 100}) {
            const qint64 exact_ns = percent * unit_ns;
            const qint64 found_ns = histogram.quantile_ns(percent / 100.0);
            QVERIFY2(found_ns >= exact_ns, qPrintable(QString::number(percent)));
            QVERIFY2(found_ns <= exact_ns + exact_ns / 32 + 1000,
                     qPrintable(QString::number(percent)));
        }
    }

    void negativeDurationsCountAsNone()
    {
        Histogram histogram;
        histogram.add(-5);
        QCOMPARE(histogram.count(), quint64(1));
        QCOMPARE(histogram.least_ns(), qint64(0));
        QCOMPARE(histogram.quantile_ns(1), qint64(0));
    }

    void endlessDurationsCountAsTheLongest()
    {
        Histogram histogram;
        histogram.add(seconds(1000000));
        histogram.add(seconds(1));
        QCOMPARE(histogram.greatest_ns(), seconds(1000000));
        QVERIFY(histogram.quantile_ns(1) >= seconds(1000));
    }

    void oneDurationIsEveryQuantile()
    {
        Histogram histogram;
        histogram.add(123456789);
        QCOMPARE(histogram.quantile_ns(0), qint64(123456789));
        QCOMPARE(histogram.quantile_ns(0.5), qint64(123456789));
        QCOMPARE(histogram.quantile_ns(1), qint64(123456789));
    }
};

QTEST_APPLESS_MAIN(TestHistogram)
#include "tst_histogram.moc"
