// Tag lists: the columns about the values of a tag, and lists as spreadsheets of other countries
// save them.
#include "tags/tag_list.h"

#include "tests/support/damage.h"
#include "tests/support/tag_list_fault.h"

#include <QtTest>

using namespace kvt;

namespace
{

/// Returns what is wrong or doubtful, one a line, as it is shown for the file "t".
QString shown(const QVector<TagError> &errors)
{
    QStringList texts;
    for (const TagError &error : errors)
        texts.append(formatTagError(QStringLiteral("t"), error));
    return texts.join(QLatin1Char('\n'));
}

/// The list of a plant as a German spreadsheet saves it.
const char PLANT[] =
    "sep=;\r\n"
    "Name;Area;Address;Station;Type;Order=cdab;Scale;Offset;Unit;Decimals;Min;Max;Labels;Bits\r\n"
    "temperature;D;5.1.0;2;s16;;0,1;-40;\xC2\xB0"
    "C;1;-40;150,5;;\r\n"
    "flow;D;5.2.1;1;f32;;;;m3/h;2;;;;\r\n"
    "energy;D;6.0.0;1;u64;abcd;0,001;;kWh;;;;;\r\n"
    "mode;X;1.1.0;1;u8;;;;;;;;\"0=off;1=manual\";\r\n"
    "alarms;D;6.4.0;1;hex;;;;;;;;;\"0=door open;3=dry run\"\r\n"
    "name;C;9.0.1.10;3;string:8:utf8;;;;;;;;;\r\n"
    "ready;D;7.0.0;1;bit:3:rmw;;;;;;;;;\r\n";

} // namespace

class TestTagListValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aListOfAnotherCountryIsRead()
    {
        const TagListResult list = parseTagList(PLANT);
        QCOMPARE(shown(list.errors), QString());
        QCOMPARE(shown(list.warnings), QString());
        QCOMPARE(list.tags.size(), 7);
        QCOMPARE(list.lines, (QVector<int>{3, 4, 5, 6, 7, 8, 9}));
        const Tag &temperature = list.tags.at(0);
        QCOMPARE(temperature.form.type, ValueType::S16);
        QCOMPARE(temperature.form.order, WordOrder::Cdab);
        QCOMPARE(temperature.meaning[MeaningColumn::Scale], QString("0.1"));
        QCOMPARE(temperature.meaning[MeaningColumn::Unit], QString::fromUtf8("\xC2\xB0"
                                                                             "C"));
        QCOMPARE(temperature.meaning[MeaningColumn::Max], QString("150.5"));
        QCOMPARE(list.tags.at(2).form.order, WordOrder::Abcd);
        QCOMPARE(list.tags.at(3).meaning[MeaningColumn::Labels], QString("0=off;1=manual"));
        QCOMPARE(formText(list.tags.at(5).form), QString("string:8:utf8"));
        QCOMPARE(list.tags.at(5).form.order, WordOrder::Abcd); // words of a string are in order
        QVERIFY(list.tags.at(6).form.bitIsWritten);
    }

    void savedValuesComeBackEqual()
    {
        const TagListResult list = parseTagList(PLANT);
        const QByteArray saved = formatTagList(list.tags);
        QVERIFY2(saved.startsWith("name,area,address,station,type,description,order,scale,offset,"
                                  "unit,decimals,min,max,labels,bits\n"),
                 saved.constData());
        const TagListResult again = parseTagList(saved);
        QCOMPARE(shown(again.errors), QString());
        QCOMPARE(again.tags, list.tags);
    }

    void fieldsMayBePartedOtherwise_data()
    {
        QTest::addColumn<QByteArray>("csv");
        QTest::newRow("semicolons") << QByteArray("name;area;address;station;type;scale\n"
                                                  "a;D;5.2.1;1;u16;0,5\n");
        QTest::newRow("semicolons and a point")
            << QByteArray("name;area;address;station;type;scale\n"
                          "a;D;5.2.1;1;u16;0.5\n");
        QTest::newRow("tabs") << QByteArray("name\tarea\taddress\tstation\ttype\tscale\n"
                                            "a\tD\t5.2.1\t1\tu16\t0,5\n");
        QTest::newRow("comments, quotes, a mark") << QByteArray(
            "\xEF\xBB\xBF# plant; tank\n\n\"Area\";\"Name\";address;station;type;scale\n"
            "D;a;5.2.1;1;u16;\"0,5\"\n");
        QTest::newRow("comments that a spreadsheet has quoted")
            << QByteArray("\"# tanks; \"\"north\"\"\";;;;;\r\n;;;;;\r\n"
                          "name;area;address;station;type;scale\r\n"
                          "\"# pump; old\";;;;;\r\na;D;5.2.1;1;u16;0,5\r\n");
        QTest::newRow("sep= with empty cells behind")
            << QByteArray("sep=;;;;;\r\nname;area;address;station;type;scale\r\n"
                          "a;D;5.2.1;1;u16;0,5\r\n");
        QTest::newRow("sep=,") << QByteArray("sep=,\nname,area,address,station,type,scale\n"
                                             "a,D,5.2.1,1,u16,0.5\n");
        QTest::newRow("sep=TAB, quoted, CR")
            << QByteArray("\"SEP=\t\"\rname\tarea\taddress\tstation\ttype\tscale\r"
                          "a\tD\t5.2.1\t1\tu16\t0.5\r");
    }

    void fieldsMayBePartedOtherwise()
    {
        QFETCH(QByteArray, csv);
        const TagListResult list = parseTagList(csv);
        QCOMPARE(shown(list.errors), QString());
        QCOMPARE(list.tags.size(), 1);
        QCOMPARE(list.tags.at(0).meaning[MeaningColumn::Scale], QString("0.5"));
    }

    void wrongFieldsAreNamed_data()
    {
        QTest::addColumn<QByteArray>("row");
        QTest::addColumn<QString>("errors");
        QTest::newRow("order")
            << QByteArray("a,D,5.2.1,1,u16,abdc")
            << "t:2: column 6 \"order\": \"abdc\" is no order (abcd, badc, cdab or "
               "dcba)";
        QTest::newRow("order of a string")
            << QByteArray("a,D,5.2.1,1,string:4,cdab")
            << "t:2: column 6 \"order\": the words of a string are in order: abcd or badc";
        QTest::newRow("decimal comma among commas")
            << QByteArray("a,D,5.2.1,1,u16,,\"0,1\"")
            << "t:2: column 7 \"scale\": \"0,1\" has a comma where a point is needed";
        QTest::newRow("several")
            << QByteArray("a,D,5.2.1,1,u16,,x,99,,1=off;1=on")
            << "t:2: column 7 \"scale\": \"x\" is not a number\n"
               "t:2: column 8 \"decimals\": \"99\" is no number of decimals (0 to "
               "15)\n"
               "t:2: column 10 \"labels\": \"1\" is there twice";
        QTest::newRow("decimal comma without quotes")
            << QByteArray("a,D,5.2.1,1,u16,,0,1,,1=on,x")
            << "t:2: column 11: the header has no such column; a text with a comma must be quoted";
        QTest::newRow("beyond its block")
            << QByteArray("a,C,9.1.0.67,1,f32")
            << "t:2: column 3 \"address\": a value of type f32 takes 4 bytes from here on, but the "
               "block ends at 9.1.0.69";
        QTest::newRow("max on hex") << QByteArray("a,D,5.2.1,1,hex,,,,5")
                                    << "t:2: column 9 \"max\": values of type hex have none";
    }

    void wrongFieldsAreNamed()
    {
        QFETCH(QByteArray, row);
        const TagListResult list = parseTagList(
            "name,area,address,station,type,order,scale,decimals,max,labels\n" + row + '\n');
        QTEST(shown(list.errors), "errors");
        QVERIFY(list.tags.isEmpty());
    }

    void numbersAreNamedAsTheyStand()
    {
        const TagListResult list =
            parseTagList("name;area;address;station;type;scale;interval;deadband\n"
                         "a;D;5.2.1;1;u16;0,1x;0,5;1,5q\n");
        QCOMPARE(shown(list.errors),
                 QString("t:2: column 6 \"scale\": \"0,1x\" is not a number\n"
                         "t:2: column 7 \"interval\": \"0,5\" is no interval: a number with ms, s, "
                         "min or h, from 10 ms to a day\n"
                         "t:2: column 8 \"deadband\": \"1,5q\" is not a number"));
    }

    void aCommaIsNamedInTimesToo()
    {
        const TagListResult list =
            parseTagList("name,area,address,station,type,interval,hi,on_delay\n"
                         "a,D,5.2.1,1,u16,\"0,5s\",1,\"1,5s\"\n");
        QCOMPARE(
            shown(list.errors),
            QString("t:2: column 6 \"interval\": \"0,5s\" has a comma where a point is needed\n"
                    "t:2: column 8 \"on_delay\": \"1,5s\" has a comma where a point is needed"));
    }

    void labelsWithoutQuotesAreNamed()
    {
        const QByteArray rows("a;X;1.1.0;1;u8;0=aus;1=an\nb;X;1.2.0;1;u8;0=aus;1=an;2=auto;5s\n"
                              "c;X;1.3.0;1;u8;\"0=aus;1=an\";5s\n");
        const TagListResult list =
            parseTagList("name;area;address;station;type;labels;interval;unit\n" + rows);
        const QString text =
            " \"interval\": belongs to the labels: a text with a semicolon must be quoted";
        QCOMPARE(shown(list.errors), "t:2: column 7" + text + "\nt:3: column 7" + text);
        QCOMPARE(list.tags.size(), 1);
        const TagListResult bits =
            parseTagList("name;area;address;station;type;labels;bits\n"
                         "a;X;1.1.0;1;u8;0=aus;1=an\nb;X;1.1.0;1;u8;;1=an\n");
        QCOMPARE(shown(bits.errors),
                 QString("t:2: column 7 \"bits\": belongs to the labels: a text "
                         "with a semicolon must be quoted"));
        const TagListResult texts =
            parseTagList("name;area;address;station;type;labels;description\n"
                         "a;X;1.1.0;1;u8;0=aus;1=an\n");
        QCOMPARE(shown(texts.errors), QString());
    }

    void pointsThatMayPartThousandsAreNamed()
    {
        const QByteArray header("name;area;address;station;type;scale;max;deadband\n");
        const TagListResult points = parseTagList(header + "a;D;5.2.1;1;u16;0.125;1.000;1.500\n"
                                                           "b;D;5.3.1;1;u16;10.125;1.5;0\n");
        QCOMPARE(shown(points.errors), QString());
        QCOMPARE(shown(points.warnings.mid(0, 3)),
                 QString("t:2: column 7 \"max\": \"1.000\" is read as 1; if thousands are meant, "
                         "1000 is needed\n"
                         "t:2: column 8 \"deadband\": \"1.500\" is read as 1.5; if thousands are "
                         "meant, 1500 is needed\n"
                         "t:3: column 6 \"scale\": \"10.125\" is read as 10.125; if thousands are "
                         "meant, 10125 is needed"));
        const TagListResult commas = parseTagList(header + "a;D;5.2.1;1;u16;1;1.500;\n"
                                                           "b;D;5.3.1;1;u16;0,1;100.5;0.125\n");
        QCOMPARE(shown(commas.errors),
                 QString("t:2: column 7 \"max\": \"1.500\" may be 1500 or 1.5, since this list has "
                         "decimal commas: 1500 or 1,500 is needed"));
        QCOMPARE(commas.tags.size(), 1);
        const TagListResult plain =
            parseTagList("name,area,address,station,type,max\na,D,5.2.1,1,u16,1.000\n");
        QCOMPARE(shown(plain.errors) + shown(plain.warnings), QString());
    }

    void elementsThatGetInEachOthersWayAreNamed()
    {
        const TagListResult list =
            parseTagList("name,area,address,station,type\na,D,5.0.2,1,u16\nb,D,5.0.1,1,u32\n");
        QCOMPARE(shown(list.errors),
                 QString("t:3: column 3 \"address\": 5.1.0, which it takes too, would replace tag "
                         "\"a\" in the driver's read list: both have the same number (a*32 + b*2 + "
                         "c, in area D)"));
        const TagListResult shared = parseTagList(
            "name,area,address,station,type\na,D,5.2.0,1,u32\nb,D,5.2.1,1,u16\nc,D,5.2.1,1,f32\n");
        QCOMPARE(shown(shared.errors), QString());
    }

    void howWordsAreReadAndWrittenIsTheTags()
    {
        const QByteArray csv("name,area,address,station,type,torn,write_order\n"
                             "a,D,5.2.0,1,u32,accept,Down\nb,D,5.3.0,1,u32,refuse,up\n"
                             "c,D,5.4.0,1,u32,,\n");
        const TagListResult list = parseTagList(csv);
        QCOMPARE(shown(list.errors), QString());
        QVERIFY(list.tags.at(0).acceptsTorn && list.tags.at(0).isWrittenDown);
        for (const int plain : {1, 2})
            QVERIFY(!list.tags.at(plain).acceptsTorn && !list.tags.at(plain).isWrittenDown);
        QCOMPARE(parseTagList(formatTagList(list.tags)).tags, list.tags);
        const TagListResult wrong = parseTagList(
            "name,area,address,station,type,torn,write_order\na,D,5.2.0,1,u32,yes,left\n");
        QCOMPARE(shown(wrong.errors),
                 QString("t:2: column 6 \"torn\": \"yes\" is neither refuse nor accept\n"
                         "t:2: column 7 \"write_order\": \"left\" is neither up nor down"));
    }

    void unknownColumnsAreWarnedOf()
    {
        const TagListResult list = parseTagList(
            "name,area,address,station,type,,scal,Einheit,lables,rawlow\na,D,5.2.1,1,u16,,,,,\n");
        QCOMPARE(shown(list.errors), QString());
        QCOMPARE(list.tags.size(), 1);
        QCOMPARE(shown(list.warnings),
                 QString("t:1: column 7 \"scal\": is not known; is \"scale\" meant?\n"
                         "t:1: column 8 \"Einheit\": is not known\n"
                         "t:1: column 9 \"lables\": is not known; is \"labels\" meant?\n"
                         "t:1: column 10 \"rawlow\": is not known; is \"raw_low\" meant?"));
    }

    void doubtfulFieldsAreWarnedOf()
    {
        const TagListResult list =
            parseTagList("name,area,address,station,type,scale,decimals\na,D,5.2.1,1,u16,0.01,1\n");
        QCOMPARE(shown(list.errors), QString());
        QCOMPARE(list.tags.size(), 1);
        QCOMPARE(
            shown(list.warnings),
            QString("t:2: column 7 \"decimals\": 1 decimal shows different raw values as one; 2 "
                    "would not"));
    }

    void aWrongDefaultOrderIsNamed()
    {
        const TagListResult list =
            parseTagList("name,area,address,station,type,order=abc\na,D,5.2.1,1,u16,\n");
        QCOMPARE(shown(list.errors), QString("t:1: column 6 \"order\": \"abc\" is no order (abcd, "
                                             "badc, cdab or dcba)"));
    }

    void aDamagedListIsRefusedWithAPlaceOrReadAsItStands()
    {
        QCOMPARE(faultAtDamage(PLANT, tagListFault), QString());
    }
};

QTEST_GUILESS_MAIN(TestTagListValues)
#include "tst_tag_list_values.moc"
