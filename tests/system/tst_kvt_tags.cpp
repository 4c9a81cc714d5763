// kvt tags: what is said about a list, and the one to begin with.
#include "tests/support/kvt_process.h"

#include <QJsonArray>
#include <QTemporaryDir>
#include <QtTest>

namespace
{

/// A list kept in a spreadsheet with semicolons and decimal commas, wrong in ten ways.
const char WRONG_LIST[] =
    "sep=;\r\n"
    "Name;Area;Address;Station;Type;Scale;Low;High;Raw_low;Raw_high;Unit;Labels;Interval;Deadband;"
    "Lo;Hi;Hysteresis;On_delay;Scal\r\n"
    "\"tank; north\";D;5.2.1;1;s16;0,1;;;;;m;;1s;0,5;0,5;4,5;0,2;1,5s;x\r\n"
    "pump;D;5.3.1;300;u16;;;;;;;;;;;;;;\r\n"     // 4: station
    "pump;D;5.3.0;1;u17;;;;;;;;;;;;;;\r\n"       // 5: name and type
    "valve;Y;5.4.1;1;u16;;;;;;;;;;;;;;\r\n"      // 6: area
    "heat;D;5.5.1;1;u16;0,,1;;;;;;;;;;;;\r\n"    // 7: scale
    "cool;D;5.6.1;1;u16;;0;;0;100;;;;;;;;;\r\n"  // 8: high is missing
    "mode;D;5.7.1;1;u16;;;;;;;0=off;5;;;;;;\r\n" // 9: interval
    "flow;D;5.8.1;1;u16;;;;;;;;;2%;;;;;\r\n"     // 10: deadband
    "temp;D;5.9.1;1;s16;;;;;;;;;;4,5;2,5;;;\r\n" // 11: hi below lo
    "load;D;5.10.1;1;u16;;;;;;;;;;;5;;-1s;\r\n"; // 12: on_delay

/// A list that is right, with a tag that another one speeds up.
const char GOOD_LIST[] = "name,area,address,station,type,interval\n"
                         "a,D,5.2.1,1,u16,100ms\n"
                         "b,D,5.3.1,1,u16,\n"
                         "c,C,7.0.1.4,2,u8,5s\n"
                         "d,C,7.0.1.5,2,u8,1s\n";

} // namespace

