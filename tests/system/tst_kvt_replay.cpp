// Traces of real runs: --trace, kvt decode of a trace, kvt replay.
#include "tests/support/poll_run.h"

#include <QtTest>

class TestKvtReplay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aRunWithFaultsReplaysWithoutDifference_data() { addLineRows(); }

    void aRunWithFaultsReplaysWithoutDifference()
    {
        QFETCH(SimulatedLine::Kind, kind);
        const SimulatedLine line(kind, faults());
        QVERIFY(line.isReady());
        const QString path = line.filePath(QStringLiteral("trace"));
        QVERIFY(makeTrace(line, path));
        QVERIFY(contentOf(path).contains(" end noreply "));
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("replay"), QStringLiteral("--json"), path}), 0);
        const QJsonObject result = kvt.outputObject().value(QStringLiteral("summary")).toObject();
        QCOMPARE(result.value(QStringLiteral("same")).toBool(), true);
        QVERIFY(result.value(QStringLiteral("exchanges")).toInt() >= 80);
        QVERIFY(!result.contains(QStringLiteral("difference")));
    }

    void aChangedByteNamesItsExchange()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, faults());
        QVERIFY(line.isReady());
        const QString path = line.filePath(QStringLiteral("trace"));
        QVERIFY(makeTrace(line, path));
        QByteArrayList lines = contentOf(path).split('\n');
        int exchange = 0;
        for (QByteArray &text : lines) {
            exchange += text.endsWith(" end replied 1") ? 1 : 0;
            // The fifth good reply is that of the fifth exchange: the first fault comes later.
            const int judged = text.indexOf(" judge 06");
            if (exchange != 4 || judged < 0)
                continue;
            text[judged + 14] = text.at(judged + 14) == '7' ? '8' : '7';
            break;
        }
        fileOf(path, lines.join('\n'));
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("replay"), path}), 1);
        const QByteArray text = kvt.output();
        QVERIFY2(text.startsWith("exchange 5 (line ") && text.count('\n') == 1, text);
        KvtProcess json;
        QCOMPARE(json.run({QStringLiteral("replay"), QStringLiteral("--json"), path}), 1);
        const QJsonObject result = json.outputObject().value(QStringLiteral("summary")).toObject();
        QCOMPARE(result.value(QStringLiteral("same")).toBool(true), false);
        QVERIFY(result.value(QStringLiteral("difference"))
                    .toString()
                    .startsWith(QStringLiteral("exchange 5 ")));
    }

    void valuesOfAnyLengthAreDecoded()
    {
        const QString path = fileOf(folder_.filePath(QStringLiteral("values")),
                                    "kvt-trace 1 now\n"
                                    "0.1 value 1 1 5.2.1 1 1 FFFFFFFF\n"
                                    "0.2 value 2 1 0.0.0.0 3 1 FF00FE00FD00\n");
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("decode"), path}), 0);
        const QByteArray text = kvt.output();
        QVERIFY2(text.contains("D 5.2.1 at station 1 is 4294967295 (0xFFFFFFFF)\n"),
                 text.constData());
        QVERIFY2(text.contains("C 0.0.0.0 at station 1 begins with the bytes FF 00 FE 00 FD 00\n"),
                 text.constData());
    }

    void aNumberOutOfTheAirTakesNoMemory()
    {
        const QString path = fileOf(folder_.filePath(QStringLiteral("count")),
                                    "kvt-trace 1 now\n0.1 value 2 1 1.1.1.1 2000000000 1 -\n");
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("replay"), path}), 2);
        QVERIFY2(kvt.errors().contains("line 2 (exchange 0): "), kvt.errors().constData());
    }

    void everyRecordOfATraceIsDecoded()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, faults());
        QVERIFY(line.isReady());
        const QString path = line.filePath(QStringLiteral("trace"));
        QVERIFY(makeTrace(line, path));
        KvtProcess text;
        QCOMPARE(
            text.run({QStringLiteral("decode"), path, QStringLiteral("--tags"), line.tagFile()}),
            0);
        const QByteArray lines = text.output();
        QVERIFY(lines.contains("at station 1: level (D)"));
        QVERIFY(lines.contains("result 0: this attempt failed and will be repeated"));
        QVERIFY(lines.contains("the request is refused, from station "));
        QVERIFY(lines.contains("result 1: success"));

        KvtProcess json;
        QCOMPARE(json.run({QStringLiteral("decode"), path, QStringLiteral("--json")}), 0);
        int sent = 0;
        for (const QByteArray &object : json.output().trimmed().split('\n')) {
            const QJsonObject record = QJsonDocument::fromJson(object).object();
            QVERIFY2(record.contains(QStringLiteral("time")) ||
                         record.contains(QStringLiteral("summary")),
                     object);
            if (record.value(QStringLiteral("record")) != QLatin1String("tx"))
                continue;
            ++sent;
            QCOMPARE(record[QStringLiteral("frame")][QStringLiteral("kind")].toString(),
                     QStringLiteral("request"));
        }
        QCOMPARE(sent, contentOf(path).count(" tx 05"));
    }

    void aTraceThatCannotBeMadeIsAnError()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        QVERIFY(line.isReady());
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(line, "--cycles 1") +
                         QStringList{QStringLiteral("--trace"),
                                     line.filePath(QStringLiteral("missing/trace"))}),
                 2);
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.startsWith("kvt: --trace: ") && errors.count('\n') == 1, errors);
    }

    void badInputIsNamedInOneLine_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("named");
        const QString damaged = fileOf(folder_.filePath(QStringLiteral("damaged")),
                                       "kvt-trace 1 now\n0.1 line up\n0.1 x\n");
        const QString unknown =
            fileOf(folder_.filePath(QStringLiteral("good")), "kvt-trace 1 now\n");
        QTest::newRow("nothing") << QStringList() << QString("replay");
        QTest::newRow("two files") << QStringList{"a", "b"} << QString("replay");
        QTest::newRow("no such file") << QStringList{"missing.trace"} << QString("missing.trace");
        QTest::newRow("a folder") << QStringList{folder_.path()} << folder_.path();
        QTest::newRow("no trace") << QStringList{KVT_PROGRAM} << QString("line 1");
        QTest::newRow("no driver")
            << QStringList{unknown, "--driver", "/missing.so"} << QString("--driver");
        QTest::newRow("an option") << QStringList{"--frobnicate"} << QString("frobnicate");
        QTest::newRow("damaged") << QStringList{damaged} << QString("line 3 (exchange 0)");
    }

    void badInputIsNamedInOneLine()
    {
        QFETCH(QStringList, words);
        QFETCH(QString, named);
        QCOMPARE(faultAtBadInput(QStringList(QStringLiteral("replay")) + words, named), QString());
    }

private:
    // Polls with faults, and records it.
    static bool makeTrace(const SimulatedLine &line, const QString &path)
    {
        KvtProcess kvt;
        return kvt.run(pollArguments(line, "--timeout 30 --cycles 20 --json") +
                       QStringList{QStringLiteral("--trace"), path}) >= 0;
    }

    static QStringList faults()
    {
        return {QStringLiteral("--faults"),
                QStringLiteral("noreply=every13,truncate=every17,refuse=every19,flip=every23"),
                QStringLiteral("--seed"), QStringLiteral("7")};
    }

    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static QString fileOf(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write(content);
        return path;
    }

    QTemporaryDir folder_;
};

QTEST_GUILESS_MAIN(TestKvtReplay)
#include "tst_kvt_replay.moc"
