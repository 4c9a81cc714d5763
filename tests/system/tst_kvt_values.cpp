// Values of several words, with units and names, as kvt shows and takes them.
#include "tests/support/simulated_line.h"

#include <QJsonArray>
#include <QtTest>

namespace
{

const QByteArray LIST("name,area,address,station,type,order,scale,unit,decimals,labels\n"
                      "energy,D,5.2.0,1,u32,cdab,0.1,kWh,1,\n"
                      "wild,D,5.4.0,1,u32,,,,,\n"
                      "flow,D,5.6.0,1,f32,,,m/s,,\n"
                      "mode,D,6.0.0,1,u16,,,V,,0=off;1=manual\n"
                      "door,D,6.0.1,1,bit:3:rmw,,,,,\n");

// Changes thousands of times while its two words are read.
const QString RESTLESS = QStringLiteral("wild=counter:0..4000000000:1ms");

} // namespace

class TestKvtValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QFile file(list());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(LIST) == LIST.size());
    }

    void whatIsWrittenIsReadAgain_data()
    {
        QTest::addColumn<QString>("entered");
        QTest::addColumn<QString>("shown");
        QTest::newRow("energy") << "15.2 kWh"
                                << "energy (D 5.2.0 at station 1): 15.2 kWh (152), ";
        QTest::newRow("flow") << "-1.5"
                              << "flow (D 5.6.0 at station 1): -1.5 m/s, ";
        QTest::newRow("mode") << "Manual"
                              << "mode (D 6.0.0 at station 1): manual (1), ";
        QTest::newRow("door") << "on"
                              << "door (D 6.0.1 at station 1): 1, ";
    }

    void whatIsWrittenIsReadAgain()
    {
        QFETCH(QString, entered);
        QFETCH(QString, shown);
        const SimulatedLine line(SimulatedLine::Kind::Pty, more());
        const QString name = QLatin1String(QTest::currentDataTag());
        KvtProcess write;
        QCOMPARE(write.run(command(line, "write") + QStringList{"--", name, entered}), 0);
        KvtProcess read;
        QCOMPARE(read.run(command(line, "read") + QStringList(name)), 0);
        const QString output = QString::fromUtf8(read.output());
        QVERIFY2(output.startsWith(shown), qPrintable(output));
    }

    void jsonHasTheRawValueBesideIt()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, more());
        KvtProcess write;
        QCOMPARE(write.run(command(line, "write --json") + QStringList{"energy", "15.2"}), 0);
        const QJsonObject written =
            write.outputObject().value(QStringLiteral("writes")).toArray().first().toObject();
        QCOMPARE(written.value(QStringLiteral("value")).toDouble(), 15.2);
        QCOMPARE(written.value(QStringLiteral("raw")).toInt(), 152);
        QCOMPARE(written.value(QStringLiteral("unit")).toString(), QStringLiteral("kWh"));
        QCOMPARE(written.value(QStringLiteral("text")).toString(), QStringLiteral("15.2"));
    }

    void whatCannotBeHadIsRefusedAndNotSent()
    {
        SimulatedLine line(SimulatedLine::Kind::Pty, more());
        const QStringList words = command(line, "write");
        QCOMPARE(faultAtBadInput(words + QStringList{"energy", "15.25"}, "the nearest is 15.2"),
                 QString());
        QCOMPARE(faultAtBadInput(words + QStringList{"mode", "wild"}, "wild"), QString());
        QCOMPARE(faultAtBadInput(words + QStringList{"--", "energy", "-1"}, "-1"), QString());
        line.plc().interrupt();
        QCOMPARE(line.plc().finish(), 0);
        QVERIFY(line.plc().output().startsWith("exchanges 0, "));
    }

    void aLaterWordThatIsRefusedMakesItPartlyWritten()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, more({"--faults", "refuse=2"}));
        KvtProcess write;
        QCOMPARE(
            write.run(command(line, "write --json --retries 0") + QStringList{"energy", "15.2"}),
            1);
        const QJsonObject written =
            write.outputObject().value(QStringLiteral("writes")).toArray().first().toObject();
        QCOMPARE(written.value(QStringLiteral("state")).toString(),
                 QStringLiteral("partly_written"));
        QVERIFY(written.value(QStringLiteral("uncertain")).toBool());
    }

    void aValueThatNeverHoldsStillIsTorn()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, more({"--value", RESTLESS}));
        KvtProcess read;
        QCOMPARE(read.run(command(line, "read") + QStringList("wild")), 1);
        QVERIFY(read.errors().contains("wild (D 5.4.0 at station 1): torn"));
        QVERIFY(read.output().isEmpty());
    }

    // The widest deadband that there is, and an alarm beyond half of all values.
    void aDeadbandDoesNotHideThatAValueIsTornAndAnAlarmDoesNotSeeIt()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, more({"--value", RESTLESS}));
        QTemporaryDir folder;
        const QString watched = folder.filePath(QStringLiteral("watched.csv"));
        QFile file(watched);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("name,area,address,station,type,deadband,hi\n"
                   "wild,D,5.4.0,1,u32,4294967294,2000000000\n");
        file.close();
        KvtProcess poll;
        QCOMPARE(poll.run(line.arguments(QStringLiteral("poll --seconds 1 --interval 50 --tags ") +
                                         watched)),
                 1);
        const QByteArray output = poll.output();
        QVERIFY2(output.count("  wild  -  torn  ok\n") == 1, output);
        const QByteArray errors = poll.errors();
        QVERIFY2(!errors.contains("alarm of wild"), errors);
    }

    void warningsOfTheListAreToldOnce()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, more());
        QTemporaryDir folder;
        const QString doubtful = folder.filePath(QStringLiteral("doubtful.csv"));
        QFile file(doubtful);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("name,area,address,station,type,scal\nmode,D,6.0.0,1,u16,\n");
        file.close();
        KvtProcess poll;
        QCOMPARE(poll.run(line.arguments(QStringLiteral("poll --cycles 3")) +
                          QStringList{"--tags", doubtful}),
                 0);
        const QByteArray errors = poll.errors();
        QVERIFY2(errors.contains(":1: column 6 \"scal\": is not known; is \"scale\" meant?"),
                 errors.constData());
        QCOMPARE(errors.count("warning"), 1);
    }

    void aFrameIsThatOfAWordOfATag()
    {
        KvtProcess decode;
        QCOMPARE(decode.run({"decode", "--tags", list(), "053031303532380D"}), 0);
        QVERIFY(decode.output().contains("energy (D, word 2 of 2)"));
    }

    void addressesHaveAllTypes()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, more());
        KvtProcess write;
        const QString typed = QStringLiteral(" D 5.6.0 --type f32 --order dcba");
        QCOMPARE(write.run(line.arguments(QStringLiteral("write") + typed) + QStringList{"1e-45"}),
                 0);
        KvtProcess read;
        QCOMPARE(read.run(line.arguments(QStringLiteral("read") + typed)), 0);
        QVERIFY(read.output().startsWith("D 5.6.0 at station 1: 1e-45, "));
        QCOMPARE(faultAtBadInput({"read", "X", "1.2.0", "--type", "u16", "--serial", "x"}, "u16"),
                 QString());
        QCOMPARE(
            faultAtBadInput({"read", "D", "1.2.0", "--order", "abdc", "--serial", "x"}, "abdc"),
            QString());
        QCOMPARE(faultAtBadInput({"read", "D", "255.15.1", "--type", "u32", "--serial", "x"},
                                 "addresses end"),
                 QString());
    }

    void theCourseOfATagIsHeldAgainstIt_data()
    {
        QTest::addColumn<QString>("named");
        QTest::newRow("sim --value energy=sine:0..1e12 --tags ") << "energy=sine";
        QTest::newRow("sim --value nobody=sine --tags ") << "nobody";
        QTest::newRow("sim --value energy=up --tags ") << "energy=up";
    }

    void theCourseOfATagIsHeldAgainstIt()
    {
        QFETCH(QString, named);
        QCOMPARE(
            faultAtBadInput(
                (QString::fromLatin1(QTest::currentDataTag()) + list()).split(QLatin1Char(' ')),
                named),
            QString());
    }

private:
    QString list() const { return folder_.filePath(QStringLiteral("values.csv")); }

    QStringList more(const QStringList &words = QStringList()) const
    {
        return QStringList{"--tags", list(), "--values", "constant"} + words;
    }

    QStringList command(const SimulatedLine &line, const char *words) const
    {
        return line.arguments(QLatin1String(words)) + QStringList{"--tags", list()};
    }

    QTemporaryDir folder_;
};

QTEST_GUILESS_MAIN(TestKvtValues)
#include "tst_kvt_values.moc"