class TestKvtTags : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aListWrongInTenWaysIsToldTenTimes()
    {
        const QString path = save("wrong.csv", WRONG_LIST);
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("tags"), QStringLiteral("check"), path}), 2);
        const char *const expected[] = {
            ":4: column 4 \"station\": \"300\" is no station (0 to 255)",
            ":5: column 1 \"name\": \"pump\" is the name of line 4 already",
            ":5: column 5 \"type\": ",
            ":6: column 2 \"area\": \"Y\" is no area (X, D or C)",
            ":7: column 6 \"scale\": \"0,,1\" is not a number",
            ":8: column 8 \"high\": is missing: raw_low, raw_high, low and high go together",
            ":9: column 13 \"interval\": \"5\" is no interval: a number with ms, s, min or h, from "
            "10 ms to a day",
            ":10: column 14 \"deadband\": a percentage needs a range: low and high, or min and max",
            ":11: column 16 \"hi\": 2.5 is below lo, which is 4.5",
            ":12: column 18 \"on_delay\": \"-1s\" is no delay: 0, or a number with ms, s, min or "
            "h, "
            "of a day at most",
        };
        const QByteArray errors = kvt.errors();
        for (const char *text : expected)
            QVERIFY2(errors.contains(path.toUtf8() + text), errors);
        QVERIFY2(errors.contains("warning: " + path.toUtf8() +
                                 ":2: column 19 \"Scal\": is not known; is \"scale\" meant?"),
                 errors);
        QCOMPARE(kvt.output(), QByteArray("10 errors, 1 warning\n"));
        const QByteArrayList lines = errors.split('\n');
        QCOMPARE(lines.size(), 12);
        const QByteArray place = path.toUtf8() + ':';
        for (int i = 0; i < 11; ++i) // each in the order of the list, a line of which has two
            QVERIFY2(
                lines.at(i).contains(
                    place +
                    QByteArray::number(QList<int>({2, 4, 5, 5, 6, 7, 8, 9, 10, 11, 12}).at(i)) +
                    ':'),
                errors);
    }

    // At 9,600 baud with pauses of 1 %: a word takes 18.9 ms, a block 160.5 ms.
    void aGoodListIsSummedUp()
    {
        const QString path = save("good.csv", GOOD_LIST);
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("tags"), QStringLiteral("check"), path}), 0);
        QCOMPARE(kvt.errors(),
                 "kvt: warning: " + path.toUtf8() +
                     ":4: tag \"c\" has an interval of 5 s and is read every 1 s: another tag "
                     "shares its request\n");
        const QByteArray text = kvt.output();
        QVERIFY2(text.startsWith("4 tags, 2 stations, 3 requests for all of them\nat 9600 baud:\n"
                                 "tags without interval: a scan of 29.4 ms\n"
                                 "intervals: they take 35.3 % of the line; all are kept\n"),
                 text);
        QVERIFY2(text.contains("\n     100 ms        1     100.0 ms      19.1 %\n"), text);
        QVERIFY2(text.endsWith("\n0 errors, 1 warning\n"), text);
    }

    void aWrongListIsToldInJson()
    {
        const QString path = save("wrong.csv", WRONG_LIST);
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("tags"), QStringLiteral("check"), path,
                          QStringLiteral("--json")}),
                 2);
        QCOMPARE(kvt.errors(), QByteArray());
        const QJsonObject found = kvt.outputObject();
        const QJsonArray problems = found.value(QStringLiteral("problems")).toArray();
        QCOMPARE(problems.size(), 11);
        QCOMPARE(problems.at(1).toObject(),
                 (QJsonObject{{"severity", "error"},
                              {"file", path},
                              {"line", 4},
                              {"column", 4},
                              {"column_name", "station"},
                              {"text", "\"300\" is no station (0 to 255)"}}));
        QCOMPARE(problems.first().toObject(),
                 (QJsonObject{{"severity", "warning"},
                              {"file", path},
                              {"line", 2},
                              {"column", 19},
                              {"column_name", "Scal"},
                              {"text", "is not known; is \"scale\" meant?"}}));
        QCOMPARE(found.value(QStringLiteral("classes")).toArray(), QJsonArray());
        QCOMPARE(found.value(QStringLiteral("summary")).toObject(),
                 (QJsonObject{{"errors", 10}, {"warnings", 1}}));
    }

    // The figures of aGoodListIsSummedUp.
    void aGoodListIsSummedUpInJson()
    {
        const QString path = save("good.csv", GOOD_LIST);
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("tags"), QStringLiteral("check"), QStringLiteral("--json"),
                          path}),
                 0);
        QCOMPARE(kvt.errors(), QByteArray());
        const QJsonObject found = kvt.outputObject();
        QCOMPARE(found.value(QStringLiteral("problems")).toArray().size(), 1);
        const QJsonObject warning =
            found.value(QStringLiteral("problems")).toArray().first().toObject();
        QCOMPARE(warning.value(QStringLiteral("line")).toInt(), 4);
        QVERIFY(!warning.contains(QStringLiteral("column")));
        const QJsonArray classes = found.value(QStringLiteral("classes")).toArray();
        QCOMPARE(classes.size(), 2);
        QCOMPARE(classes.first().toObject().value(QStringLiteral("interval_ms")).toDouble(), 100.0);
        const QJsonObject summary = found.value(QStringLiteral("summary")).toObject();
        QCOMPARE(summary.value(QStringLiteral("tags")).toInt(), 4);
        QCOMPARE(summary.value(QStringLiteral("stations")).toInt(), 2);
        QCOMPARE(summary.value(QStringLiteral("reads")).toInt(), 3);
        QCOMPARE(qRound(10 * summary.value(QStringLiteral("scan_ms")).toDouble()), 294);
        QCOMPARE(qRound(10 * summary.value(QStringLiteral("class_load_percent")).toDouble()), 353);
        QCOMPARE(summary.value(QStringLiteral("overloaded")), QJsonValue(false));
    }

    void theTemplateIsAListWithoutFault()
    {
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("tags"), QStringLiteral("template")}), 0);
        const QByteArray list = kvt.output();
        QVERIFY(list.startsWith("# A tag list."));
        KvtProcess again;
        QCOMPARE(
            again.run({QStringLiteral("tags"), QStringLiteral("check"), save("template.csv", list),
                       QStringLiteral("--baud"), QStringLiteral("38400")}),
            0);
        QCOMPARE(again.errors(), QByteArray());
        const QByteArray text = again.output();
        QVERIFY2(text.startsWith("8 tags, 2 stations, 12 requests"), text);
        QVERIFY2(text.endsWith("0 errors, 0 warnings\n"), text);
    }

    // As a spreadsheet of a country with decimal commas saves it.
    void theTemplateMayBeSavedWithSemicolons()
    {
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("tags"), QStringLiteral("template")}), 0);
        QByteArray saved;
        for (const QByteArray &line : kvt.output().split('\n')) {
            if (line.startsWith('#'))
                QVERIFY2(!line.contains(',') && !line.contains(';') && !line.contains('"'), line);
            QByteArrayList cells = line.split(',');
            for (QByteArray &cell : cells)
                if (cell.contains(';'))
                    cell = '"' + cell + '"';
            saved += cells.join(';') + QByteArray(line.startsWith('#') ? ";;;;" : "") + "\r\n";
        }
        KvtProcess again;
        QCOMPARE(again.run({QStringLiteral("tags"), QStringLiteral("check"),
                            save("saved.csv", "\"# kept; in 2026\";;;;\r\n" + saved)}),
                 0);
        QCOMPARE(again.errors(), QByteArray());
        QVERIFY(again.output().startsWith("8 tags, 2 stations, 12 requests"));
    }

    void aListThatCannotBePolledIsWrong()
    {
        KvtProcess none;
        QCOMPARE(none.run({QStringLiteral("tags"), QStringLiteral("check"),
                           save("none.csv", "name,area,address,station,type\n")}),
                 2);
        QVERIFY(none.errors().contains("it has no tags"));
        KvtProcess blocks;
        QCOMPARE(blocks.run({QStringLiteral("tags"), QStringLiteral("check"),
                             save("blocks.csv", "name,area,address,station,type\n"
                                                "a,C,7.1.0.0,1,u8\nb,C,7.2.0.0,1,u8\n")}),
                 2);
        QVERIFY(blocks.output().endsWith("1 error, 0 warnings\n"));
    }

    void wrongWordsAreNamed_data()
    {
        QTest::addColumn<QByteArray>("error");
        QTest::newRow("tags") << QByteArray("kvt: tags: check or template is missing\n");
        QTest::newRow("tags chek")
            << QByteArray("kvt: tags: \"chek\" is neither check nor template\n");
        QTest::newRow("tags check") << QByteArray("kvt: tags: check takes the name of a list\n");
        QTest::newRow("tags check a b") << QByteArray("kvt: tags: what is \"b\"?\n");
        QTest::newRow("tags template b") << QByteArray("kvt: tags: what is \"b\"?\n");
    }

    void wrongWordsAreNamed()
    {
        QFETCH(QByteArray, error);
        KvtProcess kvt;
        QCOMPARE(kvt.run(QString(QLatin1String(QTest::currentDataTag())).split(QLatin1Char(' '))),
                 2);
        QCOMPARE(kvt.errors(), error);
        QVERIFY(kvt.output().isEmpty());
    }

private:
    QString save(const char *name, const QByteArray &list)
    {
        const QString path = folder_.filePath(QLatin1String(name));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(list) != list.size())
            qFatal("cannot write a list");
        return path;
    }

    QTemporaryDir folder_;
};

QTEST_GUILESS_MAIN(TestKvtTags)
#include "tst_kvt_tags.moc"
