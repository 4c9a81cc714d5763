// kvt read and kvt write against kvt sim, on a pseudo-terminal and over TCP.
#include "tests/support/simulated_line.h"

#include <QJsonArray>
#include <QtTest>

namespace
{

const QString JSON = QStringLiteral("--json");

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '));
}

// The only entry of what kvt read --json prints.
QJsonObject onlyRead(KvtProcess *kvt)
{
    const QJsonArray reads = kvt->outputObject().value(QStringLiteral("reads")).toArray();
    return reads.size() == 1 ? reads.first().toObject() : QJsonObject();
}

// The only entry of what kvt write --json prints.
QJsonObject onlyWrite(KvtProcess *kvt)
{
    const QJsonArray writes = kvt->outputObject().value(QStringLiteral("writes")).toArray();
    return writes.size() == 1 ? writes.first().toObject() : QJsonObject();
}

} // namespace

class TestKvtRead : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsWrittenIsReadAgain_data() { addLineRows(); }

    void whatIsWrittenIsReadAgain()
    {
        QFETCH(SimulatedLine::Kind, kind);
        const SimulatedLine line(kind);
        QVERIFY(line.isReady());
        KvtProcess write;
        QCOMPARE(write.run(line.arguments(QStringLiteral("write D 5.2.1 4660"))), 0);
        QVERIFY(write.output().startsWith("D 5.2.1 at station 1: 4660 acknowledged, "));
        KvtProcess read;
        QCOMPARE(read.run(line.arguments(QStringLiteral("read D 5.2.1"))), 0);
        QVERIFY(read.output().startsWith("D 5.2.1 at station 1: 4660, "));
        QVERIFY(read.errors().isEmpty());
        KvtProcess json;
        QCOMPARE(json.run(line.arguments(QStringLiteral("read d 5.2.1 --type hex --json"))), 0);
        const QJsonObject object = onlyRead(&json);
        QCOMPARE(object.value(QStringLiteral("value")).toInt(), 0x1234);
        QCOMPARE(object.value(QStringLiteral("text")).toString(), QStringLiteral("0x1234"));
        QCOMPARE(object.value(QStringLiteral("ok")).toBool(), true);
        QCOMPARE(object.value(QStringLiteral("outcome")).toString(), QStringLiteral("ok"));
        QCOMPARE(object.value(QStringLiteral("result")).toInt(), 1);
        QCOMPARE(object.value(QStringLiteral("attempts")).toInt(), 1);
        QVERIFY(object.value(QStringLiteral("reply_ms")).toDouble() > 0);
    }

    // Nothing is polled beside what was asked for.
    void theWireCarriesOneRequestForEach()
    {
        SimulatedLine line(SimulatedLine::Kind::Pty, {QStringLiteral("--log")});
        QVERIFY(line.isReady());
        KvtProcess write;
        QCOMPARE(write.run(line.arguments(QStringLiteral("write X 1.2.0 255"))), 0);
        KvtProcess read;
        QCOMPARE(read.run(line.arguments(QStringLiteral("read D 5.2.1"))), 0);
        QVERIFY(line.plc().readLine().contains(
            "  1 station 1 write: 05 30 31 30 31 32 31 46 46 0D -> 06 30 31 "));
        QVERIFY(line.plc().readLine().contains(
            "  2 station 1 read: 05 30 31 30 35 32 38 0D -> 06 30 31 "));
        line.plc().interrupt();
        QCOMPARE(line.plc().finish(), 0);
        QVERIFY(line.plc().output().startsWith("exchanges 2, "));
    }

    void valuesOfSeveralAddressesComeInOrder()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(QStringLiteral("read D 5.2.1 3.4.0 5.2.1 --type s16"))), 0);
        const QByteArrayList lines = kvt.output().trimmed().split('\n');
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines.at(0).startsWith("D 5.2.1 at"));
        QVERIFY(lines.at(1).startsWith("D 3.4.0 at"));
        QVERIFY(lines.at(2).startsWith("D 5.2.1 at"));
    }

    void namesOfTagsStandForAddresses()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        const QStringList tags = {QStringLiteral("--tags"), line.tagFile()};
        KvtProcess write;
        QCOMPARE(
            write.run(line.arguments(QStringLiteral("write")) + tags + words("-- offset -300")), 0);
        QVERIFY(write.output().startsWith("offset (D 3.4.0 at station 1): -300 acknowledged"));
        KvtProcess text;
        QCOMPARE(text.run(line.arguments(QStringLiteral("read offset")) + tags), 0);
        QVERIFY(text.output().startsWith("offset (D 3.4.0 at station 1): -300, "));
        KvtProcess read;
        QCOMPARE(read.run(line.arguments(QStringLiteral("read offset --json")) + tags), 0);
        const QJsonObject object = onlyRead(&read);
        QCOMPARE(object.value(QStringLiteral("name")).toString(), QStringLiteral("offset"));
        QCOMPARE(object.value(QStringLiteral("value")).toInt(), -300);
        KvtProcess unknown;
        QCOMPARE(unknown.run(line.arguments(QStringLiteral("read nothing")) + tags), 2);
        QVERIFY(unknown.errors().contains("there is no tag \"nothing\""));
    }

    void negativeNumbersAreValues()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess plain;
        QCOMPARE(plain.run(line.arguments(QStringLiteral("write D 3.4.0 -5"))), 0);
        QVERIFY(plain.output().startsWith("D 3.4.0 at station 1: -5 acknowledged"));
        KvtProcess json;
        QCOMPARE(json.run(line.arguments(QStringLiteral("write --json D 3.4.0 --json -7"))), 0);
        QCOMPARE(onlyWrite(&json).value(QStringLiteral("text")).toString(), QStringLiteral("-7"));
        KvtProcess tag;
        QCOMPARE(tag.run(line.arguments(QStringLiteral("write offset -9")) +
                         QStringList{QStringLiteral("--tags"), line.tagFile()}),
                 0);
        KvtProcess read;
        QCOMPARE(read.run(line.arguments(QStringLiteral("read D 3.4.0 --type s16"))), 0);
        QVERIFY(read.output().startsWith("D 3.4.0 at station 1: -9, "));
    }

    void aBlockIsReadForItsElement()
    {
        SimulatedLine line(
            SimulatedLine::Kind::Pty,
            {QStringLiteral("--log"), QStringLiteral("--values"), QStringLiteral("constant")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(QStringLiteral("read C 7.0.1.4 --station 2 --json"))), 0);
        const int value = onlyRead(&kvt).value(QStringLiteral("value")).toInt(-1);
        const QByteArray exchange = line.plc().readLine();
        const QByteArray reply = QByteArray::fromHex(exchange.mid(exchange.indexOf("->") + 2));
        QCOMPARE(reply.size(), 144);
        // Two digits for each element, behind the three leading bytes.
        QCOMPARE(value, reply.mid(3 + 2 * 4, 2).toInt(nullptr, 16));
    }

    void aRefusalIsToldInWords()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(QStringLiteral("read D 9.9.0 5.2.1 --retries 1"))), 1);
        // 71: a refusal is shorter than a word's reply, and that is what the driver sees first.
        QCOMPARE(kvt.errors(),
                 QByteArray("kvt: D 9.9.0 at station 1: refused (71) after 2 attempts\n"));
        QVERIFY(kvt.output().startsWith("D 5.2.1 at station 1: "));
    }

    void aStationThatIsNotThereGivesNoReply()
    {
        const SimulatedLine line(SimulatedLine::Kind::Tcp);
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(
                     QStringLiteral("read D 5.2.1 --station 7 --timeout 20 --retries 0 --json"))),
                 1);
        const QJsonObject object = onlyRead(&kvt);
        QCOMPARE(object.value(QStringLiteral("ok")).toBool(true), false);
        QCOMPARE(object.value(QStringLiteral("outcome")).toString(), QStringLiteral("no_reply"));
        QCOMPARE(object.value(QStringLiteral("result")).toInt(), 41);
        QVERIFY(!object.contains(QStringLiteral("value")));
    }

    void aRefusedWriteIsToldInWords()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess text;
        QCOMPARE(text.run(line.arguments(QStringLiteral("write D 9.9.0 1 --retries 0"))), 1);
        QCOMPARE(text.errors(), QByteArray("kvt: D 9.9.0 at station 1: refused (71)\n"));
        KvtProcess json;
        QCOMPARE(json.run(line.arguments(QStringLiteral("write D 9.9.0 1 --retries 0 --json"))), 1);
        const QJsonObject object = onlyWrite(&json);
        QCOMPARE(object.value(QStringLiteral("state")).toString(), QStringLiteral("refused"));
        QCOMPARE(object.value(QStringLiteral("uncertain")).toBool(true), false);
    }

    void aWriteWithoutReplyIsUncertain()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("noreply=100%")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(
                     QStringLiteral("write D 5.2.1 1 --timeout 20 --retries 0 --json"))),
                 1);
        const QJsonObject object = onlyWrite(&kvt);
        QCOMPARE(object.value(QStringLiteral("state")).toString(), QStringLiteral("timed_out"));
        QCOMPARE(object.value(QStringLiteral("uncertain")).toBool(), true);
    }

    void aLineThatCannotBeOpenedIsAnErrorOfItsOwn()
    {
        KvtProcess serial;
        QCOMPARE(serial.run(words("read D 5.2.1 --serial /nowhere/plc")), 3);
        QCOMPARE(serial.errors(), QByteArray("kvt: /nowhere/plc: No such file or directory\n"));
        KvtProcess write;
        QCOMPARE(write.run(words("write D 5.2.1 1 --serial /dev/null")), 3);
        QCOMPARE(write.errors(), QByteArray("kvt: /dev/null: not a serial port\n"));
        SimulatedLine line(SimulatedLine::Kind::Tcp);
        const QStringList arguments = line.arguments(QStringLiteral("read D 5.2.1"));
        line.plc().interrupt();
        QCOMPARE(line.plc().finish(), 0);
        KvtProcess tcp;
        QCOMPARE(tcp.run(arguments), 3);
        QVERIFY(tcp.errors().contains("Connection refused"));
    }

    void aLineThatBreaksEndsTheWait()
    {
        const SimulatedLine line(SimulatedLine::Kind::Tcp,
                                 {QStringLiteral("--faults"), QStringLiteral("break=100%:60s")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(QStringLiteral("read D 5.2.1 --timeout 500"))), 3);
        QVERIFY(kvt.errors().contains("the other end is gone"));
    }

    void ctrlCEndsTheWait()
    {
        SimulatedLine line(
            SimulatedLine::Kind::Pty,
            {QStringLiteral("--faults"), QStringLiteral("noreply=100%"), QStringLiteral("--log")});
        KvtProcess kvt;
        kvt.start(line.arguments(QStringLiteral("read D 5.2.1 --timeout 1000 --retries 100")));
        QVERIFY(!line.plc().readLine().isNull());
        kvt.interrupt();
        QCOMPARE(kvt.finish(), 1);
        QCOMPARE(kvt.errors(), QByteArray("kvt: interrupted\n"));
    }

    void aWriteThatIsCutShortIsUncertain()
    {
        SimulatedLine line(
            SimulatedLine::Kind::Pty,
            {QStringLiteral("--faults"), QStringLiteral("noreply=100%"), QStringLiteral("--log")});
        const QString command = QStringLiteral("write D 5.2.1 1 --timeout 200 --retries 100");
        KvtProcess text;
        text.start(line.arguments(command));
        QVERIFY(!line.plc().readLine().isNull());
        text.interrupt();
        QCOMPARE(text.finish(), 1);
        QCOMPARE(text.errors(),
                 QByteArray("kvt: interrupted\n"
                            "kvt: D 5.2.1 at station 1: the value may have been taken\n"));
        KvtProcess json;
        json.start(line.arguments(command + QStringLiteral(" --json")));
        QVERIFY(!line.plc().readLine().isNull());
        json.interrupt();
        QCOMPARE(json.finish(), 1);
        const QJsonObject object = onlyWrite(&json);
        QCOMPARE(object.value(QStringLiteral("uncertain")).toBool(), true);
        QCOMPARE(object.value(QStringLiteral("ok")).toBool(true), false);
        QCOMPARE(object.value(QStringLiteral("outcome")).toString(), QStringLiteral("interrupted"));
        QCOMPARE(object.value(QStringLiteral("address")).toString(), QStringLiteral("5.2.1"));
    }

    // The line is listened to for a minute first. The trace begins once Ctrl-C is waited for.
    void aWriteThatHasNotLeftIsCertain()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        const QString trace = line.filePath(QStringLiteral("trace"));
        const QStringList arguments =
            line.arguments(QStringLiteral("write D 5.2.1 1 --timeout 60000")) +
            QStringList{QStringLiteral("--trace"), trace};
        KvtProcess text;
        text.start(arguments);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(trace), 30000);
        text.interrupt();
        QCOMPARE(text.finish(), 1);
        QCOMPARE(text.errors(), QByteArray("kvt: interrupted\n"
                                           "kvt: D 5.2.1 at station 1: the value was not sent\n"));
        QVERIFY(QFile::remove(trace));
        KvtProcess json;
        json.start(arguments + QStringList(JSON));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(trace), 30000);
        json.interrupt();
        QCOMPARE(json.finish(), 1);
        const QJsonObject object = onlyWrite(&json);
        QCOMPARE(object.value(QStringLiteral("uncertain")).toBool(true), false);
        QCOMPARE(object.value(QStringLiteral("state")).toString(), QStringLiteral("dropped"));
    }

    void readsThatAreCutShortAreNamed()
    {
        SimulatedLine line(
            SimulatedLine::Kind::Pty,
            {QStringLiteral("--faults"), QStringLiteral("noreply=2-999"), QStringLiteral("--log")});
        KvtProcess kvt;
        kvt.start(line.arguments(
            QStringLiteral("read D 5.2.1 3.4.0 7.0.0 --timeout 200 --retries 100 --json")));
        QVERIFY(!line.plc().readLine().isNull());
        QVERIFY(!line.plc().readLine().isNull());
        kvt.interrupt();
        QCOMPARE(kvt.finish(), 1);
        const QJsonObject object = kvt.outputObject();
        const QJsonValue summary = object.value(QStringLiteral("summary"));
        QCOMPARE(summary[QStringLiteral("complete")].toBool(true), false);
        QCOMPARE(summary[QStringLiteral("asked")].toInt(), 2);
        QCOMPARE(summary[QStringLiteral("ok")].toInt(), 1);
        const QJsonArray reads = object.value(QStringLiteral("reads")).toArray();
        QCOMPARE(reads.size(), 3);
        QCOMPARE(reads.at(0)[QStringLiteral("ok")].toBool(), true);
        QVERIFY(reads.at(0).toObject().contains(QStringLiteral("value")));
        QCOMPARE(reads.at(1)[QStringLiteral("ok")].toBool(true), false);
        QCOMPARE(reads.at(1)[QStringLiteral("address")].toString(), QStringLiteral("3.4.0"));
        QCOMPARE(reads.at(1)[QStringLiteral("outcome")].toString(), QStringLiteral("interrupted"));
        QCOMPARE(reads.at(2)[QStringLiteral("address")].toString(), QStringLiteral("7.0.0"));
        QCOMPARE(reads.at(2)[QStringLiteral("outcome")].toString(), QStringLiteral("not_sent"));
    }

    void badInputIsNamedInOneLine_data()
    {
        QTest::addColumn<QString>("named");
        QTest::newRow("read D") << "address";
        QTest::newRow("read E 1.2.0 --serial x") << "\"E\" is no area";
        QTest::newRow("read D 1.2 --serial x") << "address 1.2: ";
        QTest::newRow("read D 1.2.x --serial x") << "address 1.2.x: ";
        QTest::newRow("read D 1.2.0 x 1.2.1 --serial x") << "\"x\" stands where an address";
        QTest::newRow("read D 1.2.0") << "--serial";
        QTest::newRow("read D 1.2.0 --serial x --tcp y:1") << "--serial";
        QTest::newRow("read D 1.2.0 --tcp host") << "--tcp: \"host\"";
        QTest::newRow("read D 1.2.0 --tcp host:0") << "--tcp";
        QTest::newRow("read D 1.2.0 --serial x --baud 12345") << "--baud";
        QTest::newRow("read D 1.2.0 --serial x --format 8X1") << "--format";
        QTest::newRow("read D 1.2.0 --serial x --timeout 0") << "--timeout";
        QTest::newRow("read D 1.2.0 --serial x --retries 101") << "--retries";
        QTest::newRow("read D 1.2.0 --serial x --station 256") << "--station";
        QTest::newRow("read D 1.2.0 --serial x --type u8") << "--type";
        QTest::newRow("read D 1.2.0 --serial x --driver /nowhere/driver.so") << "--driver";
        QTest::newRow("read C 7.0.0.0 7.1.0.0 --serial x") << "second part";
        QTest::newRow("read level --tags /nowhere/tags.csv --serial x") << "/nowhere/tags.csv";
        QTest::newRow("write D 1.2.0 --serial x") << "value";
        QTest::newRow("write D 1.2.0 70000 --serial x") << "value \"70000\"";
        QTest::newRow("write X 1.2.0 maybe --type bool --serial x") << "value \"maybe\"";
        QTest::newRow("write C 7.0.0.0 1 --serial x") << "area C";
        QTest::newRow("write D 1.2.0 -32769 --serial x") << "value \"-32769\"";
        QTest::newRow("write X 1.2.0 -1 --serial x") << "value \"-1\"";
        QTest::newRow("write D 1.2.0 7 --serial x --station -5") << "--station";
        QTest::newRow("write D 1.2.0 -5x --serial x") << "5";
    }

    void badInputIsNamedInOneLine()
    {
        QFETCH(QString, named);
        QCOMPARE(faultAtBadRow(named), QString());
    }
};

QTEST_GUILESS_MAIN(TestKvtRead)
#include "tst_kvt_read.moc"
