// kvt scan against kvt sim, on a pseudo-terminal and over TCP.
#include "simulator/pty_port.h"
#include "tests/support/simulated_line.h"

#include <QtTest>

#include <atomic>
#include <poll.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace
{

// A pseudo-terminal whose station 3 hears only what is sent at one speed; it sees the speed that
// the other end has set. (Parity it cannot see: the system keeps none for a pseudo-terminal.)
class FixedSpeedStation
{
public:
    explicit FixedSpeedStation(speed_t speed) : speed_(speed)
    {
        QString error;
        if (port_.open(&error))
            thread_ = std::thread([this] { answer(); });
    }
    ~FixedSpeedStation()
    {
        stopping_ = true;
        if (thread_.joinable())
            thread_.join();
    }

    QString name() const { return port_.name(); }

private:
    void answer()
    {
        pollfd input = {port_.dataFd(), POLLIN, 0};
        while (!stopping_) {
            char bytes[64];
            termios mode = {};
            if (::poll(&input, 1, 20) != 1)
                continue;
            const ssize_t count = ::read(input.fd, bytes, sizeof bytes);
            const bool asked = count == 8 && QByteArray(bytes, 3) == QByteArray::fromHex("053033");
            if (asked && tcgetattr(input.fd, &mode) == 0 && cfgetospeed(&mode) == speed_)
                (void)!::write(input.fd,
                               "\x06"
                               "030000\r",
                               8);
        }
    }

    speed_t speed_;
    kvt::PtyPort port_;
    std::atomic<bool> stopping_{false};
    std::thread thread_;
};

QStringList findArguments(const QString &port, const QByteArray &more)
{
    return QStringList{QStringLiteral("scan"),      QStringLiteral("--find"),
                       QStringLiteral("--serial"),  port,
                       QStringLiteral("--timeout"), QStringLiteral("50")} +
           QString::fromLatin1(more).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class TestKvtScan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theStationsThatAnswerAreNamed_data() { addLineRows(); }

    void theStationsThatAnswerAreNamed()
    {
        QFETCH(SimulatedLine::Kind, kind);
        SimulatedLine line(kind, {QStringLiteral("--log")});
        QVERIFY(line.isReady());
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(
                     QStringLiteral("scan --stations 0-4 --address 5.2.1 --timeout 200"))),
                 0);
        const QByteArrayList lines = kvt.output().trimmed().split('\n');
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines.at(0).startsWith("station 1 answers, ") && lines.at(0).endsWith(" ms"));
        QVERIFY(lines.at(1).startsWith("station 2 answers, ") && lines.at(1).endsWith(" ms"));
        QCOMPARE(lines.at(2), QByteArray("2 of 5 stations answer"));
        QVERIFY(kvt.errors().isEmpty());
        line.plc().interrupt();
        QCOMPARE(line.plc().finish(), 0);
        // One request each.
        QVERIFY(line.plc().output().contains("\nexchanges 5, reads 2, "));
    }

    void everyStationIsAnObjectOfJson()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess kvt;
        QCOMPARE(
            kvt.run(line.arguments(QStringLiteral("scan --stations 2-3 --timeout 200 --json"))), 0);
        const QJsonObject present = kvt.readObject();
        QCOMPARE(present.value(QStringLiteral("station")).toInt(), 2);
        QCOMPARE(present.value(QStringLiteral("answers")).toBool(), true);
        // The default address is none of its tags'.
        QCOMPARE(present.value(QStringLiteral("outcome")).toString(), QStringLiteral("refused"));
        QCOMPARE(present.value(QStringLiteral("result")).toInt(), 71);
        QVERIFY(present.value(QStringLiteral("reply_ms")).toDouble() > 0);
        const QJsonObject absent = kvt.readObject();
        QCOMPARE(absent.value(QStringLiteral("station")).toInt(), 3);
        QCOMPARE(absent.value(QStringLiteral("answers")).toBool(true), false);
        QVERIFY(!absent.contains(QStringLiteral("reply_ms")));
        const QJsonObject summary = kvt.readObject().value(QStringLiteral("summary")).toObject();
        QCOMPARE(summary.value(QStringLiteral("asked")).toInt(), 2);
        QCOMPARE(summary.value(QStringLiteral("answering")).toInt(), 1);
        QCOMPARE(summary.value(QStringLiteral("complete")).toBool(), true);
    }

    void aDamagedReplyIsShown()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("badend=100%")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(QStringLiteral("scan --stations 1 --address 5.2.1"))), 1);
        QCOMPARE(kvt.output(), QByteArray("station 1: bad reply (11)\n0 of 1 station answer\n"));
    }

    void everyAreaHasAnAddressToAskFor()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        for (const char *area : {"X", "D", "C"}) {
            KvtProcess kvt;
            QCOMPARE(kvt.run(line.arguments(
                         QStringLiteral("scan --stations 2 --area %1").arg(QLatin1String(area)))),
                     0);
            QVERIFY(kvt.output().startsWith("station 2 answers, "));
        }
    }

    void noAnswerAtAllIsAFailure()
    {
        const SimulatedLine line(SimulatedLine::Kind::Tcp);
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(QStringLiteral("scan --stations 8-9 --timeout 20"))), 1);
        QCOMPARE(kvt.output(), QByteArray("0 of 2 stations answer\n"));
    }

    void ctrlCEndsWithTheSummary()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        const QString scan =
            QStringLiteral("scan --stations 2-255 --address 5.2.1 --timeout 1000 --retries 100");
        KvtProcess json;
        json.start(line.arguments(scan + QStringLiteral(" --json")));
        QCOMPARE(json.readObject().value(QStringLiteral("station")).toInt(), 2);
        json.interrupt();
        QCOMPARE(json.finish(), 1);
        const QJsonObject summary =
            QJsonDocument::fromJson(json.readLineWith("summary"))[QStringLiteral("summary")]
                .toObject();
        QCOMPARE(summary.value(QStringLiteral("asked")).toInt(), 1);
        QCOMPARE(summary.value(QStringLiteral("answering")).toInt(), 1);
        QCOMPARE(summary.value(QStringLiteral("complete")).toBool(true), false);
        QCOMPARE(json.errors(), QByteArray("kvt: interrupted\n"));
        KvtProcess text;
        text.start(line.arguments(scan));
        QVERIFY(text.readLine().startsWith("station 2 answers"));
        text.interrupt();
        QCOMPARE(text.finish(), 1);
        QCOMPARE(
            text.output(),
            QByteArray("cut short: 1 of 1 station asked so far answers, 253 were not asked\n"));
    }

    void aLineThatCannotBeOpenedIsAnErrorOfItsOwn()
    {
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("scan"), QStringLiteral("--serial"),
                          QStringLiteral("/nowhere/plc")}),
                 3);
        QCOMPARE(kvt.errors(), QByteArray("kvt: /nowhere/plc: No such file or directory\n"));
    }

    void speedAndFormatAreFound_data()
    {
        QTest::addColumn<QByteArray>("options");
        QTest::addColumn<QByteArray>("found");
        QTest::newRow("both") << QByteArray("--stations 3")
                              << QByteArray("--baud 38400 --format 8N1");
        QTest::newRow("speed") << QByteArray("--stations 2-4 --format 8N2")
                               << QByteArray("--baud 38400 --format 8N2");
        QTest::newRow("format") << QByteArray("--stations 3 --baud 38400")
                                << QByteArray("--baud 38400 --format 8N1");
    }

    void speedAndFormatAreFound()
    {
        QFETCH(QByteArray, options);
        QFETCH(QByteArray, found);
        const FixedSpeedStation station(B38400);
        KvtProcess kvt;
        QCOMPARE(kvt.run(findArguments(station.name(), options)), 0);
        QCOMPARE(kvt.readLine(), "found: " + found);
        QVERIFY(kvt.readLine().startsWith("station 3 answers, "));
        KvtProcess json;
        QCOMPARE(json.run(findArguments(station.name(), options + " --json")), 0);
        const QJsonObject object = json.readObject();
        QCOMPARE(object.value(QStringLiteral("baud")).toInt(), 38400);
        QVERIFY(found.endsWith(object.value(QStringLiteral("format")).toString().toLatin1()));
    }

    void aFormatThatThePortLacksIsAnError()
    {
        const FixedSpeedStation station(B38400);
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("scan"), QStringLiteral("--serial"), station.name(),
                          QStringLiteral("--baud"), QStringLiteral("38400"),
                          QStringLiteral("--format"), QStringLiteral("7E1")}),
                 3);
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.endsWith(": the port does not have this speed or format\n"), errors);
    }

    // 8N1 and 8N2, at eight speeds: a pseudo-terminal has no other formats.
    void nobodyIsFoundWhereNobodyAnswers()
    {
        const FixedSpeedStation station(B600);
        KvtProcess kvt;
        QCOMPARE(kvt.run(findArguments(station.name(), "--stations 3")), 1);
        QCOMPARE(
            kvt.errors(),
            QByteArray("kvt: no station answers: 16 settings that the port takes were tried\n"));
        QCOMPARE(kvt.output(), QByteArray());
    }

    void badInputIsNamedInOneLine_data()
    {
        QTest::addColumn<QString>("named");
        QTest::newRow("scan --find --tcp 127.0.0.1:1") << QString("--find");
        QTest::newRow("scan") << "--serial";
        QTest::newRow("scan --serial x --stations 5-1") << "--stations";
        QTest::newRow("scan --serial x --stations 1-256") << "--stations";
        QTest::newRow("scan --serial x --stations all") << "--stations";
        QTest::newRow("scan --serial x --area E") << "--area: \"E\"";
        QTest::newRow("scan --serial x --address 1.2") << "--address";
        QTest::newRow("scan --serial x --timeout soon") << "--timeout";
        QTest::newRow("scan 1-5 --serial x") << "1-5";
    }

    void badInputIsNamedInOneLine()
    {
        QFETCH(QString, named);
        QCOMPARE(faultAtBadRow(named), QString());
    }
};

QTEST_GUILESS_MAIN(TestKvtScan)
#include "tst_kvt_scan.moc"
