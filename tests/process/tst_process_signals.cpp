// Signals by the thousand, of every kind that does not ask kvt to end.
#include "tests/process/torture.h"

#include <QtTest>

#include <array>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

/// A terminal of 80 columns that the test is behind.
class Terminal
{
public:
    Terminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
        std::array<char, 128> path = {};
        const winsize size = {24, 80, 0, 0};
        if (grantpt(master_) == 0 && unlockpt(master_) == 0 &&
            ioctl(master_, TIOCSWINSZ, &size) == 0 &&
            ptsname_r(master_, path.data(), path.size()) == 0)
            name_ = QString::fromLocal8Bit(path.data());
    }
    ~Terminal() { close(master_); }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    QString name() const { return name_; }

    /// What was written to it by now.
    QByteArray take() const
    {
        QByteArray taken;
        std::array<char, 4096> bytes = {};
        for (ssize_t got = 0; (got = read(master_, bytes.data(), bytes.size())) > 0;)
            taken.append(bytes.data(), static_cast<int>(got));
        return taken;
    }

private:
    int master_;
    QString name_;
};

} // namespace

class TestProcessSignals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPollIsNotImpressed()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, constantValues());
        ValueJudge judge(line);
        QVERIFY(judge.isReady());
        KvtProcess kvt;
        kvt.start(pollArguments(line, "--json --interval 20 --timeout 10000"));
        QVERIFY(judge.seesGoodLines(&kvt, 1));
        for (int round = 0; round < effort(50, 1000); ++round) {
            for (int i = 0; i < 25; ++i)
                for (const int signal : {SIGWINCH, SIGCONT, SIGPIPE, SIGURG, SIGCHLD, SIGXFSZ})
                    kvt.signal(signal);
            QVERIFY(judge.seesGoodLines(&kvt, 1));
        }
        kvt.interrupt();
        QCOMPARE(kvt.finish(), 0);
        const QJsonObject total = totalOf(judge.seesTheRest(&kvt));
        QVERIFY(total.value(QStringLiteral("ok")).toInt() > 0);
        QCOMPARE(total.value(QStringLiteral("failed")).toInt(-1), 0);
        QCOMPARE(judge.wrong(), 0);
    }

    // There a change of the size has a handler, which interrupts whatever any thread waits for.
    void norIsATable()
    {
        SimulatedLine line(SimulatedLine::Kind::Tcp, constantValues({QStringLiteral("--log")}));
        const Terminal terminal;
        QVERIFY(!terminal.name().isEmpty());
        KvtProcess kvt;
        kvt.setVariable(QStringLiteral("TERM"), QStringLiteral("xterm"));
        kvt.takeInputFrom(terminal.name());
        kvt.sendOutputTo(terminal.name());
        kvt.start(pollArguments(line, "--interval 20 --timeout 10000"));
        QByteArray screen;
        for (int round = 0; round < effort(200, 4000); ++round) {
            QVERIFY(!line.plc().readLine().isNull());
            for (int i = 0; i < 25; ++i)
                kvt.signal(SIGWINCH);
            screen = (screen + terminal.take()).right(65536);
        }
        QVERIFY2(kvt.isRunning(), screen.constData());
        kvt.interrupt();
        QCOMPARE(kvt.finish(), 0);
        screen += terminal.take();
        QVERIFY2(screen.contains("failed 0"), screen.constData());
    }
};

QTEST_GUILESS_MAIN(TestProcessSignals)
#include "tst_process_signals.moc"
