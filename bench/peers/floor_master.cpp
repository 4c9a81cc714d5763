// Written as one would in C, with the deadline that a lost byte makes necessary and no more.
#include "bench/peers/masters.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace kvt
{

namespace
{

constexpr size_t REPLY_BYTES = 8;
constexpr int TIMEOUT_ms = 1000;

int openRaw(const char *path)
{
    const int port = open(path, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios mode = {};
    if (port < 0 || tcgetattr(port, &mode) != 0)
        return -1;
    cfmakeraw(&mode);
    return tcsetattr(port, TCSANOW, &mode) == 0 ? port : -1;
}

// The value of the four digits; -1 for anything but a good reply.
int decode(const char *reply, size_t count)
{
    if (count != REPLY_BYTES || reply[0] != '\x06' || reply[1] != '0' || reply[2] != '1')
        return -1;
    const char digits[] = {reply[3], reply[4], reply[5], reply[6], '\0'};
    return static_cast<int>(std::strtol(digits, nullptr, 16));
}

int transaction(int port)
{
    static const char request[] = "\x05"
                                  "012000\r";
    char reply[64];
    size_t count = 0;
    if (write(port, request, sizeof request - 1) != sizeof request - 1)
        return -1;
    do {
        pollfd input = {port, POLLIN, 0};
        if (poll(&input, 1, TIMEOUT_ms) != 1)
            return -1;
        const ssize_t got = read(port, reply + count, sizeof reply - count);
        if (got <= 0)
            return -1;
        count += static_cast<size_t>(got);
    } while (reply[count - 1] != '\r' && count < REPLY_BYTES);
    return decode(reply, count);
}

} // namespace

bool runFloor(const MasterLine &line, Meter *meter)
{
    const int port = openRaw(line.device.toLocal8Bit().constData());
    int value = 0;
    do {
        value = transaction(port);
        if (value < 0) {
            std::perror("floor");
            return false;
        }
    } while (meter->transactionEnded(value));
    close(port);
    return true;
}

} // namespace kvt
