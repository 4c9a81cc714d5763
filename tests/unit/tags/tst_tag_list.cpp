// Tag lists: reading, refusing, saving.
#include "tags/tag_list.h"

#include "tests/support/damage.h"
#include "tests/support/tag_list_fault.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace kvt;

namespace
{

constexpr char HEADER[] = "name,area,address,station,type,description\n";

/// Returns all errors, one a line, as they are shown for the file "t".
QString errorsOf(const TagListResult &result)
{
    QStringList texts;
    for (const TagError &error : result.errors)
        texts.append(formatTagError(QStringLiteral("t"), error));
    return texts.join(QLatin1Char('\n'));
}

QVector<Tag> sampleTags()
{
    return {{QStringLiteral("level"), Area::D, QStringLiteral("5.2.1"), 1, ValueType::U16,
             QStringLiteral("tank, \"north\"")},
            {QString::fromUtf8("Füllstand 2"), Area::D, QStringLiteral("5.2.0"), 255,
             ValueType::S16, QString()},
            {QStringLiteral("pump"), Area::X, QStringLiteral("1.0.0"), 1, ValueType::Bool,
             QStringLiteral("two\nlines")},
            {QStringLiteral("#1"), Area::X, QStringLiteral("1.0.1"), 1, ValueType::Bool,
             QStringLiteral("# no comment")},
            {QStringLiteral(" text "), Area::C, QStringLiteral("9.1.1.69"), 0, ValueType::Hex,
             QStringLiteral("\r\n")}};
}

} // namespace

