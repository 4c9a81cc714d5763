// Durations as a list has them.
#include "tags/duration_text.h"

#include <QtTest>

using namespace kvt;

class TestDurationText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void durationsAreRead_data()
    {
        QTest::addColumn<qint64>("expected_ns");
        QTest::newRow("100ms") << qint64(100000000);
        QTest::newRow("100 ms") << qint64(100000000);
        QTest::newRow("100MS") << qint64(100000000);
        QTest::newRow("5s") << qint64(5000000000);
        QTest::newRow("0.5s") << qint64(500000000);
        QTest::newRow("1.5 s") << qint64(1500000000);
        QTest::newRow("1min") << qint64(60000000000);
        QTest::newRow("24h") << qint64(86400000000000);
        QTest::newRow("0") << qint64(0);
        QTest::newRow("0s") << qint64(0);
        QTest::newRow("0.000001ms") << qint64(1);
    }

    void durationsAreRead()
    {
        QFETCH(qint64, expected_ns);
        const std::optional<qint64> read = parseDuration_ns(QLatin1String(QTest::currentDataTag()));
        QVERIFY(read.has_value());
        QCOMPARE(*read, expected_ns);
    }

    void anythingElseIsNone_data()
    {
        QTest::addColumn<QString>("text");
        for (const char *text : {"", " ", "5", "s", "ms", "-1s", "1d", "1 m", "5 s s", "1e3ms",
                                 "0x5s", "25h", "1441min", "nan s", "inf s", "5,5s", "1s5",
                                 "99999999999999999999999999999999999999999s"})
            QTest::newRow(text) << QString(QLatin1String(text));
    }

    void anythingElseIsNone()
    {
        QFETCH(QString, text);
        QVERIFY(!parseDuration_ns(text).has_value());
    }

    void durationsAreShown_data()
    {
        QTest::addColumn<qint64>("duration_ns");
        QTest::newRow("0 ms") << qint64(0);
        QTest::newRow("100 ms") << qint64(100000000);
        QTest::newRow("140.5 ms") << qint64(140500000);
        QTest::newRow("1 s") << qint64(1000000000);
        QTest::newRow("1.5 s") << qint64(1500000000);
        QTest::newRow("90 s") << qint64(90000000000);
        QTest::newRow("1 min") << qint64(60000000000);
        QTest::newRow("2 h") << qint64(7200000000000);
    }

    void durationsAreShown()
    {
        QFETCH(qint64, duration_ns);
        const QString shown = durationText(duration_ns);
        QCOMPARE(shown, QString(QLatin1String(QTest::currentDataTag())));
        QCOMPARE(parseDuration_ns(shown).value_or(-1), duration_ns);
    }
};

QTEST_APPLESS_MAIN(TestDurationText)
#include "tst_duration_text.moc"
