// A line that breaks again and again: what it costs, and whether it still polls.
#include "host/driver_library.h"
#include "host/poller.h"
#include "host/tcp_line.h"
#include "tests/process/torture.h"
#include "tests/support/event_recorder.h"

#include <QtTest>

#include <arpa/inet.h>
#include <atomic>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace kvt;

namespace
{

/// Accepts connections at a free port of its own and ends each at once, in turn by a close and by a
/// reset; with bytes of a reply before that.
class UnfriendlyPeer
{
public:
    UnfriendlyPeer() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        const auto generic = reinterpret_cast<sockaddr *>(&address);
        if (bind(listener_, generic, size) == 0 && listen(listener_, 64) == 0 &&
            getsockname(listener_, generic, &size) == 0)
            port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { run(); });
    }
    ~UnfriendlyPeer()
    {
        shutdown(listener_, SHUT_RDWR);
        thread_.join();
        close(listener_);
    }
    UnfriendlyPeer(const UnfriendlyPeer &) = delete;
    UnfriendlyPeer &operator=(const UnfriendlyPeer &) = delete;

    quint16 port() const { return port_; }
    int hangUps() const { return hangUps_; }

private:
    void run()
    {
        for (int peer = 0; (peer = accept(listener_, nullptr, nullptr)) >= 0; ++hangUps_) {
            const linger reset = {1, 0};
            if (hangUps_ % 2 == 1)
                setsockopt(peer, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
            [[maybe_unused]] const ssize_t sent = send(peer,
                                                       "\x06"
                                                       "01",
                                                       3, MSG_NOSIGNAL);
            close(peer);
        }
    }

    int listener_;
    quint16 port_ = 0;
    std::atomic<int> hangUps_{0};
    std::thread thread_;
};

/// Memory that a process has in use, in KiB.
int residentMemory_KiB(qint64 process)
{
    QFile file(QStringLiteral("/proc/%1/status").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toInt();
    return 0;
}

} // namespace

class TestProcessReconnects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPeerThatHangsUpAThousandTimesCostsNothing()
    {
        const UnfriendlyPeer peer;
        QVERIFY(peer.port() != 0);
        DriverLibrary library;
        QString error;
        QVERIFY2(library.load(QStringLiteral(KVT_LIBRARY), &error), qPrintable(error));
        PollerSettings settings;
        settings.firstReopen_ns = 1000;
        settings.longestReopen_ns = 1000;
        EventRecorder recorder;
        const QVector<Tag> tags = {{QStringLiteral("level"), Area::D, QStringLiteral("5.2.1"), 1,
                                    ValueType::U16, QString()}};
        Poller poller(
            library.api(), settings, tags,
            std::make_unique<TcpLine>(TcpSettings{QStringLiteral("127.0.0.1"), peer.port()}),
            &recorder);
        poller.start();
        QTRY_VERIFY_WITH_TIMEOUT(peer.hangUps() >= 50, 60000);
        const int before = openDescriptors(getpid());
        QTRY_VERIFY_WITH_TIMEOUT(peer.hangUps() >= 1050, 60000);
        QVERIFY(openDescriptors(getpid()) <= before + 3); // of what is under way now
        poller.stop();
        QCOMPARE(recorder.events().readings.size(), 0);
        QCOMPARE(poller.statistics().total.outcomes.at(size_t(Outcome::Success)), quint64(0));
    }

    void aPtyThatBreaksAgainAndAgainIsPolledStill()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, constantValues());
        const int breaks = effort(6, 1000);
        SimulatedLine broken(
            SimulatedLine::Kind::Pty,
            constantValues({QStringLiteral("--faults"), QStringLiteral("break=every40:1ms")}));
        ValueJudge judge(line);
        QVERIFY(judge.isReady());
        KvtProcess kvt;
        kvt.start(pollArguments(broken, "--json --interval 20 --timeout 200"));
        QVERIFY(judge.seesGoodLines(&kvt, 1));
        const int descriptors = openDescriptors(kvt.id());
        const int memory_KiB = residentMemory_KiB(kvt.id());
        for (int down = 0; down < breaks; ++down) {
            QVERIFY(judge.seesLine(&kvt, false));
            QVERIFY(judge.seesLine(&kvt, true));
        }
        QVERIFY(judge.seesGoodLines(&kvt, 1));
        // The line's own was not among them if the line had just broken when they were counted.
        QVERIFY(openDescriptors(kvt.id()) <= descriptors + 1);
        QVERIFY(residentMemory_KiB(kvt.id()) <= memory_KiB + 4096);
        kvt.interrupt();
        QVERIFY(kvt.finish() >= 0);
        judge.seesTheRest(&kvt);
        QCOMPARE(judge.wrong(), 0);
    }
};

QTEST_GUILESS_MAIN(TestProcessReconnects)
#include "tst_process_reconnects.moc"
