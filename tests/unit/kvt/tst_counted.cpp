// Counts in words.
#include "apps/kvt/common/counted.h"

#include <QtTest>

class TestCounted : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneAloneIsSingular_data()
    {
        QTest::addColumn<qint64>("number");
        QTest::newRow("0 bytes follow") << Q_INT64_C(0);
        QTest::newRow("1 byte follows") << Q_INT64_C(1);
        QTest::newRow("2 bytes follow") << Q_INT64_C(2);
        QTest::newRow("-1 bytes follow") << Q_INT64_C(-1);
        QTest::newRow("9223372036854775807 bytes follow") << Q_INT64_C(9223372036854775807);
    }

    void oneAloneIsSingular()
    {
        QFETCH(qint64, number);
        QCOMPARE(kvt::counted(number, "byte follows", "bytes follow"),
                 QString::fromLatin1(QTest::currentDataTag()));
    }
};

QTEST_GUILESS_MAIN(TestCounted)
#include "tst_counted.moc"
