// The hosts in examples/, as processes, against kvt sim on a pseudo-terminal, also with the sample
// tag list, and against a slave that hands its bytes over one by one, as a serial line does.
#include "tests/support/simulated_line.h"

#include <QtTest>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace
{

constexpr int LIMIT_ms = 30000; // keeps a failed test from hanging

void start(QProcess &process, const char *host, const QString &port)
{
    process.start(QStringLiteral(KVT_PROGRAMS "/") + QString::fromLatin1(host),
                  {QStringLiteral(KVT_LIBRARY), port});
}

// Returns what a host printed, with its exit status in front.
QByteArray outcome(QProcess &process)
{
    if (process.state() != QProcess::NotRunning || process.exitStatus() != QProcess::NormalExit)
        return "did not end";
    return QByteArray::number(process.exitCode()) + ": " + process.readAllStandardOutput();
}

// The options of kvt sim that the guide names: the tag list comes with the examples.
QStringList sampleTags()
{
    return {QStringLiteral("--tags"), QFINDTESTDATA("../../examples/plant.csv")};
}

// Runs a host to its end.
QByteArray run(const char *host, const SimulatedLine &line)
{
    QProcess process;
    start(process, host, line.arguments(QString()).last());
    process.waitForFinished(LIMIT_ms);
    return outcome(process);
}

// What a line does to the first read behind a write.
struct Disturbance {
    QList<int> pauses_ms;  // a CR behind each; it ends what the host collects
    QByteArray noiseAhead; // directly in front of the reply
    int reply_ms = 0;      // before each reply
    int late_ms = 0;       // more of it before that of the read
};

// Station 1 with two words, on a pseudo-terminal. It takes a request up when the one before has
// been answered, and its replies go out a character at a time, whatever arrives meanwhile.
class BytewiseSlave
{
public:
    explicit BytewiseSlave(const Disturbance &disturbance)
        : disturbance_(disturbance), master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        std::array<char, 128> path = {};
        if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
            ptsname_r(master_, path.data(), path.size()) != 0)
            return;
        name_ = QString::fromLocal8Bit(path.data());
        // Held open: the settings would go with the last that closes it.
        slave_ = open(path.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios settings = {};
        ready_ = tcgetattr(slave_, &settings) == 0;
        cfmakeraw(&settings);
        ready_ = ready_ && tcsetattr(slave_, TCSANOW, &settings) == 0;
        clock_.start();
    }
    ~BytewiseSlave()
    {
        close(slave_);
        close(master_);
    }
    BytewiseSlave(const BytewiseSlave &) = delete;
    BytewiseSlave &operator=(const BytewiseSlave &) = delete;

    bool isReady() const { return ready_; }
    QString name() const { return name_; }
    bool hasDisturbed() const { return disturbed_; }

    // Answers a host until it has ended.
    void serve(QProcess &host)
    {
        while (!host.waitForFinished(0) && !clock_.hasExpired(LIMIT_ms)) {
            pollfd input = {master_, POLLIN, 0};
            char byte = 0;
            if (poll(&input, 1, 1) == 1 && read(master_, &byte, 1) == 1)
                take(byte);
            sendWhatIsDue();
        }
    }

private:
    void take(char byte)
    {
        request_.append(byte);
        if (byte != '\r')
            return;
        const bool isWrite = request_.size() > 8;
        if (isWrite)
            firstWord_ = request_.mid(7, 4);
        wasWritten_ = wasWritten_ || isWrite;
        const bool isFirstWord = request_.startsWith("\005010528");
        const QByteArray value = isFirstWord ? firstWord_ : QByteArray("5678");
        answer(isWrite, "\00601" + (isWrite ? QByteArray("00") : value) + '\r');
        request_.clear();
    }

    void answer(bool isWrite, const QByteArray &reply)
    {
        if (isWrite || disturbed_ || !wasWritten_) {
            transmit(reply, disturbance_.reply_ms);
            return;
        }
        disturbed_ = true;
        for (const int pause_ms : disturbance_.pauses_ms)
            transmit("\r", pause_ms);
        transmit(disturbance_.noiseAhead + reply, disturbance_.reply_ms + disturbance_.late_ms);
    }

    void transmit(const QByteArray &bytes, qint64 delay_ms)
    {
        qint64 due_ms = std::max(clock_.elapsed(), lastDue_ms_) + delay_ms;
        for (const char byte : bytes)
            due_.append({++due_ms, byte});
        lastDue_ms_ = due_ms;
    }

    void sendWhatIsDue()
    {
        while (!due_.isEmpty() && due_.first().first <= clock_.elapsed()) {
            const char byte = due_.takeFirst().second;
            ready_ = write(master_, &byte, 1) == 1 && ready_;
        }
    }

    const Disturbance disturbance_;
    const int master_;
    int slave_ = -1;
    bool ready_ = false;
    bool disturbed_ = false;
    QString name_;
    QElapsedTimer clock_;
    QByteArray request_;
    QByteArray firstWord_ = "0000"; // digits
    bool wasWritten_ = false;
    QList<QPair<qint64, char>> due_;
    qint64 lastDue_ms_ = 0;
};

} // namespace

