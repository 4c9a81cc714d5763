// How much of a paced pseudo-terminal the host uses, beside the least that any program can do: a
// loop that writes a request, waits and reads the reply. Both in turn, on the same simulated PLC.
#include "host/poller.h"
#include "host/serial_line.h"
#include "rig/plant.h"
#include "rig/rig.h"
#include "simulator/line_speed.h"
#include "simulator/plc_runner.h"
#include "simulator/pty_port.h"

#include <QTextStream>

#include <chrono>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace
{

using namespace kvt;

constexpr int EXCHANGE_BYTES = 16; // request and reply of a word
constexpr int REPLY_BYTES = 8;
const std::chrono::seconds RUN(4);

double perSecond(qint64 count, qint64 start_ns)
{
    return static_cast<double>(count) * 1e9 / static_cast<double>(monotonicNow_ns() - start_ns);
}

int openRaw(const QString &path)
{
    const int port = open(path.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings = {};
    if (port >= 0 && tcgetattr(port, &settings) == 0) {
        cfmakeraw(&settings);
        tcsetattr(port, TCSANOW, &settings);
    }
    return port;
}

bool exchangeOnce(int port)
{
    static const char request[] = "\x05"
                                  "012000\r";
    char reply[64];
    ssize_t got = 0;
    if (write(port, request, sizeof request - 1) < 0)
        return false;
    while (got < REPLY_BYTES) {
        pollfd input = {port, POLLIN, 0};
        if (poll(&input, 1, 1000) != 1)
            return false;
        const ssize_t count = read(port, reply, sizeof reply);
        if (count <= 0)
            return false;
        got += count;
    }
    return true;
}

// Exchanges per second of the bare loop; 0 when it failed.
double bareLoop(const QString &path)
{
    const int port = openRaw(path);
    const qint64 start_ns = monotonicNow_ns();
    const qint64 end_ns = start_ns + std::chrono::nanoseconds(RUN).count();
    qint64 count = 0;
    while (port >= 0 && monotonicNow_ns() < end_ns && exchangeOnce(port))
        ++count;
    const double rate = monotonicNow_ns() < end_ns ? 0 : perSecond(count, start_ns);
    close(port);
    return rate;
}

double host(const QString &path, int baud, const QVector<Tag> &tags, QString *error)
{
    DriverLibrary library;
    if (!library.load(QStringLiteral(KVT_LIBRARY), error))
        return 0;
    SerialSettings serial;
    serial.path = path;
    serial.baud = baud;
    serial.pacing = Pacing::Paced;
    HostEvents events;
    Poller poller(library.api(), PollerSettings(), tags, std::make_unique<SerialLine>(serial),
                  &events);
    poller.start();
    std::this_thread::sleep_for(std::chrono::milliseconds(500)); // past the first silence
    const quint64 before = poller.statistics().total.exchanges;
    const qint64 start_ns = monotonicNow_ns();
    std::this_thread::sleep_for(RUN);
    return perSecond(static_cast<qint64>(poller.statistics().total.exchanges - before), start_ns);
}

bool compareAt(int baud, QTextStream &out)
{
    const QVector<Tag> tags = makePlant({1, 100, 0, 0});
    PlcConfig config;
    config.byteTime_ns = byteTime_ns(baud, 10);
    SimulatedPlc plc(tags, config, 1);
    PtyPort port;
    PlcRunner runner(&plc, &port);
    QString error;
    if (!runner.start(&error)) {
        out << error << '\n';
        return false;
    }
    const double limit = 1e9 / static_cast<double>(EXCHANGE_BYTES * config.byteTime_ns);
    const double bare = bareLoop(port.name());
    const double own = host(port.name(), baud, tags, &error);
    out << QStringLiteral("%1 baud: bare loop %2 %, host %3 % of the line's limit, ratio %4 %5\n")
               .arg(baud)
               .arg(100 * bare / limit, 0, 'f', 2)
               .arg(100 * own / limit, 0, 'f', 2)
               .arg(bare > 0 ? own / bare : 0, 0, 'f', 3)
               .arg(error);
    out.flush();
    return bare > 0 && own > 0;
}

} // namespace

int main()
{
    QTextStream out(stdout);
    bool measured = true;
    for (const int baud : {9600, 38400, 115200})
        measured = compareAt(baud, out) && measured;
    return measured ? 0 : 1;
}
