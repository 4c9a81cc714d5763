// kvt plan: figures worked out by hand, and bad input.
#include "tests/support/kvt_process.h"

#include <QJsonArray>
#include <QTemporaryDir>
#include <QtTest>

class TestKvtPlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A byte, a word and a block: 14 + 16 + 152 bytes a scan.
    void initTestCase()
    {
        QFile file(tagFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("name,area,address,station,type\nvalve,X,1.2.0,1,bool\nlevel,D,5.2.1,1,u16\n"
                   "recipe,C,7.0.1.4,2,u8\nlast,C,7.0.1.69,2,u8\n");
    }

    void theScanFollowsFromBytesAndTurnaround()
    {
        const QJsonObject object = plan("--baud 9600 --turnaround 4 --overhead 1000");
        const QJsonValue summary = object.value(QStringLiteral("summary"));
        QCOMPARE(summary[QStringLiteral("reads")].toInt(), 3);
        QCOMPARE(summary[QStringLiteral("scan_bytes")].toInt(), 182);
        // 182 bytes of 10 bits at 9,600 baud are 189.58 ms.
        const double scan_ms = summary[QStringLiteral("scan_ms")].toDouble();
        // Listening pauses take one per cent besides.
        QVERIFY(qAbs(scan_ms - 1.01 * (189.583 + 3 * 4 + 3 * 1)) < 0.01);
        const QJsonArray speeds = object.value(QStringLiteral("speeds")).toArray();
        QCOMPARE(speeds.size(), 8);
        QCOMPARE(speeds.at(3)[QStringLiteral("baud")].toInt(), 9600);
        QCOMPARE(speeds.at(3)[QStringLiteral("scan_ms")].toDouble(), scan_ms);
        QCOMPARE(object.value(QStringLiteral("stations")).toArray().size(), 2);
    }

    void speedAndFormatCount()
    {
        const double at8N1_ms = summary("--baud 1200 --turnaround 0 --overhead 0")
                                    .value(QStringLiteral("scan_ms"))
                                    .toDouble();
        const double at7E2_ms = summary("--baud 1200 --turnaround 0 --overhead 0 --format 7E2")
                                    .value(QStringLiteral("scan_ms"))
                                    .toDouble();
        QVERIFY(qAbs(at8N1_ms - 1.01 * 1516.667) < 0.01);
        QVERIFY(qAbs(at7E2_ms - 1.01 * 1668.333) < 0.01);
    }

    void aWriteBehindOthersWaitsForTheReadsBetween()
    {
        // At 1,200 baud: 18 bytes of a write take 150 ms, 152 of a block 1,266.7 ms.
        const QJsonObject object = summary("--baud 1200 --turnaround 0 --overhead 0 --writes 7");
        QVERIFY(qAbs(object.value(QStringLiteral("write_alone_ms")).toDouble() - (1416.667 + 1)) <
                0.01);
        KvtProcess text;
        QCOMPARE(text.run(arguments("--writes 7")), 0);
        QVERIFY(text.output().contains(" behind 7 other writes with all lists busy"));
        KvtProcess alone;
        QCOMPARE(alone.run(arguments("--writes 0")), 0);
        QVERIFY(alone.output().contains(" as the only write with all lists busy"));
        QVERIFY(qAbs(object.value(QStringLiteral("write_busy_ms")).toDouble() -
                     (9 * 150 + 12 * 1266.6667 + 5 * 1)) < 0.01);
    }

    void whatIsAskedIsComparedWithWhatIsAchievable()
    {
        KvtProcess kvt;
        QCOMPARE(kvt.run(arguments("--asked 100")), 1);
        const QByteArray text = kvt.output();
        QVERIFY2(text.contains("\n100 ms asked, 198.1 ms achievable; 38400 baud would do\n"), text);
        QVERIFY(kvt.errors().isEmpty());
        const QJsonObject slow = summary("--asked 100", 1);
        QCOMPARE(slow.value(QStringLiteral("achievable")).toBool(true), false);
        QCOMPARE(slow.value(QStringLiteral("asked_ms")).toInt(), 100);
        QCOMPARE(summary("--asked 100 --baud 38400").value(QStringLiteral("achievable")).toBool(),
                 true);
        QVERIFY(!summary("--baud 38400").contains(QStringLiteral("achievable")));
        KvtProcess never;
        QCOMPARE(never.run(arguments("--asked 1")), 1);
        QVERIFY(never.output().contains("no speed up to 115200 baud is enough"));
    }

    // At 9,600 baud, 2 ms of turnaround and 0.2 ms of overhead a byte takes 16.8 ms, a word 18.9
    // ms, and listening pauses one per cent.
    void intervalsAreForecast()
    {
        const QString path = folder_.filePath(QStringLiteral("classes.csv"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("name,area,address,station,type,interval\nvalve,X,1.2.0,1,bool,10ms\n"
                   "level,D,5.2.1,1,u16,1s\n");
        file.close();
        const QStringList words = {QStringLiteral("plan"), QStringLiteral("--tags"), path};
        KvtProcess text;
        QCOMPARE(text.run(words), 0);
        const QByteArray shown = text.output();
        QVERIFY2(
            shown.contains("\nscan: every tag has an interval\nintervals: they take 171.4 % of "
                           "the line; too much, each becomes 1.71 times as long\n"),
            shown);
        QVERIFY2(shown.contains("\n      10 ms        1      17.1 ms      98.9 %\n"
                                "        1 s        1        1.7 s       1.1 %\n"),
                 shown);
        KvtProcess json;
        QCOMPARE(json.run(words + QStringList(QStringLiteral("--json"))), 0);
        const QJsonObject object = QJsonDocument::fromJson(json.output()).object();
        const QJsonArray classes = object.value(QStringLiteral("classes")).toArray();
        QCOMPARE(classes.size(), 2);
        QCOMPARE(classes.at(1)[QStringLiteral("interval_ms")].toDouble(), 1000.0);
        QVERIFY(qAbs(classes.at(1)[QStringLiteral("expected_ms")].toDouble() - 1713.6) < 1);
        const QJsonValue summary = object.value(QStringLiteral("summary"));
        QCOMPARE(summary[QStringLiteral("overloaded")].toBool(), true);
        QCOMPARE(summary[QStringLiteral("scan_ms")].toDouble(), 0.0);
    }

    void blocksThatCannotBePolledTogetherAreNamed()
    {
        const QString path = folder_.filePath(QStringLiteral("blocks.csv"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("name,area,address,station,type\na,C,7.1.0.0,1,u8\nb,C,7.2.0.0,1,u8\n");
        file.close();
        QCOMPARE(
            faultAtBadInput({QStringLiteral("plan"), QStringLiteral("--tags"), path},
                            path + QStringLiteral(":3: column 3 \"address\": field 2 is 2, but 1 "
                                                  "in tag \"a\"")),
            QString());
    }

    void badInputIsNamedInOneLine_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("named");
        QTest::newRow("no tags") << QStringList() << QString("--tags");
        QTest::newRow("no file") << QStringList{"--tags", "missing.csv"} << QString("missing.csv");
        for (const char *option :
             {"baud", "turnaround", "overhead", "timeout", "retries", "writes", "asked"})
            for (const char *value : {"-1", "x", "99999999"})
                QTest::addRow("%s %s", option, value)
                    << QStringList{"--tags", tagFile(),
                                   QStringLiteral("--%1=%2").arg(QLatin1String(option),
                                                                 QLatin1String(value))}
                    << QString(option);
        QTest::newRow("format") << QStringList{"--tags", tagFile(), "--format", "9X9"}
                                << QString("--format");
        QTest::newRow("a word") << QStringList{"--tags", tagFile(), "word"} << QString("word");
        QTest::newRow("an option") << QStringList{"--frobnicate"} << QString("frobnicate");
    }

    void badInputIsNamedInOneLine()
    {
        QFETCH(QStringList, words);
        QFETCH(QString, named);
        QCOMPARE(faultAtBadInput(QStringList(QStringLiteral("plan")) + words, named), QString());
    }

private:
    QTemporaryDir folder_;
    QString tagFile() const { return folder_.filePath(QStringLiteral("tags.csv")); }
    QStringList arguments(const char *more) const
    {
        return QStringList{QStringLiteral("plan"), QStringLiteral("--tags"), tagFile()} +
               QString::fromLatin1(more).split(QLatin1Char(' '));
    }
    QJsonObject plan(const char *more, int status = 0) const
    {
        KvtProcess kvt;
        return kvt.run(arguments(more) + QStringList(QStringLiteral("--json"))) == status
                   ? kvt.outputObject()
                   : QJsonObject();
    }
    QJsonObject summary(const char *more, int status = 0) const
    {
        return plan(more, status).value(QStringLiteral("summary")).toObject();
    }
};

QTEST_GUILESS_MAIN(TestKvtPlan)
#include "tst_kvt_plan.moc"
