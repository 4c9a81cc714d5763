// Which changes of a value are reported.
#include "tags/deadband.h"

#include <QtTest>

#include <cmath>

Q_DECLARE_METATYPE(kvt::MeaningTexts)

using namespace kvt;

namespace
{

ReportedValue value(double number, int quality = 1)
{
    ReportedValue reported;
    reported.number = number;
    reported.quality = quality;
    return reported;
}

MeaningTexts range(const char *low, const char *high, const char *min, const char *max)
{
    MeaningTexts texts;
    texts[MeaningColumn::Low] = QLatin1String(low);
    texts[MeaningColumn::High] = QLatin1String(high);
    texts[MeaningColumn::Min] = QLatin1String(min);
    texts[MeaningColumn::Max] = QLatin1String(max);
    return texts;
}

} // namespace

class TestDeadband : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstValueIsReported()
    {
        DeadbandFilter filter(10);
        QVERIFY(filter.isReported(value(3)));
        QVERIFY(!filter.isReported(value(3)));
    }

    void withoutAWidthEachChangeIsReported()
    {
        DeadbandFilter filter;
        QVERIFY(filter.isReported(value(3)));
        QVERIFY(filter.isReported(value(3.0000001)));
        QVERIFY(!filter.isReported(value(3.0000001)));
    }

    // Measured from the value before, no step of a slow drift would ever be far enough.
    void aSlowDriftIsMeasuredFromTheValueReportedLast()
    {
        DeadbandFilter filter(0.5);
        QVector<double> reported;
        for (int i = 0; i <= 40; ++i)
            if (filter.isReported(value(i / 8.0)))
                reported.append(i / 8.0);
        QCOMPARE(reported, (QVector<double>{0, 0.625, 1.25, 1.875, 2.5, 3.125, 3.75, 4.375, 5}));
    }

    void aValueAtTheEdgeIsNotReported()
    {
        DeadbandFilter filter(0.5);
        QVERIFY(filter.isReported(value(1)));
        QVERIFY(!filter.isReported(value(1.5)));
        QVERIFY(!filter.isReported(value(0.5)));
        QVERIFY(filter.isReported(value(1.5000001)));
    }

    void aChangeOfQualityIsAlwaysReported()
    {
        DeadbandFilter filter(10);
        QVERIFY(filter.isReported(value(3, 1)));
        QVERIFY(filter.isReported(value(3, 2)));
        QVERIFY(!filter.isReported(value(3, 2)));
        QVERIFY(filter.isReported(value(3, 1)));
    }

    // What was reported with a change of quality counts as any report.
    void aReportOfAQualityMovesTheBand()
    {
        DeadbandFilter filter(1);
        QVERIFY(filter.isReported(value(0, 1)));
        QVERIFY(filter.isReported(value(0.9, 2)));
        QVERIFY(!filter.isReported(value(1.8, 2)));
        QVERIFY(filter.isReported(value(1.95, 2)));
    }

    void aValueThatIsNoNumberIsTold()
    {
        DeadbandFilter filter(1);
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const double infinity = std::numeric_limits<double>::infinity();
        QVERIFY(filter.isReported(value(0)));
        QVERIFY(filter.isReported(value(nan)));
        QVERIFY(!filter.isReported(value(nan)));
        QVERIFY(filter.isReported(value(infinity)));
        QVERIFY(!filter.isReported(value(infinity)));
        QVERIFY(filter.isReported(value(-infinity)));
        ReportedValue none;
        none.quality = 1;
        QVERIFY(filter.isReported(none));
        QVERIFY(!filter.isReported(none));
        QVERIFY(filter.isReported(value(0)));
    }

    void widthsAreRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<MeaningTexts>("meaning");
        QTest::addColumn<double>("width");
        QTest::newRow("absolute") << "0.5" << MeaningTexts() << 0.5;
        QTest::newRow("none") << "0" << MeaningTexts() << 0.0;
        QTest::newRow("of low to high") << "2%" << range("-50", "150", "0", "10") << 4.0;
        QTest::newRow("of min to max") << "2 %" << range("", "", "0", "10") << 0.2;
        QTest::newRow("of a falling range") << "10%" << range("100", "0", "", "") << 10.0;
        QTest::newRow("of half a range") << "10%" << range("0", "", "0", "10") << 1.0;
    }

    void widthsAreRead()
    {
        QFETCH(QString, text);
        QFETCH(MeaningTexts, meaning);
        QFETCH(double, width);
        double read = -1;
        QCOMPARE(parseDeadband(text, meaning, &read), QString());
        QCOMPARE(read, width);
    }

    void wrongWidthsAreNone_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("error");
        QTest::newRow("below 0") << "-1"
                                 << "-1 is below 0";
        QTest::newRow("percentage below 0") << "-1%"
                                            << "-1% is below 0";
        QTest::newRow("above 100 %") << "101%"
                                     << "101% is above 100 %";
        QTest::newRow("no range") << "2%"
                                  << "a percentage needs a range: low and high, or min and max";
    }

    void wrongWidthsAreNone()
    {
        QFETCH(QString, text);
        QFETCH(QString, error);
        double width = -1;
        QCOMPARE(parseDeadband(text, MeaningTexts(), &width), error);
        QCOMPARE(width, -1.0);
    }

    void whatIsNoNumberIsNoWidth()
    {
        double width = -1;
        for (const char *text : {"", "%", "x", "2%%", "2 % of it", "nan", "inf", "1e400"})
            QVERIFY2(!parseDeadband(QLatin1String(text), range("0", "1", "", ""), &width).isEmpty(),
                     text);
        QCOMPARE(width, -1.0);
    }
};

QTEST_APPLESS_MAIN(TestDeadband)
#include "tst_deadband.moc"
