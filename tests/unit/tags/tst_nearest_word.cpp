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

    void theLikelyNameComesFirst()
    {
        const QStringList names = {"Off", "Hand", "Automatic"};
        QCOMPARE(likelyNames(QStringLiteral("handd"), names),
                 QString("\"Hand\", \"Off\", \"Automatic\""));
        QCOMPARE(likelyNames(QStringLiteral("?"), names),
                 QString("\"Off\", \"Hand\", \"Automatic\""));
        QStringList many;
        for (int i = 0; i < 12; ++i)
            many.append(QString(QChar('a' + i)).repeated(5));
        QCOMPARE(likelyNames(QStringLiteral("lllll"), many),
                 QString("\"lllll\", \"aaaaa\", \"bbbbb\", \"ccccc\", \"ddddd\", \"eeeee\", "
                         "\"fffff\", \"ggggg\", \"hhhhh\", \"iiiii\", and 2 more"));
    }
};

QTEST_GUILESS_MAIN(TestNearestWord)
#include "tst_nearest_word.moc"
