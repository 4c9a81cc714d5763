// kvt sim, and the program as a whole.
#include "tests/support/kvt_process.h"
#include "tests/unit/simulator/line_peer.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QtTest>

namespace
{

const QByteArray READ_LEVEL("\x05"
                            "010528\r");

// The first `size` bytes that the PLC at a TCP address answers to `request`.
QByteArray ask(const QByteArray &address, const QByteArray &request, int size)
{
    kvt::FileDescriptor peer;
    connectTo(&peer, address.mid(address.lastIndexOf(':') + 1).toUShort());
    return sendBytes(peer, request) ? readBytes(peer, size) : QByteArray();
}

} // namespace

class TestKvtSim : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theProgramTellsWhatItCan()
    {
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("--help")}), 0);
        const QByteArray help = kvt.output();
        for (const char *command : {"demo", "sim", "poll", "read", "write", "scan"})
            QVERIFY2(help.contains(QByteArray("\n  ") + command + ' '), command);
        KvtProcess version;
        QCOMPARE(version.run({QStringLiteral("--version")}), 0);
        QVERIFY(version.output().startsWith("kvt "));
    }

    void helpIsACommandToo()
    {
        KvtProcess all;
        QCOMPARE(all.run({QStringLiteral("help")}), 0);
        QVERIFY(all.output().contains("\n  poll "));
        KvtProcess one;
        QCOMPARE(one.run({QStringLiteral("help"), QStringLiteral("poll")}), 0);
        const QByteArray help = one.output();
        QVERIFY(help.startsWith("Usage: kvt poll "));
        QVERIFY(!help.contains("help-all"));
        QCOMPARE(faultAtBadInput({QStringLiteral("help"), QStringLiteral("pool")},
                                 QStringLiteral("\"pool\"")),
                 QString());
    }

    void outputThatIsLostIsAFailure()
    {
        for (const char *words : {"--help", "help sim", "explain 11", "sim --tcp 0"}) {
            KvtProcess kvt;
            kvt.sendOutputTo(QStringLiteral("/dev/full"));
            QCOMPARE(kvt.run(QString::fromLatin1(words).split(QLatin1Char(' '))), 1);
            QCOMPARE(kvt.errors(), QByteArray("kvt: standard output: No space left on device\n"));
        }
    }

    void aWrongCommandIsNamed()
    {
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("pool")}), 2);
        QCOMPARE(kvt.errors(),
                 QByteArray("kvt: no command \"pool\", see kvt --help; is \"poll\" meant?\n"));
        KvtProcess none;
        QCOMPARE(none.run({}), 2);
        QVERIFY(none.errors().startsWith("kvt: no command given"));
    }

    void helpNamesEveryOption_data()
    {
        const QStringList line = {QStringLiteral("--serial"),  QStringLiteral("--tcp"),
                                  QStringLiteral("--baud"),    QStringLiteral("--format"),
                                  QStringLiteral("--timeout"), QStringLiteral("--retries"),
                                  QStringLiteral("--json"),    QStringLiteral("--driver"),
                                  QStringLiteral("--trace"),   QStringLiteral("--trace-size")};
        QTest::addColumn<QStringList>("options");
        QTest::newRow("sim") << QStringList{
            QStringLiteral("--pty"),    QStringLiteral("--serial"), QStringLiteral("--tcp"),
            QStringLiteral("--baud"),   QStringLiteral("--format"), QStringLiteral("--tags"),
            QStringLiteral("--faults"), QStringLiteral("--values"), QStringLiteral("--turnaround"),
            QStringLiteral("--seed"),   QStringLiteral("--log"),    QStringLiteral("--json"),
            QStringLiteral("--seconds")};
        QTest::newRow("poll") << line + QStringList{QStringLiteral("--tags"),
                                                    QStringLiteral("--seconds"),
                                                    QStringLiteral("--cycles"),
                                                    QStringLiteral("--interval")};
        QTest::newRow("read") << line + QStringList{QStringLiteral("--station"),
                                                    QStringLiteral("--type"),
                                                    QStringLiteral("--tags")};
        QTest::newRow("write") << line + QStringList{QStringLiteral("--station"),
                                                     QStringLiteral("--type"),
                                                     QStringLiteral("--tags")};
        QTest::newRow("scan") << line + QStringList{QStringLiteral("--stations"),
                                                    QStringLiteral("--area"),
                                                    QStringLiteral("--address")};
    }

    void helpNamesEveryOption()
    {
        QFETCH(QStringList, options);
        const QString command = QString::fromLatin1(QTest::currentDataTag());
        KvtProcess kvt;
        QCOMPARE(kvt.run({command, QStringLiteral("--help")}), 0);
        const QString help = QString::fromUtf8(kvt.output());
        QVERIFY(help.startsWith(QStringLiteral("Usage: kvt %1 ").arg(command)));
        for (const QString &option : qAsConst(options))
            QVERIFY2(help.contains(option), qPrintable(option));
        QVERIFY(kvt.errors().isEmpty());
    }

    void badInputIsNamedInOneLine_data()
    {
        QTest::addColumn<QString>("named");
        QTest::newRow("sim --baud fast") << "--baud";
        QTest::newRow("sim --baud -1") << "--baud";
        QTest::newRow("sim --serial /dev/null --baud 12345") << "--baud";
        QTest::newRow("sim --serial /dev/null --baud 1") << "--baud";
        QTest::newRow("sim --format 9N1") << "--format";
        QTest::newRow("sim --faults late=1%") << "--faults: fault \"late=1%\"";
        QTest::newRow("sim --values wild") << "--values";
        QTest::newRow("sim --turnaround 5ms") << "--turnaround";
        QTest::newRow("sim --seed -1") << "--seed";
        QTest::newRow("sim --seconds 0") << "--seconds";
        QTest::newRow("sim --tcp 65536") << "--tcp";
        QTest::newRow("sim --tcp :1") << "--tcp";
        QTest::newRow("sim --tcp 0 --pty x") << "--pty";
        QTest::newRow("sim --tags /nowhere/tags.csv") << "/nowhere/tags.csv";
        QTest::newRow("sim --colour") << "colour";
        QTest::newRow("sim now") << "now";
    }

    void badInputIsNamedInOneLine()
    {
        QFETCH(QString, named);
        QCOMPARE(faultAtBadRow(named), QString());
    }

    void theNameOfTheLineComesFirst()
    {
        QTemporaryDir folder;
        const QString link = folder.filePath(QStringLiteral("plc"));
        KvtProcess pty;
        pty.start({QStringLiteral("sim"), QStringLiteral("--pty"), link});
        QCOMPARE(pty.readLine(), link.toUtf8());
        KvtProcess nameless;
        nameless.start({QStringLiteral("sim")});
        QVERIFY(nameless.readLine().startsWith("/dev/pts/"));
        KvtProcess tcp;
        tcp.start({QStringLiteral("sim"), QStringLiteral("--tcp"), QStringLiteral("0"),
                   QStringLiteral("--json")});
        const QString name = tcp.readObject().value(QStringLiteral("line")).toString();
        QVERIFY(name.startsWith(QStringLiteral("127.0.0.1:")));
        QVERIFY(name.section(QLatin1Char(':'), 1).toInt() > 0);
    }

    void exchangesAreLoggedOnDemand()
    {
        KvtProcess plc;
        plc.start({QStringLiteral("sim"), QStringLiteral("--tcp"), QStringLiteral("0"),
                   QStringLiteral("--log"), QStringLiteral("--values"),
                   QStringLiteral("constant")});
        const QByteArray reply = ask(plc.readLine(), READ_LEVEL, 8);
        QCOMPARE(reply.size(), 8);
        const QByteArray logged = plc.readLine();
        QVERIFY2(logged.endsWith("  1 station 1 read: 05 30 31 30 35 32 38 0D -> " +
                                 reply.toHex(' ').toUpper()),
                 logged.constData());
        QVERIFY(QDateTime::fromString(QString::fromLatin1(logged.left(29)), Qt::ISODateWithMs)
                    .isValid());
        plc.interrupt();
        QCOMPARE(plc.finish(), 0);
        QCOMPARE(plc.output(), QByteArray("exchanges 1, reads 1, writes 0, commands 0, refusals 0, "
                                          "not addressed 0, unanswered 0, dropped bytes 0, "
                                          "lost replies 0\n"));
    }

    void exchangesAreLoggedAsJson()
    {
        KvtProcess plc;
        plc.start({QStringLiteral("sim"), QStringLiteral("--tcp"), QStringLiteral("0"),
                   QStringLiteral("--log"), QStringLiteral("--json")});
        const QByteArray name =
            plc.readObject().value(QStringLiteral("line")).toString().toLatin1();
        const QByteArray reply = ask(name, READ_LEVEL, 8);
        const QJsonObject exchange = plc.readObject();
        QCOMPARE(exchange.value(QStringLiteral("exchange")).toInt(), 1);
        QCOMPARE(exchange.value(QStringLiteral("station")).toInt(), 1);
        QCOMPARE(exchange.value(QStringLiteral("kind")).toString(), QStringLiteral("read"));
        QCOMPARE(exchange.value(QStringLiteral("request")).toString(),
                 QStringLiteral("05 30 31 30 35 32 38 0D"));
        QCOMPARE(QByteArray::fromHex(exchange.value(QStringLiteral("reply")).toString().toLatin1()),
                 reply);
        QVERIFY(exchange.value(QStringLiteral("faults")).toArray().isEmpty());
        plc.interrupt();
        QCOMPARE(plc.finish(), 0);
        const QJsonObject summary = plc.outputObject().value(QStringLiteral("summary")).toObject();
        QCOMPARE(summary.value(QStringLiteral("exchanges")).toInt(), 1);
        QCOMPARE(summary.value(QStringLiteral("reads")).toInt(), 1);
    }

    void faultsAreCommitted()
    {
        KvtProcess plc;
        plc.start({QStringLiteral("sim"), QStringLiteral("--tcp"), QStringLiteral("0"),
                   QStringLiteral("--log"), QStringLiteral("--faults"),
                   QStringLiteral("refuse=1-1")});
        QCOMPARE(ask(plc.readLine(), READ_LEVEL, 6), QByteArray("\x15"
                                                                "01\r"));
        QVERIFY(plc.readLine().endsWith("-> 15 30 31 0D [refuse]"));
        plc.interrupt();
        QCOMPARE(plc.finish(), 0);
        QVERIFY(plc.output().endsWith(", refuse 1\n"));
    }

    void aFloodOfRequestsIsBounded()
    {
        KvtProcess plc;
        plc.start({QStringLiteral("sim"), QStringLiteral("--tcp"), QStringLiteral("0"),
                   QStringLiteral("--log"), QStringLiteral("--turnaround"),
                   QStringLiteral("10000")});
        const QByteArray address = plc.readLine();
        kvt::FileDescriptor peer;
        connectTo(&peer, address.mid(address.lastIndexOf(':') + 1).toUShort());
        QVERIFY(sendBytes(peer, QByteArray(READ_LEVEL).repeated(3000)));
        for (int i = 0; i < 3000; ++i)
            QVERIFY(plc.readLine().contains(" read: "));
        plc.interrupt();
        QCOMPARE(plc.finish(), 0);
        const QByteArray summary = plc.output();
        QVERIFY2(summary.startsWith("exchanges 3000, ") &&
                     summary.endsWith(", lost replies 1976\n"),
                 summary.constData());
    }

    void theLinkGoesWithTheProgram()
    {
        QTemporaryDir folder;
        const QString link = folder.filePath(QStringLiteral("plc"));
        KvtProcess plc;
        plc.start({QStringLiteral("sim"), QStringLiteral("--pty"), link});
        QCOMPARE(plc.readLine(), link.toUtf8());
        QVERIFY(QFileInfo(link).isSymLink());
        plc.interrupt();
        QCOMPARE(plc.finish(), 0);
        QVERIFY(!QFileInfo(link).isSymLink());
    }

    void aLinkInUseIsLeftToItsOwner()
    {
        QTemporaryDir folder;
        const QString link = folder.filePath(QStringLiteral("plc"));
        const QStringList arguments = {QStringLiteral("sim"), QStringLiteral("--pty"), link};
        KvtProcess first;
        first.start(arguments);
        QCOMPARE(first.readLine(), link.toUtf8());
        const QString device = QFileInfo(link).symLinkTarget();
        KvtProcess second;
        QCOMPARE(second.run(arguments), 3);
        const QByteArray errors = second.errors();
        QVERIFY2(errors.contains(link.toUtf8()) && errors.contains(device.toUtf8()),
                 errors.constData());
        QCOMPARE(QFileInfo(link).symLinkTarget(), device);
    }

    void aLinkThatLeadsNowhereIsReplaced()
    {
        QTemporaryDir folder;
        const QString link = folder.filePath(QStringLiteral("plc"));
        QVERIFY(QFile::link(QStringLiteral("/nowhere/plc"), link));
        KvtProcess plc;
        plc.start({QStringLiteral("sim"), QStringLiteral("--pty"), link});
        QCOMPARE(plc.readLine(), link.toUtf8());
        QVERIFY(QFileInfo::exists(link));
        plc.interrupt();
        QCOMPARE(plc.finish(), 0);
        QVERIFY(!QFileInfo(link).isSymLink());
    }

    void aLinkThatLeadsElsewhereIsNotRemoved()
    {
        QTemporaryDir folder;
        const QString link = folder.filePath(QStringLiteral("plc"));
        KvtProcess plc;
        plc.start({QStringLiteral("sim"), QStringLiteral("--pty"), link});
        QCOMPARE(plc.readLine(), link.toUtf8());
        QVERIFY(QFile::remove(link));
        QVERIFY(QFile::link(folder.path(), link));
        plc.interrupt();
        QCOMPARE(plc.finish(), 0);
        QCOMPARE(QFileInfo(link).symLinkTarget(), folder.path());
    }

    void aLineThatCannotBeMadeIsAnErrorOfItsOwn()
    {
        KvtProcess pty;
        QCOMPARE(pty.run({QStringLiteral("sim"), QStringLiteral("--pty"),
                          QStringLiteral("/nowhere/plc")}),
                 3);
        QVERIFY(pty.errors().contains("/nowhere/plc"));
        KvtProcess serial;
        QCOMPARE(serial.run({QStringLiteral("sim"), QStringLiteral("--serial"),
                             QStringLiteral("/dev/null")}),
                 3);
        QVERIFY(serial.errors().contains("/dev/null"));
        KvtProcess tcp;
        QCOMPARE(
            tcp.run({QStringLiteral("sim"), QStringLiteral("--tcp"), QStringLiteral("nowhere:0")}),
            3);
        QVERIFY(tcp.errors().contains("nowhere"));
    }

    void itEndsByItself()
    {
        KvtProcess plc;
        QCOMPARE(plc.run({QStringLiteral("sim"), QStringLiteral("--seconds"), QStringLiteral("1")}),
                 0);
        QCOMPARE(plc.output().count('\n'), 2);
    }
};

QTEST_GUILESS_MAIN(TestKvtSim)
#include "tst_kvt_sim.moc"
