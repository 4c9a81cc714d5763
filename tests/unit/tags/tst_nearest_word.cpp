// The word that was probably meant.
#include "tags/nearest_word.h"

#include <QtTest>

using namespace kvt;

class TestNearestWord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void slipsOfTheHandAreUndone_data()
    {
        QTest::addColumn<QString>("meant");
        QTest::newRow("sacn") << "scan";
        QTest::newRow("pol") << "poll";
        QTest::newRow("polll") << "poll";
        QTest::newRow("raed") << "read";
        QTest::newRow("wride") << "write";
        QTest::newRow("exp") << "explain";
        QTest::newRow("decoed") << "decode";
        QTest::newRow("scan") << "scan";
        QTest::newRow("frobnicate") << "";
        QTest::newRow("xyz") << "";
        QTest::newRow("") << "";
    }

    void slipsOfTheHandAreUndone()
    {
        QFETCH(QString, meant);
        const QStringList commands = {"demo", "sim",  "poll",   "read",    "write", "scan",
                                      "tune", "plan", "decode", "explain", "replay"};
        QCOMPARE(nearestWord(QLatin1String(QTest::currentDataTag()), commands), meant);
        QCOMPARE(nearestWord(QLatin1String(QTest::currentDataTag()), QStringList()), QString());
    }
};

QTEST_GUILESS_MAIN(TestNearestWord)
#include "tst_nearest_word.moc"