class TestTagList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTableIsRead_data()
    {
        QTest::addColumn<QByteArray>("csv");
        const QByteArray row = "level,D,5.2.1,1,u16,\"tank, north\"\n";
        QTest::newRow("plain") << HEADER + row;
        QTest::newRow("byte order mark") << "\xEF\xBB\xBF" + QByteArray(HEADER) + row;
        QTest::newRow("CRLF") << QByteArray(HEADER + row).replace("\n", "\r\n");
        QTest::newRow("no final line end") << (HEADER + row).chopped(1);
        QTest::newRow("blank lines") << QByteArray("\n\n") + HEADER + "\n , \n" + row + "\n\n";
        QTest::newRow("lines of comment")
            << QByteArray("# tanks, \"north\n") + HEADER + "#name;x\n  # more\n" + row + "#";
        QTest::newRow("all quoted")
            << QByteArray("\"name\",\"area\",\"address\",\"station\",\"type\",\"description\"\n"
                          "\"level\",\"D\",\"5.2.1\",\"1\",\"u16\",\"tank, north\"\n");
        QTest::newRow("other order") << QByteArray("station,type,description,name,address,area\n"
                                                   "1,u16,\"tank, north\",level,5.2.1,D\n");
        QTest::newRow("other columns, other case")
            << QByteArray("No,Name,AREA,Address,Station,Type,Description,By\n"
                          "7,level,D,5.2.1,1,u16,\"tank, north\",me\n");
        QTest::newRow("empty columns behind")
            << QByteArray("name,area,address,station,type,description,,\nlevel,D,5.2.1,1,u16,"
                          "\"tank, north\",,,,\n");
    }

    void aTableIsRead()
    {
        QFETCH(QByteArray, csv);
        const TagListResult result = parseTagList(csv);
        QCOMPARE(errorsOf(result), QString());
        const Tag expected = {QStringLiteral("level"), Area::D,
                              QStringLiteral("5.2.1"), 1,
                              ValueType::U16,          QStringLiteral("tank, north")};
        QCOMPARE(result.tags, QVector<Tag>{expected});
    }

    void descriptionMayBeLeftOut()
    {
        const TagListResult whole =
            parseTagList("name,area,address,station,type\na,X,0.0.0,0,hex\n");
        QCOMPARE(errorsOf(whole), QString());
        QCOMPARE(whole.tags.size(), 1);
        const TagListResult cell = parseTagList(QByteArray(HEADER) + "a,X,0.0.0,0,hex\n");
        QCOMPARE(errorsOf(cell), QString());
        QCOMPARE(cell.tags, whole.tags);
    }

    void badTablesAreRefused_data()
    {
        QTest::addColumn<QByteArray>("csv");
        QTest::addColumn<QString>("errors");
        QTest::newRow("nothing") << QByteArray() << "t: there is no header line";
        QTest::newRow("blank lines alone") << QByteArray("\n \n") << "t: there is no header line";
        QTest::newRow("missing columns") << QByteArray("\nname,address,station,type\n")
                                         << "t:2: column \"area\" is missing from the header";
        QTest::newRow("UTF-16") << QByteArray("\xFF\xFEn\0a\0m\0e\0", 10)
                                << "t: is UTF-16 text; UTF-8 is needed";
        QTest::newRow("column twice") << QByteArray("name,area,address,station,type,Name\n")
                                      << "t:1: column 6 \"Name\": this column is there twice";
        QTest::newRow("a line sep= that the header does not keep to")
            << QByteArray("sep=,\nname;area;address;station;type\na;D;5.2.1;1;u16\n")
            << "t:2: is parted by semicolons, but the line \"sep=\" above says commas";
        QTest::newRow("stray quote in the header")
            << QByteArray("na\"me,area\n") << "t:1: column 1: a quote stands where none may be";
    }

    void badTablesAreRefused()
    {
        QFETCH(QByteArray, csv);
        const TagListResult result = parseTagList(csv);
        QCOMPARE(result.tags.size(), 0);
        QTEST(errorsOf(result), "errors");
    }

    void badRowsAreNamedByLineAndColumn_data()
    {
        QTest::addColumn<QByteArray>("row");
        QTest::addColumn<QString>("errors");
        QTest::newRow("no name") << QByteArray(",D,5.2.1,1,u16")
                                 << "t:2: column 1 \"name\": a name is missing";
        QTest::newRow("blank name")
            << QByteArray("\" \",D,5.2.1,1,u16") << "t:2: column 1 \"name\": a name is missing";
        QTest::newRow("name with a NUL")
            << QByteArray("a\0b,D,5.2.1,1,u16", 17)
            << "t:2: column 1 \"name\": a name may have no control characters";
        QTest::newRow("name with an escape")
            << QByteArray("a\x1B[2J,D,5.2.1,1,u16")
            << "t:2: column 1 \"name\": a name may have no control characters";
        QTest::newRow("name of two lines")
            << QByteArray("\"a\nb\",D,5.2.1,1,u16")
            << "t:2: column 1 \"name\": a name may have no control characters";
        QTest::newRow("more fields than a row has")
            << QByteArray("a,D,5.2.1,1,u16" + QByteArray(252, ','))
            << "t:2: column 257: a row may have 256 fields";
        QTest::newRow("area") << QByteArray("a,E,5.2.1,1,u16")
                              << "t:2: column 2 \"area\": \"E\" is no area (X, D or C)";
        QTest::newRow("area in lower case")
            << QByteArray("a,d,5.2.1,1,u16")
            << "t:2: column 2 \"area\": \"d\" is no area (X, D or C)";
        QTest::newRow("address") << QByteArray("a,D,5.16.1,1,u16")
                                 << "t:2: column 3 \"address\": field 2 is 16, not 0 to 15";
        QTest::newRow("station 256")
            << QByteArray("a,D,5.2.1,256,u16")
            << "t:2: column 4 \"station\": \"256\" is no station (0 to 255)";
        QTest::newRow("no station") << QByteArray("a,D,5.2.1,,u16")
                                    << "t:2: column 4 \"station\": \"\" is no station (0 to 255)";
        QTest::newRow("signed station")
            << QByteArray("a,D,5.2.1,+1,u16")
            << "t:2: column 4 \"station\": \"+1\" is no station (0 to 255)";
        QTest::newRow("negative station")
            << QByteArray("a,D,5.2.1,-1,u16")
            << "t:2: column 4 \"station\": \"-1\" is no station (0 to 255)";
        QTest::newRow("type") << QByteArray("a,D,5.2.1,1,float")
                              << "t:2: column 5 \"type\": \"float\" is no type (bool, u8, s8, u16, "
                                 "s16, hex, u32, s32, f32, u64, s64, "
                                 "f64, bcd16, bcd32, string:N, string:N:utf8, bit:N or bit:N:rmw)";
        QTest::newRow("row that ends early") << QByteArray("a,D,5.2.1,1")
                                             << "t:2: column 5 \"type\": is missing: the row has "
                                                "only 4 of the header's 6 fields";
        QTest::newRow("X u16") << QByteArray("a,X,5.2.1,1,u16")
                               << "t:2: column 5 \"type\": type u16 does not fit area X";
        QTest::newRow("X s16") << QByteArray("a,X,5.2.1,1,s16")
                               << "t:2: column 5 \"type\": type s16 does not fit area X";
        QTest::newRow("D u8") << QByteArray("a,D,5.2.1,1,u8")
                              << "t:2: column 5 \"type\": type u8 does not fit area D";
        QTest::newRow("X f32") << QByteArray("a,X,5.2.1,1,f32")
                               << "t:2: column 5 \"type\": type f32 does not fit area X";
        QTest::newRow("comma without quotes")
            << QByteArray("a,D,5.2.1,1,u16,tank, north")
            << "t:2: column 7: the header has no such column; a text with a comma must be quoted";
        QTest::newRow("what a comma without quotes has shifted")
            << QByteArray("tank, north,D,5.2.1,1,u16,x")
            << "t:2: column 7: the header has no such column; a text with a comma must be quoted";
        QTest::newRow("not UTF-8") << QByteArray("a\xFF,D,5.2.1,1,u16")
                                   << "t:2: column 1 \"name\": is not UTF-8 text: save the list as "
                                      "\"CSV UTF-8\" (told once)";
        QTest::newRow("UTF-8 that ends early")
            << QByteArray("a,D,5.2.1,1,u16,\xC3")
            << "t:2: column 6 \"description\": is not UTF-8 text: save the list as \"CSV UTF-8\" "
               "(told once)";
        QTest::newRow("several in one row")
            << QByteArray("a,D,5.2.300,x,u8")
            << "t:2: column 3 \"address\": field 3 is 300, not 0 or 1 (2 to 255 where field 2 is "
               "0)\n"
               "t:2: column 4 \"station\": \"x\" is no station (0 to 255)\n"
               "t:2: column 5 \"type\": type u8 does not fit area D";
    }

    void badRowsAreNamedByLineAndColumn()
    {
        QFETCH(QByteArray, row);
        const TagListResult result = parseTagList(HEADER + row + '\n');
        QCOMPARE(result.tags.size(), 0);
        QTEST(errorsOf(result), "errors");
    }

    void textOfAnotherEncodingIsToldOnce()
    {
        const TagListResult result =
            parseTagList(QByteArray(HEADER) + "Beh\xE4lter,D,5.2.1,1,u16,F\xFCllstand\n"
                                              "T\xFCr,X,1.0.0,1,bool,\nb,Y,5.2.0,1,u16,\n");
        QCOMPARE(errorsOf(result),
                 QString("t:2: column 1 \"name\": is not UTF-8 text: save the list as \"CSV "
                         "UTF-8\" (told once)\n"
                         "t:4: column 2 \"area\": \"Y\" is no area (X, D or C)"));
        QCOMPARE(result.tags.size(), 0);
    }

    void allErrorsAreReportedAndGoodTagsKept()
    {
        const TagListResult result = parseTagList(QByteArray(HEADER) + "a,D,5.2.1,1,u16,\"two\n"
                                                                       "lines\"\n"
                                                                       "\n"
                                                                       "a,D,5.2.0,1,u16,\n"
                                                                       "b,Y,5.2.0,1,u16,\n"
                                                                       "c,X,1.0.0,1,bool,\n"
                                                                       "d,X,\"1.0.0\n");
        QCOMPARE(errorsOf(result),
                 QString("t:5: column 1 \"name\": \"a\" is the name of line 2 already\n"
                         "t:6: column 2 \"area\": \"Y\" is no area (X, D or C)\n"
                         "t:8: column 3 \"address\": a quoted field is not closed"));
        QCOMPARE(result.tags.size(), 2);
        QCOMPARE(result.tags[1].name, QString("c"));
    }

    void tagsThatGetInEachOthersWayAreRefused_data()
    {
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        QTest::addColumn<QString>("text");
        const QString entry =
            "would replace tag \"a\" in the driver's read list: both have the same number";
        const QString blocks = entry + " (b*160 + c*80 without a and d, in area C)";
        const QString nextArea = "; station 255 of an area counts as station 0 of the next)";
        QTest::newRow("C blocks of two commands")
            << QByteArray("C,9.1.1.5,1,u8") << QByteArray("C,0.1.1.5,1,u8") << blocks;
        QTest::newRow("C blocks of two commands, other elements")
            << QByteArray("C,9.1.1.5,1,u8") << QByteArray("C,0.1.1.6,1,u8") << blocks;
        QTest::newRow("X of station 255 and D of station 0")
            << QByteArray("X,1.2.1,255,u8") << QByteArray("D,1.2.1,0,u16")
            << entry + " (a*32 + b*2 + c, in area D" + nextArea;
        QTest::newRow("D of station 255 and C of station 0")
            << QByteArray("D,5.0.0,255,u16") << QByteArray("C,0.1.0.0,0,u8")
            << entry + " (b*160 + c*80 without a and d, in area C" + nextArea;
        QTest::newRow("address byte and parts of one number")
            << QByteArray("D,5.0.2,1,u16") << QByteArray("D,5.1.0,1,u16")
            << entry + " (a*32 + b*2 + c, in area D)";
        QTest::newRow("one frame for X and D")
            << QByteArray("X,5.2.1,1,u8") << QByteArray("D,5.2.1,1,u16")
            << "is read with the same frame as tag \"a\" of area X";
        QTest::newRow("one frame for D and C")
            << QByteArray("D,5.2.1,1,u16") << QByteArray("C,5.2.1.0,1,u8")
            << "is read with the same frame as tag \"a\" of area D";
        QTest::newRow("one frame for two writes")
            << QByteArray("X,5.0.1,1,u8") << QByteArray("X,5.0.9,1,u8")
            << "is written with the same frame as tag \"a\"";
    }

    void tagsThatGetInEachOthersWayAreRefused()
    {
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, second);
        QFETCH(QString, text);
        const TagListResult result = parseTagList(HEADER + ("a," + first) + "\nb," + second + "\n");
        QCOMPARE(errorsOf(result), "t:3: column 3 \"address\": " + text);
        QCOMPARE(result.tags.size(), 1);
    }

    void tagsThatShareACellAreGood_data()
    {
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        QTest::newRow("one address") << QByteArray("D,5.2.1,1,u16") << QByteArray("D,5.2.1,1,hex");
        QTest::newRow("one address written otherwise")
            << QByteArray("D,5.2.1,1,u16") << QByteArray("D,05.2.1,1,u16");
        QTest::newRow("one C element")
            << QByteArray("C,9.1.1.5,1,u8") << QByteArray("C,9.1.1.5,1,hex");
        QTest::newRow("one C block")
            << QByteArray("C,9.1.1.5,1,u8") << QByteArray("C,9.1.1.6,1,u8");
        QTest::newRow("two stations") << QByteArray("D,5.2.1,1,u16") << QByteArray("D,5.2.1,2,u16");
        QTest::newRow("two areas, two frames")
            << QByteArray("D,5.2.1,1,u16") << QByteArray("X,5.2.0,1,u8");
        QTest::newRow("writes of a byte and of a word")
            << QByteArray("X,5.0.1,1,u8") << QByteArray("D,5.0.9,1,u16");
    }

    void tagsThatShareACellAreGood()
    {
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, second);
        const TagListResult result = parseTagList(HEADER + ("a," + first) + "\nb," + second + "\n");
        QCOMPARE(errorsOf(result), QString());
        QCOMPARE(result.tags.size(), 2);
    }

    void blocksThatCannotBePolledTogetherAreNamed()
    {
        const TagListResult good = parseTagList(
            QByteArray(HEADER) + "a,C,9.1.1.5,1,u8\nb,D,5.2.0,1,u16\nc,C,8.1.0.0,2,u8\n");
        QVERIFY(pollErrors(good).isEmpty());
        const TagListResult list = parseTagList(
            QByteArray(HEADER) + "a,C,9.1.1.5,1,u8\nb,D,5.2.0,1,u16\nc,C,8.3.0.0,2,u8\n");
        QCOMPARE(errorsOf(list), QString());
        const QVector<TagError> errors = pollErrors(list);
        QCOMPARE(errors.size(), 1);
        QCOMPARE(formatTagError(QStringLiteral("t"), errors.first()),
                 QString("t:4: column 3 \"address\": field 2 is 3, but 1 in tag \"a\": all tags of "
                         "area C that are polled together must have the same"));
    }

    void savedListsComeBackEqual()
    {
        const QTemporaryDir directory;
        const QString path = directory.filePath(QStringLiteral("tags.csv"));
        QString error;
        QVERIFY2(saveTagList(path, sampleTags(), &error), qPrintable(error));
        const TagListResult loaded = loadTagList(path);
        QCOMPARE(errorsOf(loaded), QString());
        QCOMPARE(loaded.tags, sampleTags());
        const QByteArray saved = formatTagList(loaded.tags);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), saved);
    }

    void theFirstHundredErrorsAreNamed()
    {
        QByteArray csv(HEADER);
        for (int i = 0; i < 500; ++i)
            csv += "n" + QByteArray::number(i) + ",E,1.1.1,1,u16\n";
        const TagListResult result = parseTagList(csv);
        QCOMPARE(result.errors.size(), 101);
        QCOMPARE(result.errors.last().line, 102);
        QCOMPARE(result.errors.last().text, QString("there are too many errors; the list was not "
                                                    "read from here on"));
    }

    void aListBeyondAllSizeIsNotRead()
    {
        const TagListResult endless = loadTagList(QStringLiteral("/dev/zero"));
        QCOMPARE(errorsOf(endless), QString("t: is larger than 32 MiB"));
    }

    void aListThatCannotBeReadSaysSo()
    {
        const QTemporaryDir directory;
        const TagListResult missing = loadTagList(directory.filePath(QStringLiteral("none.csv")));
        QCOMPARE(errorsOf(missing), QString("t: cannot be read: No such file or directory"));
        const TagListResult folder = loadTagList(directory.path());
        QCOMPARE(folder.errors.size(), 1);
        QVERIFY(folder.errors[0].text.startsWith(QLatin1String("cannot be read: ")));
    }

    void aListThatCannotBeSavedSaysSo()
    {
        const QTemporaryDir directory;
        const QString path = directory.filePath(QStringLiteral("none/tags.csv"));
        QString error;
        QVERIFY(!saveTagList(path, sampleTags(), &error));
        QCOMPARE(error, QString("No such file or directory"));
        QVERIFY(!saveTagList(path, sampleTags(), nullptr));
    }

    void aDamagedListIsRefusedWithAPlaceOrReadAsItStands()
    {
        QCOMPARE(faultAtDamage(QByteArray(HEADER) + "level,D,5.2.1,1,u16,\"tank, north\"\n"
                                                    "valve,X,1.2.0,255,bool,\n",
                               tagListFault),
                 QString());
    }
};

QTEST_GUILESS_MAIN(TestTagList)
#include "tst_tag_list.moc"
