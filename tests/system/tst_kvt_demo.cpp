// kvt demo: the host, the driver and a simulated PLC in one program.
#include "tests/support/kvt_process.h"

#include <QRegularExpression>
#include <QtTest>

#include <array>

class TestKvtDemo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The end comes at the same time as a write, and must not count it as failed.
    void valuesGoBothWaysInEveryOneOfSeveralRuns()
    {
        std::array<KvtProcess, 4> runs;
        for (KvtProcess &kvt : runs)
            kvt.start({QStringLiteral("demo"), QStringLiteral("--seconds"), QStringLiteral("2")});
        for (KvtProcess &kvt : runs)
            checkGoodEnd(kvt);
    }

    void anInterruptEndsItWithTheSummary()
    {
        KvtProcess kvt;
        kvt.start({QStringLiteral("demo")});
        for (int i = 0; i < 30; ++i)
            QVERIFY(!kvt.readLine().isNull());
        kvt.interrupt();
        checkGoodEnd(kvt);
    }

    void badInputIsNamed_data()
    {
        QTest::addColumn<QString>("words");
        QTest::addColumn<QString>("named");
        QTest::newRow("seconds") << "demo --seconds 0"
                                 << "--seconds";
        QTest::newRow("tag list") << "demo --tags nowhere.csv"
                                  << "nowhere.csv";
        QTest::newRow("driver") << "demo --driver ./nowhere.so"
                                << "nowhere.so";
        QTest::newRow("a word too many") << "demo now"
                                         << "now";
    }
    void badInputIsNamed()
    {
        QFETCH(QString, words);
        QFETCH(QString, named);
        QCOMPARE(faultAtBadInput(words.split(QLatin1Char(' ')), named), QString());
    }

private:
    // The numbers of the summary line; empty when there is none.
    static QStringList summary(const QByteArray &output)
    {
        static const QRegularExpression line(QStringLiteral(
            "exchanges (\\d+), values read (\\d+), writes confirmed (\\d+), of these "
            "read back (\\d+), failures (\\d+)\n$"));
        return line.match(QString::fromUtf8(output)).capturedTexts().mid(1);
    }

    static void checkGoodEnd(KvtProcess &kvt)
    {
        QCOMPARE(kvt.finish(), 0);
        QCOMPARE(kvt.errors(), QByteArray());
        const QStringList numbers = summary(kvt.output());
        QCOMPARE(numbers.size(), 5);
        for (int i = 0; i < 4; ++i)
            QVERIFY2(numbers.at(i).toInt() > 0, qPrintable(numbers.join(QLatin1Char(' '))));
        QCOMPARE(numbers.at(4), QStringLiteral("0"));
    }
};

QTEST_GUILESS_MAIN(TestKvtDemo)
#include "tst_kvt_demo.moc"
