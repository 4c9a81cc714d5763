// kvt decode of frames, and kvt explain.
#include "tests/support/kvt_process.h"

#include <QJsonArray>
#include <QTemporaryDir>
#include <QtTest>

namespace
{

QJsonObject decoded(const QString &frame)
{
    KvtProcess kvt;
    return kvt.run({QStringLiteral("decode"), QStringLiteral("--json"), frame}) == 0
               ? kvt.readObject()
               : QJsonObject();
}

QString problemsOf(const QJsonObject &frame)
{
    QStringList problems;
    for (const QJsonValue &problem : frame.value(QStringLiteral("problems")).toArray())
        problems.append(problem.toString());
    return problems.join(QStringLiteral("; "));
}

} // namespace

class TestKvtDecode : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesBecomeObjectsOfJson_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("station");
        QTest::addColumn<QString>("part"); // of the summary
        QTest::addColumn<QString>("problem");
        QTest::newRow("05 30 31 30 35 32 38 0D") << "request" << 1 << "read of 5.2.1"
                                                 << "";
        QTest::newRow("06 30 31 31 61 0D") << "reply" << 1 << "unreadable"
                                           << "value: 31 61 are not";
        QTest::newRow("15 30 31 0D") << "refusal" << 1 << "refused"
                                     << "";
    }

    void framesBecomeObjectsOfJson()
    {
        QFETCH(QString, kind);
        QFETCH(int, station);
        QFETCH(QString, part);
        QFETCH(QString, problem);
        const QString frame = QLatin1String(QTest::currentDataTag());
        const QJsonObject object = decoded(frame);
        QCOMPARE(object.value(QStringLiteral("frame")).toString(), frame);
        QCOMPARE(object.value(QStringLiteral("kind")).toString(), kind);
        QCOMPARE(object.value(QStringLiteral("station")).toInt(), station);
        QVERIFY(object.value(QStringLiteral("text")).toString().contains(part));
        const QString problems = problemsOf(object);
        QVERIFY2(problem.isEmpty() ? problems.isEmpty() : problems.contains(problem),
                 qPrintable(problems));
        QVERIFY(object.value(QStringLiteral("fields")).toArray().size() >= 3);
    }

    void aReplyIsHeldAgainstItsRequest()
    {
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("decode"), QStringLiteral("053031303132314646 0D"),
                          QStringLiteral("063032 3231 0D")}),
                 0);
        const QByteArray text = kvt.output();
        QVERIFY2(text.contains("reply: acknowledgement of the write, from station 2 (6 bytes)\n"),
                 text);
        QVERIFY2(
            text.contains("  wrong: the request was for station 1, the reply names station 2\n"),
            text);
    }

    void aRequestNamesItsTags()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("tags.csv")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("name,area,address,station,type\nlevel,D,5.2.1,1,u16\nother,D,5.2.1,2,u16\n"
                   "recipe,C,5.3.0.4,1,u8\nvalve,X,5.4.0,1,bool\n");
        file.close();
        KvtProcess kvt;
        QCOMPARE(
            kvt.run({QStringLiteral("decode"), QStringLiteral("--tags"), file.fileName(),
                     QStringLiteral("053031303532380D"), QStringLiteral("053031303533300D"),
                     QStringLiteral("0530313035343130310D"), QStringLiteral("053031303534300D")}),
            0);
        QVERIFY(kvt.readLineWith("request: ").contains("at station 1: level (D) (8 bytes)"));
        QVERIFY(kvt.readLineWith("request: ").contains("at station 1: recipe (C) (8 bytes)"));
        QVERIFY(kvt.readLineWith("request: ")
                    .contains("at station 1: valve (X): valve = 1 (10 bytes)"));
        QVERIFY(kvt.readLineWith("request: ").contains("at station 1: valve (X) (8 bytes)"));
    }

    void repliesAndWritesTellTheValuesOfTags_data()
    {
        QTest::addColumn<QStringList>("frames");
        QTest::addColumn<QString>("said"); // behind the station of the last one
        const QString block =
            QStringLiteral("063031") +
            QString(8, QLatin1Char('0')).replace(QLatin1Char('0'), QStringLiteral("30")) +
            QStringLiteral("3043") +
            QString(130, QLatin1Char('0')).replace(QLatin1Char('0'), QStringLiteral("30")) +
            QStringLiteral("0D");
        QTest::newRow("one word") << QStringList{"053031303532380D", "0630313030 4436 0D"}
                                  << ": level = 21.4 °C (214)";
        QTest::newRow("an element of a block")
            << QStringList{"053031303533300D", block} << ": recipe = 6.0 (12)";
        QTest::newRow("first word")
            << QStringList{"053031303630300D", "063031303036340D"} << ": energy, word 1 of 2";
        QTest::newRow("both words") << QStringList{"053031303630300D", "063031303036340D",
                                                   "053031303630380D", "063031303030310D"}
                                    << ": energy = 6563.6 kWh (65636)"; // 0001 0064
        QTest::newRow("first word again")
            << QStringList{"053031303630300D", "063031303036340D", "053031303630380D",
                           "063031303030310D", "053031303630300D", "063031303036340D"}
            << ": energy, word 1 of 2";
        QTest::newRow("written word")
            << QStringList{"05303130353239303044360D"} << ": level (D): level = 21.4 °C (214)";
        QTest::newRow("first written word")
            << QStringList{"05303130363031303037440D"} << ": energy (D, word 1 of 2)";
        QTest::newRow("both written words")
            << QStringList{"05303130363031303037440D", "05303130363039303030300D"}
            << ": energy (D, word 2 of 2): energy = 12.5 kWh (125)";
        QTest::newRow("another area") << QStringList{"053031303532380D", "06303130310D"} << "";
        QTest::newRow("no request") << QStringList{"063031303044360D"} << "";
        QTest::newRow("acknowledgement")
            << QStringList{"05303130353239303044360D", "06303130310D"} << "";
    }

    void repliesAndWritesTellTheValuesOfTags()
    {
        QFETCH(QStringList, frames);
        QFETCH(QString, said);
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("tags.csv")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("name,area,address,station,type,order,scale,unit\n"
                   "level,D,5.2.1,1,s16,,0.1,°C\nrecipe,C,5.3.0.4,1,u8,,0.5,\n"
                   "energy,D,6.0.0,1,u32,cdab,0.1,kWh\n");
        file.close();
        KvtProcess kvt;
        QCOMPARE(kvt.run(QStringList{QStringLiteral("decode"), QStringLiteral("--json"),
                                     QStringLiteral("--tags"), file.fileName()} +
                         frames),
                 0);
        const QByteArrayList lines = kvt.output().trimmed().split('\n');
        const QJsonObject last = QJsonDocument::fromJson(lines.at(frames.size() - 1)).object();
        QCOMPARE(problemsOf(last), QString());
        const QString text = last.value(QStringLiteral("text")).toString();
        QCOMPARE(text.section(QStringLiteral("station 1"), 1), said);
        const QJsonArray values = last.value(QStringLiteral("values")).toArray();
        QCOMPARE(values.size(), said.contains(QLatin1Char('=')) ? 1 : 0);
        if (values.isEmpty())
            return;
        const QJsonObject value = values.first().toObject();
        QVERIFY2(said.contains(value.value(QStringLiteral("name")).toString() +
                               QStringLiteral(" = ") +
                               value.value(QStringLiteral("text")).toString()),
                 lines.last());
        QVERIFY(
            said.endsWith(QStringLiteral("(%1)").arg(value.value(QStringLiteral("raw")).toInt())));
    }

    void framesAreReadFromStandardInput()
    {
        QProcess kvt;
        kvt.start(QStringLiteral(KVT_PROGRAM),
                  {QStringLiteral("decode"), QStringLiteral("--json"), QStringLiteral("-")});
        kvt.write("05 30 31 30 35 32 38 0D\n\n0630313132 41420d\n");
        kvt.closeWriteChannel();
        QVERIFY(kvt.waitForFinished());
        QCOMPARE(kvt.exitCode(), 0);
        const QByteArrayList lines = kvt.readAllStandardOutput().trimmed().split('\n');
        QCOMPARE(lines.size(), 3);
        for (const QByteArray &line : lines)
            QVERIFY(QJsonDocument::fromJson(line).isObject());
    }

    void standardInputWithoutFramesIsAnError()
    {
        QProcess kvt;
        kvt.start(QStringLiteral(KVT_PROGRAM), {QStringLiteral("decode"), QStringLiteral("-")});
        kvt.write("\n");
        kvt.closeWriteChannel();
        QVERIFY(kvt.waitForFinished());
        QCOMPARE(kvt.exitCode(), 2);
        QCOMPARE(kvt.readAllStandardError(),
                 QByteArray("kvt: decode: there is no frame on standard input\n"));
    }

    void slipsOfTheHandAreRecognized()
    {
        QCOMPARE(faultAtBadInput({QStringLiteral("sacn")}, QStringLiteral("is \"scan\" meant?")),
                 QString());
        QCOMPARE(faultAtBadInput(
                     {QStringLiteral("decode"), QStringLiteral("--staton"), QStringLiteral("1")},
                     QStringLiteral("is \"--station\" meant?")),
                 QString());
    }

    void badInputOfDecodeIsNamedInOneLine_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("named");
        QTest::newRow("no range") << QStringList{"--exchanges", "5-2", KVT_PROGRAM}
                                  << QString("--exchanges");
        QTest::newRow("no number")
            << QStringList{"--exchanges", "0", KVT_PROGRAM} << QString("--exchanges");
        QTest::newRow("no station")
            << QStringList{"--station", "256", KVT_PROGRAM} << QString("--station");
        QTest::newRow("no time of day")
            << QStringList{"--from", "3", KVT_PROGRAM} << QString("--from: \"3\"");
        QTest::newRow("no such time")
            << QStringList{"--to", "25:00", KVT_PROGRAM} << QString("--to: \"25:00\"");
        QTest::newRow("a date alone") << QStringList{"--from", "2026-11-21", KVT_PROGRAM}
                                      << QString("--from: \"2026-11-21\"");
        QTest::newRow("no such day") << QStringList{"--from", "2026-02-30T03:00", KVT_PROGRAM}
                                     << QString("--from: \"2026-02-30T03:00\"");
        QTest::newRow("a time without a trace")
            << QStringList{"--to", "03:00", "05"} << QString("\"05\" is no file");
        QTest::newRow("standard input is no trace")
            << QStringList{"--failures", "-"} << QString("\"-\" is no file");
        QTest::newRow("no trace to choose from")
            << QStringList{"--failures", "05"} << QString("\"05\"");
        QTest::newRow("nothing") << QStringList() << QString("decode");
        QTest::newRow("no digits") << QStringList{"0G"} << QString("\"0G\"");
        QTest::newRow("half a byte") << QStringList{"05303"} << QString("\"05303\": half a byte");
        QTest::newRow("no such file") << QStringList{"missing.trace"} << QString("missing.trace");
        QTest::newRow("no trace") << QStringList{KVT_PROGRAM} << QString("line 1");
        QTest::newRow("too long") << QStringList{QString(8194, '0')} << QString("4096");
        QTest::newRow("an option") << QStringList{"--frobnicate"} << QString("frobnicate");
        QTest::newRow("no tag list")
            << QStringList{"--tags", "missing.csv", "05"} << QString("missing.csv");
    }

    void badInputOfDecodeIsNamedInOneLine()
    {
        QFETCH(QStringList, words);
        QFETCH(QString, named);
        QCOMPARE(faultAtBadInput(QStringList(QStringLiteral("decode")) + words, named), QString());
    }

    void codesAreExplained_data()
    {
        QTest::addColumn<QByteArray>("parts"); // parted by |
        QTest::newRow("0") << QByteArray("0: this attempt failed and will be repeated");
        QTest::newRow("1") << QByteArray("1: success");
        QTest::newRow("11") << QByteArray(
            "11: the reply was refused|requester 0|check the address");
        QTest::newRow("22") << QByteArray("22: the reply was refused|requester 11\n");
        QTest::newRow("41") << QByteArray(
            "41: no reply in time, or none that could be trusted|requester 0|"
            "check cable|a second master or program on the line");
        QTest::newRow("52") << QByteArray("52: no reply in time, |requester 11\n");
        QTest::newRow("73") << QByteArray(
            "73: the reply had the wrong length|refusal (NAK)|requester 2\n");
        QTest::newRow("100") << QByteArray("100: success of a request to another PLC");
        QTest::newRow("111") << QByteArray("111: the reply was refused|another PLC|requester 0");
        QTest::newRow("141") << QByteArray("141: no reply from the other PLC|requester 0");
        QTest::newRow("182") << QByteArray("182: the reply had the wrong length|requester 11\n");
        QTest::newRow("200") << QByteArray("200: failed for an unknown reason");
    }

    void codesAreExplained()
    {
        QFETCH(QByteArray, parts);
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("explain"), QLatin1String(QTest::currentDataTag())}), 0);
        const QByteArray text = kvt.output();
        for (const QByteArray &part : parts.split('|'))
            QVERIFY2(text.contains(part), text);
    }

    void codesAreExplainedAsJson()
    {
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("explain"), QStringLiteral("--json"), QStringLiteral("1"),
                          QStringLiteral("43")}),
                 0);
        const QJsonObject success = kvt.readObject();
        QCOMPARE(success.value(QStringLiteral("result")).toInt(), 1);
        QCOMPARE(success.value(QStringLiteral("ok")).toBool(), true);
        const QJsonObject failure = kvt.readObject();
        QCOMPARE(failure.value(QStringLiteral("result")).toInt(), 43);
        QCOMPARE(failure.value(QStringLiteral("ok")).toBool(true), false);
        QCOMPARE(failure.value(QStringLiteral("requester")).toString(),
                 QStringLiteral("requester 2"));
        QVERIFY(failure.value(QStringLiteral("checks")).toArray().size() > 2);
    }

    void badInputOfExplainIsNamedInOneLine_data()
    {
        QTest::addColumn<QString>("word");
        for (const char *word : {"", "5", "10", "23", "40", "53", "101", "183", "201", "x", "1.0",
                                 "99999999999", "--frobnicate"})
            QTest::newRow(word) << QString::fromLatin1(word);
    }

    void badInputOfExplainIsNamedInOneLine()
    {
        QFETCH(QString, word);
        QCOMPARE(faultAtBadInput({QStringLiteral("explain"), word},
                                 word.mid(word.lastIndexOf(QLatin1Char('-')) + 1)),
                 QString());
    }

    void goodCodesAreExplainedBesideWrongOnes()
    {
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("explain"), QStringLiteral("1"), QStringLiteral("201"),
                          QStringLiteral("200")}),
                 2);
        const QByteArray text = kvt.output();
        QVERIFY2(text.startsWith("1: success") && text.contains("\n200: failed"), text);
        QVERIFY(kvt.errors().startsWith("kvt: explain: \"201\" is no result code"));
    }

    void helpNamesTheOptions_data()
    {
        QTest::addColumn<QByteArrayList>("options");
        QTest::newRow("decode") << QByteArrayList{"--tags", "--json", "FRAME"};
        QTest::newRow("explain") << QByteArrayList{"--json", "CODE"};
        QTest::newRow("replay") << QByteArrayList{"--json", "--driver", "FILE"};
        QTest::newRow("plan") << QByteArrayList{"--tags",    "--baud",   "--format", "--turnaround",
                                                "--timeout", "--writes", "--asked",  "--overhead",
                                                "--retries", "--json"};
        QTest::newRow("tune") << QByteArrayList{"--tags", "--exchanges", "--margin", "--serial",
                                                "--tcp",  "--trace",     "--json"};
    }

    void helpNamesTheOptions()
    {
        QFETCH(QByteArrayList, options);
        KvtProcess kvt;
        QCOMPARE(kvt.run({QLatin1String(QTest::currentDataTag()), QStringLiteral("--help")}), 0);
        const QByteArray help = kvt.output();
        QVERIFY(kvt.errors().isEmpty());
        for (const QByteArray &option : options)
            QVERIFY2(help.contains(option), option);
    }
};

QTEST_GUILESS_MAIN(TestKvtDecode)
#include "tst_kvt_decode.moc"