Q_DECLARE_METATYPE(Disturbance)

class TestExampleHosts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theSmallestHostPrintsWhatThePlcHas()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, sampleTags());
        QVERIFY(line.isReady());
        KvtProcess write;
        QCOMPARE(write.run(line.arguments(QStringLiteral("write D 5.2.1 4660"))), 0);
        QCOMPARE(run("minimal_host", line),
                 "0: " + QByteArray("result 1, value 4660\n").repeated(10));
    }

    void theWholeHostReadsWhatItWrote()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, sampleTags());
        QVERIFY(line.isReady());
        KvtProcess write;
        QCOMPARE(write.run(line.arguments(QStringLiteral("write D 5.4.0 77"))), 0);
        QCOMPARE(run("polling_host", line),
                 QByteArray("0: write 1, read failure 0, values 4660 and 77\n"));
        KvtProcess read;
        QCOMPARE(read.run(line.arguments(QStringLiteral("read D 5.2.1"))), 0);
        QVERIFY(read.output().startsWith("D 5.2.1 at station 1: 4660, "));
    }

    void theWholeHostTellsRefusals()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("refuse=100%")});
        QVERIFY(line.isReady());
        // A refusal is shorter than any reply that is expected. The cache keeps a value that the
        // PLC has refused until another is read.
        QCOMPARE(run("polling_host", line),
                 QByteArray("1: write 71, read failure 71, values 4660 and 0\n"));
    }

    void theWholeHostMixesNoValuesUp_data()
    {
        QTest::addColumn<Disturbance>("disturbance");
        QTest::newRow("an even line") << Disturbance{{}, "", 0, 0};
        QTest::newRow("noise ahead of the reply") << Disturbance{{}, "\x7f", 0, 0};
        QTest::newRow("noise that ends the reply") << Disturbance{{0}, "", 0, 0};
        QTest::newRow("noise before a slow reply") << Disturbance{{0, 60, 60}, "", 280, 0};
        QTest::newRow("a late reply") << Disturbance{{}, "", 0, 800};
        QTest::newRow("a reply later than the silence") << Disturbance{{}, "", 50, 1050};
    }

    void theWholeHostMixesNoValuesUp()
    {
        QFETCH(Disturbance, disturbance);
        BytewiseSlave slave(disturbance);
        QVERIFY(slave.isReady());
        QProcess host;
        start(host, "polling_host", slave.name());
        slave.serve(host);
        QCOMPARE(outcome(host), QByteArray("0: write 1, read failure 0, values 4660 and 22136\n"));
        QVERIFY(slave.isReady());
        QVERIFY(slave.hasDisturbed());
    }
};

QTEST_GUILESS_MAIN(TestExampleHosts)
#include "tst_example_hosts.moc"
