// kvt write: commands without a value, and what is told of a write in unusual ends.
#include "tests/support/simulated_line.h"

#include <QJsonArray>
#include <QtTest>

namespace
{

// How often the simulation has counted `what`, once it has ended; -1 if it does not say.
int countOf(SimulatedLine *line, const char *what)
{
    line->plc().interrupt();
    line->plc().finish();
    const QString text = QString::fromLatin1(line->plc().output());
    const QRegularExpression count(QStringLiteral("%1 ([0-9]+)").arg(QLatin1String(what)));
    const QRegularExpressionMatch match = count.match(text);
    return match.hasMatch() ? match.captured(1).toInt() : -1;
}

} // namespace

class TestKvtWrite : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aCommandIsSentWithoutAValue()
    {
        SimulatedLine line(SimulatedLine::Kind::Pty, {QStringLiteral("--log")});
        KvtProcess text;
        QCOMPARE(text.run(line.arguments(QStringLiteral("write D 18.1.0"))), 0);
        const QByteArray output = text.output();
        QVERIFY2(output.startsWith("D 18.1.0 at station 1: command acknowledged, "), output);
        QVERIFY(line.plc().readLine().contains(": 05 30 31 31 32 31 31 0D -> 06 "));
        KvtProcess json;
        QCOMPARE(json.run(line.arguments(QStringLiteral("write D 18.1.1 --json"))), 0);
        const QJsonObject object =
            json.outputObject().value(QStringLiteral("writes")).toArray().first().toObject();
        QCOMPARE(object.value(QStringLiteral("state")).toString(), QStringLiteral("acknowledged"));
        QVERIFY(!object.contains(QStringLiteral("text")));
        QVERIFY(line.plc().readLine().contains(": 05 30 31 31 32 31 39 0D -> 06 "));
        QCOMPARE(countOf(&line, "commands"), 2);
    }

    void aCommandIsATagToo()
    {
        SimulatedLine line(SimulatedLine::Kind::Pty);
        const QString tags = line.filePath(QStringLiteral("commands.csv"));
        QFile file(tags);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("name,area,address,station,type\nstart,D,18.1.0,2,u16\n");
        file.close();
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(QStringLiteral("write start --tags ") + tags)), 0);
        const QByteArray output = kvt.output();
        QVERIFY2(output.startsWith("start (D 18.1.0 at station 2): command acknowledged, "),
                 output);
        KvtProcess value;
        QCOMPARE(value.run(line.arguments(QStringLiteral("write start 1 --tags ") + tags)), 2);
        QCOMPARE(countOf(&line, "commands"), 1);
    }

    void aFailedCommandSpeaksOfNoValue()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("noreply=100%")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(QStringLiteral("write D 18.1.0 --timeout 20 --retries 0"))),
                 1);
        QCOMPARE(kvt.errors(), QByteArray("kvt: D 18.1.0 at station 1: no reply (41); whether the "
                                          "command was carried out is not known\n"));
    }

    void aValueForACommandIsRefused_data()
    {
        QTest::addColumn<QString>("named");
        QTest::newRow("write D 18.1.0 1 --serial x") << "leave \"1\" out";
        QTest::newRow("write D 18.1.1 -5 --serial x") << "leave \"-5\" out";
        QTest::newRow("write D 018.1.0 --serial x")
            << "a value"; // an ordinary write, as 18.01.0 is
        QTest::newRow("write X 18.1.0 --serial x") << "a value";
        QTest::newRow("write D 5.3.0 1 2 --serial x") << "a value";
        QTest::newRow("write level 1 --tags t --station 2 --serial x") << "--station does not go";
        QTest::newRow("read level --tags t --type hex --serial x") << "--type does not go";
    }

    void aValueForACommandIsRefused()
    {
        QFETCH(QString, named);
        QCOMPARE(faultAtBadRow(named), QString());
    }

    void aReadThatWouldBeACommandIsRefused_data()
    {
        QTest::addColumn<QString>("command");
        QTest::newRow("read X 18.0.17") << "D 18.1.0";
        QTest::newRow("read D 18.0.17") << "D 18.1.0";
        QTest::newRow("read D 5.2.1 018.00.025") << "D 18.1.1";
        QTest::newRow("scan --stations 1 --address 18.0.25") << "D 18.1.1";
    }

    void aReadThatWouldBeACommandIsRefused()
    {
        QFETCH(QString, command);
        SimulatedLine line(SimulatedLine::Kind::Pty);
        const QString words = QString::fromLatin1(QTest::currentDataTag());
        QCOMPARE(faultAtBadInput(line.arguments(words), command), QString());
        QCOMPARE(countOf(&line, "exchanges"), 0);
    }

    // The addresses of the commands themselves are read with other address bytes.
    void aReadBesideTheCommandsSetsNothingOff()
    {
        SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(
                     QStringLiteral("read D 18.1.0 18.1.1 18.0.16 18.0.24 --retries 0"))),
                 1);
        QCOMPARE(kvt.errors().count(" refused (71)"), 4);
        QCOMPARE(countOf(&line, "commands"), 0);
    }

    void theVerdictIsToldWithoutOutput_data()
    {
        QTest::addColumn<QString>("words");
        QTest::addColumn<QByteArray>("verdict");
        QTest::newRow("text") << "write D 5.2.1 5"
                              << QByteArray("kvt: D 5.2.1 at station 1: 5 acknowledged, ");
        QTest::newRow("JSON") << "write D 5.2.1 5 --json"
                              << QByteArray("kvt: D 5.2.1 at station 1: 5 acknowledged, ");
        QTest::newRow("refused") << "write D 9.9.0 5 --retries 0 --json"
                                 << QByteArray("kvt: D 9.9.0 at station 1: refused (71)\n");
    }

    void theVerdictIsToldWithoutOutput()
    {
        QFETCH(QString, words);
        QFETCH(QByteArray, verdict);
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess kvt;
        kvt.sendOutputTo(QStringLiteral("/dev/full"));
        QCOMPARE(kvt.run(line.arguments(words)), 1);
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.startsWith(verdict), errors);
        QVERIFY2(errors.endsWith("kvt: standard output: No space left on device\n"), errors);
    }

    void aValueThatCannotBeWrittenHasItsObject()
    {
        KvtProcess kvt;
        QCOMPARE(kvt.run(QStringLiteral("write D 5.2.1 70000 --serial /dev/null --json")
                             .split(QLatin1Char(' '))),
                 2);
        const QJsonObject object = kvt.outputObject();
        const QJsonArray writes = object.value(QStringLiteral("writes")).toArray();
        QCOMPARE(writes.size(), 1);
        const QJsonObject write = writes.first().toObject();
        QCOMPARE(write.value(QStringLiteral("ok")), QJsonValue(false));
        QCOMPARE(write.value(QStringLiteral("outcome")), QJsonValue("not_sent"));
        QCOMPARE(write.value(QStringLiteral("state")), QJsonValue("dropped"));
        QCOMPARE(write.value(QStringLiteral("times_sent")), QJsonValue(0));
        const QString reason = write.value(QStringLiteral("reason")).toString();
        QVERIFY(reason.startsWith(QLatin1String("value \"70000\": ")));
        QCOMPARE(kvt.errors(), "kvt: " + reason.toUtf8() + '\n');
        QCOMPARE(
            object.value(QStringLiteral("summary")),
            QJsonValue(QJsonObject{{"asked", 0}, {"ok", 0}, {"failed", 0}, {"complete", true}}));
    }

    void hexadecimalNumbersAreValues()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(QStringLiteral("write D 5.2.1 0x10"))), 0);
        QVERIFY(kvt.output().startsWith("D 5.2.1 at station 1: 16 acknowledged, "));
        QCOMPARE(faultAtBadInput(line.arguments(QStringLiteral("write X 1.2.0 on")),
                                 QStringLiteral("but one of type bool")),
                 QString());
    }

    void aLostLineIsNoInterruption()
    {
        for (const char *command : {"read D 5.2.1", "write D 5.2.1 1"}) {
            const SimulatedLine line(SimulatedLine::Kind::Tcp, {QStringLiteral("--faults"),
                                                                QStringLiteral("break=100%:60s")});
            KvtProcess kvt;
            QCOMPARE(kvt.run(line.arguments(QString::fromLatin1(command) +
                                            QStringLiteral(" --timeout 500 --json"))),
                     3);
            const QJsonObject object = kvt.outputObject();
            const QString list = object.contains(QStringLiteral("reads"))
                                     ? QStringLiteral("reads")
                                     : QStringLiteral("writes");
            const QJsonArray requests = object.value(list).toArray();
            QCOMPARE(requests.first()[QStringLiteral("outcome")].toString(),
                     QStringLiteral("line_lost"));
        }
    }
};

QTEST_GUILESS_MAIN(TestKvtWrite)
#include "tst_kvt_write.moc"
