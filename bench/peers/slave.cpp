#include "bench/peers/slave.h"

#include "bench/peers/meter.h"

#include <QTextStream>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/prctl.h>
#include <termios.h>
#include <unistd.h>

namespace kvt
{

namespace
{

// A pseudo-terminal, raw from the start, whose name has been printed; -1 on failure.
int openTerminal()
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    std::array<char, 128> name = {};
    termios mode = {};
    if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0 ||
        ptsname_r(terminal, name.data(), name.size()) != 0 || tcgetattr(terminal, &mode) != 0)
        return -1;
    cfmakeraw(&mode);
    if (tcsetattr(terminal, TCSANOW, &mode) != 0)
        return -1;
    std::puts(name.data());
    std::fflush(stdout);
    return terminal;
}

void sleepUntil(qint64 time_ns)
{
    const timespec time = {time_ns / 1000000000, time_ns % 1000000000};
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr);
}

class Slave
{
public:
    Slave(int terminal, WireProtocol protocol, const SlavePace &pace)
        : terminal_(terminal), transaction_(wireTransaction(protocol)), pace_(pace)
    {
    }

    /// Answers until the master has gone. False when something else than the request came.
    bool serve()
    {
        while (takeRequest()) {
            if (got_ != transaction_.request)
                return false;
            answer();
        }
        return got_.isEmpty();
    }

    void print() const
    {
        QTextStream(stdout) << answers_ << ' ' << gaps_.quantile_ns(0.5) << ' '
                            << gaps_.quantile_ns(0.99) << '\n';
    }

private:
    // False when the master has gone.
    bool takeRequest()
    {
        got_.clear();
        while (got_.size() < transaction_.request.size()) {
            std::array<char, 256> bytes = {};
            const ssize_t count = read(terminal_, bytes.data(), bytes.size());
            receivedAt_ns_ = clockNow_ns();
            if (count <= 0)
                return false;
            if (got_.isEmpty())
                requestBegins();
            got_.append(bytes.data(), static_cast<int>(count));
        }
        return true;
    }

    void requestBegins()
    {
        if (answers_ == 0)
            firstAt_ns_ = receivedAt_ns_;
        else if (receivedAt_ns_ - firstAt_ns_ >= pace_.warmUp_ns)
            gaps_.add(receivedAt_ns_ - answeredAt_ns_);
    }

    // The bytes of a request are there at once, and those of the reply are handed over together:
    // each of them has had its time then.
    void answer()
    {
        const qint64 due_ns =
            receivedAt_ns_ + transaction_.bytes() * pace_.byteTime_ns + pace_.silence_ns;
        if (due_ns > receivedAt_ns_)
            sleepUntil(due_ns);
        answeredAt_ns_ = clockNow_ns();
        const ssize_t written =
            write(terminal_, transaction_.reply.constData(), transaction_.reply.size());
        if (written == transaction_.reply.size())
            ++answers_;
    }

    int terminal_;
    WireTransaction transaction_;
    SlavePace pace_;
    Durations gaps_;
    QByteArray got_;
    qint64 firstAt_ns_ = 0;
    qint64 receivedAt_ns_ = 0;
    qint64 answeredAt_ns_ = 0; // just before the answer is written, so that no master can be sooner
    int answers_ = 0;
};

} // namespace

bool runSlave(WireProtocol protocol, const SlavePace &pace)
{
    // The default slack of 50 us would make every answer late by half a byte at 115,200 baud.
    prctl(PR_SET_TIMERSLACK, 1);
    const int terminal = openTerminal();
    if (terminal < 0) {
        std::perror("slave");
        return false;
    }
    Slave slave(terminal, protocol, pace);
    if (!slave.serve()) {
        std::fprintf(stderr, "slave: got what is not the request\n");
        return false;
    }
    slave.print();
    return true;
}

} // namespace kvt
