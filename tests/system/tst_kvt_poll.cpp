// kvt poll against kvt sim, on a pseudo-terminal and over TCP.
#include "tests/support/poll_run.h"

#include <QRegularExpression>
#include <QTemporaryFile>
#include <QtTest>

class TestKvtPoll : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyTagIsShownAsJson_data() { addLineRows(); }

    void everyTagIsShownAsJson()
    {
        QFETCH(SimulatedLine::Kind, kind);
        const SimulatedLine line(kind);
        QVERIFY(line.isReady());
        KvtProcess write;
        QCOMPARE(
            write.run(line.arguments(QStringLiteral("write")) +
                      QStringList{QStringLiteral("--tags"), line.tagFile(), QStringLiteral("--"),
                                  QStringLiteral("offset"), QStringLiteral("-2")}),
            0);
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(line, "--cycles 3 --json")), 0);
        const QVector<QJsonObject> shown = objects(&kvt);
        const QJsonObject last = shown.last();
        QCOMPARE(last.value(QStringLiteral("tags")).toArray().size(), 5);
        QCOMPARE(last.value(QStringLiteral("line_up")).toBool(), true);
        QCOMPARE(last.value(QStringLiteral("stations_off")), QJsonValue(QJsonArray()));
        QVERIFY(last.value(QStringLiteral("scans")).toInt() >= 3);
        const QJsonObject offset = tagOf(last, "offset");
        QCOMPARE(offset.value(QStringLiteral("value")).toInt(), -2);
        QCOMPARE(offset.value(QStringLiteral("text")).toString(), QStringLiteral("-2"));
        QCOMPARE(offset.value(QStringLiteral("quality")).toString(), QStringLiteral("good"));
        QCOMPARE(offset.value(QStringLiteral("result")).toInt(), 1);
        QCOMPARE(offset.value(QStringLiteral("outcome")).toString(), QStringLiteral("ok"));
        QVERIFY(offset.value(QStringLiteral("age_ms")).toDouble(-1) >= 0);
        QVERIFY(totalOf(shown.last()).value(QStringLiteral("exchanges")).toInt() >= 15);
        QVERIFY(kvt.errors().isEmpty());
    }

    void aPipeGetsLinesForWhatHasChanged()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--values"), QStringLiteral("constant")});
        KvtProcess kvt;
        kvt.start(pollArguments(line, "--interval 20"));
        QSet<QByteArray> names;
        while (names.size() < 5) {
            const QByteArrayList words = kvt.readLine().simplified().split(' ');
            QVERIFY(kvt.isRunning());
            if (words.value(3) == "good")
                names.insert(words.value(1));
        }
        QCOMPARE(names, QSet<QByteArray>({"valve", "level", "offset", "speed", "recipe"}));
        kvt.interrupt();
        QCOMPARE(kvt.finish(), 0);
        // Values that stand still are not printed again.
        const QByteArray rest = kvt.output();
        QVERIFY2(rest.startsWith("\nscans "), rest.constData());
        QVERIFY(rest.contains(", failed 0"));
        QVERIFY(!rest.contains('\x1b'));
    }

    void itEndsAfterTheTimeAsked()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(line, "--seconds 1 --json --interval 100")), 0);
        const QVector<QJsonObject> shown = objects(&kvt);
        const double elapsed_ms = shown.last().value(QStringLiteral("elapsed_ms")).toDouble();
        QVERIFY(elapsed_ms >= 1000);
    }

    void ctrlCEndsWithTheSummary()
    {
        const SimulatedLine line(SimulatedLine::Kind::Tcp);
        KvtProcess kvt;
        kvt.start(pollArguments(line, "--json --interval 20"));
        while (tagOf(kvt.readObject(), "recipe").value(QStringLiteral("quality")).toString() !=
               QStringLiteral("good"))
            QVERIFY(kvt.isRunning());
        kvt.interrupt();
        QCOMPARE(kvt.finish(), 0);
        const QJsonValue summary = objects(&kvt).last().value(QStringLiteral("summary"));
        QVERIFY(summary[QStringLiteral("scans")].toInt() >= 1);
        const QJsonArray stations = summary[QStringLiteral("stations")].toArray();
        QCOMPARE(stations.size(), 2);
        QCOMPARE(stations.at(0)[QStringLiteral("station")].toInt(), 1);
        QCOMPARE(stations.at(1)[QStringLiteral("station")].toInt(), 2);
    }

    void aDeadStationIsShownAndTold()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("noreply=100%@2")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(line, "--cycles 6 --timeout 200 --retries 0 --json")), 1);
        const QVector<QJsonObject> shown = objects(&kvt);
        const QJsonObject last = shown.last();
        QCOMPARE(tagOf(last, "level").value(QStringLiteral("quality")).toString(),
                 QStringLiteral("good"));
        QCOMPARE(last.value(QStringLiteral("stations_off")), QJsonValue(QJsonArray{2}));
        const QJsonObject speed = tagOf(last, "speed");
        QCOMPARE(speed.value(QStringLiteral("quality")).toString(), QStringLiteral("never_read"));
        QCOMPARE(speed.value(QStringLiteral("result")).toInt(), 41);
        QCOMPARE(speed.value(QStringLiteral("outcome")).toString(), QStringLiteral("no_reply"));
        QVERIFY(!speed.contains(QStringLiteral("value")));
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.contains(" station 2 does not answer"), errors.constData());
        QVERIFY2(errors.endsWith(" 2 of 5 tags have no good value\n"), errors.constData());
    }

    // Three of its four tags have failed themselves, and so switched it off.
    void aPipeSaysThatAStationIsOff()
    {
        QTemporaryFile tags;
        QVERIFY(tags.open());
        tags.write("name,area,address,station,type\n"
                   "a,D,1.0.0,1,u16\nb,D,2.0.0,1,u16\nc,D,3.0.0,1,u16\nd,D,4.0.0,1,u16\n");
        tags.close();
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--tags"), tags.fileName(),
                                  QStringLiteral("--faults"), QStringLiteral("noreply=9-100000")});
        KvtProcess kvt;
        kvt.start(line.arguments(QStringLiteral("poll --interval 20 --timeout 100 --retries 0")) +
                  QStringList{QStringLiteral("--tags"), tags.fileName()});
        // The time of day, name, value, quality, result.
        QHash<QString, QString> off;
        while (off.size() < 4) {
            const QStringList words =
                QString::fromUtf8(kvt.readLine()).trimmed().split(QStringLiteral("  "));
            QVERIFY(kvt.isRunning());
            if (words.value(3) == QStringLiteral("failed") &&
                words.value(4).startsWith(QLatin1String("off")))
                off.insert(words.at(1), words.at(4));
        }
        const QStringList results = off.values();
        QCOMPARE(results.count(QStringLiteral("off: no reply (41)")), 3);
        QCOMPARE(results.count(QStringLiteral("off")), 1);
        kvt.interrupt();
        QCOMPARE(kvt.finish(), 1);
    }

    // Each of the five readings takes longer than a value stays good.
    void valuesThatHaveGrownOldAreNoSuccess()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--turnaround"), QStringLiteral("110")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(line, "--cycles 1 --timeout 500 --stale 100")), 1);
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.endsWith(" of 5 tags have no good value\n"), errors.constData());
        KvtProcess patient;
        const int status =
            patient.run(pollArguments(line, "--cycles 1 --timeout 500 --stale 60000"));
        QCOMPARE(patient.errors(), QByteArray());
        QCOMPARE(status, 0);
    }

    void faultsAreCounted()
    {
        SimulatedLine line(SimulatedLine::Kind::Pty,
                           {QStringLiteral("--faults"), QStringLiteral("badend=every7")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(line, "--cycles 20 --timeout 150 --json")), 0);
        const QJsonObject total = totalOf(objects(&kvt).last());
        line.plc().interrupt();
        QCOMPARE(line.plc().finish(), 0);
        const int retries = total.value(QStringLiteral("retries")).toInt();
        QVERIFY(retries > 0);
        QVERIFY(total.value(QStringLiteral("recoveries")).toInt() > 0);
        const QByteArray summary = line.plc().output();
        const int committed = summary.mid(summary.indexOf("badend ") + 7).trimmed().toInt();
        // The last request may have been given up when the poll ended.
        QVERIFY2(committed - retries <= 1, summary.constData());
    }

    void refusalsAreCountedAsSuch()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("refuse=100%@2")});
        KvtProcess text;
        QCOMPARE(text.run(pollArguments(line, "--cycles 1 --retries 0")), 1);
        const QByteArray summary = text.output();
        // The poll may go a little way into the next scan.
        const QRegularExpression counts(QStringLiteral(
            "\\nstation 2: exchanges ([0-9]+), ok 0, failed \\1 \\(refused \\1\\), "));
        QVERIFY2(counts.match(QString::fromUtf8(summary)).hasMatch(), summary.constData());
        KvtProcess json;
        QCOMPARE(json.run(pollArguments(line, "--cycles 1 --retries 0 --json")), 1);
        QVERIFY(totalOf(objects(&json).last())
                    .value(QStringLiteral("outcomes"))[QStringLiteral("refused")]
                    .toInt() >= 2);
    }

    // Five tags, none of which shares a request with another.
    void oneCycleReadsEveryTagOnce()
    {
        SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(line, "--cycles 1 --timeout 1000 --json")), 0);
        QCOMPARE(totalOf(objects(&kvt).last()).value(QStringLiteral("attempts")).toInt(), 5);
        line.plc().interrupt();
        QCOMPARE(line.plc().finish(), 0);
        const QByteArray output = line.plc().output();
        QVERIFY2(output.contains("reads 5,"), output);
    }

    void outputThatIsLostEndsThePoll()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess kvt;
        kvt.sendOutputTo(QStringLiteral("/dev/full"));
        QCOMPARE(kvt.run(pollArguments(line, "--interval 20")), 1);
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.endsWith("kvt: standard output: No space left on device\n"),
                 errors.constData());
    }

    void aReaderThatGoesAwayEndsThePoll()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        QProcess shell;
        shell.start(
            QStringLiteral("bash"),
            QStringList{QStringLiteral("-c"),
                        QStringLiteral("\"$@\" | head -1 >/dev/null; exit ${PIPESTATUS[0]}"),
                        QStringLiteral("bash"), QStringLiteral(KVT_PROGRAM)} +
                pollArguments(line, "--interval 20"));
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), 1);
        QVERIFY(shell.readAllStandardError().contains("kvt: standard output: Broken pipe\n"));
    }

    void badInputIsNamed_data()
    {
        QTest::addColumn<QString>("named");
        QTest::newRow("poll --serial x") << "--tags";
        QTest::newRow("poll --tags x") << "--serial";
        QTest::newRow("poll --tags x --serial x --cycles 0") << "--cycles";
        QTest::newRow("poll --tags x --serial x --seconds now") << "--seconds";
        QTest::newRow("poll --tags x --serial x --interval 1") << "--interval";
        QTest::newRow("poll --tags x --serial x --stale 99") << "--stale";
        QTest::newRow("poll --tags x --serial x --reply-check on") << "--reply-check: \"on\"";
        QTest::newRow("poll --tags /nowhere/tags.csv --serial x") << "/nowhere/tags.csv";
        QTest::newRow("poll level --tags x --serial x") << "level";
    }

    void badInputIsNamed()
    {
        QFETCH(QString, named);
        QCOMPARE(faultAtBadRow(named), QString());
    }

    void aBadTagListIsNamedByLine()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("tags.csv"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("name,area,address,station,type\nlevel,D,5.2.1,1,u16\nspeed,D,5.2,1,u16\n");
        file.close();
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("poll"), QStringLiteral("--tags"), path,
                          QStringLiteral("--serial"), QStringLiteral("x")}),
                 2);
        QVERIFY(kvt.errors().startsWith("kvt: " + path.toUtf8() + ":3: "));
    }
};

QTEST_GUILESS_MAIN(TestKvtPoll)
#include "tst_kvt_poll.moc"
