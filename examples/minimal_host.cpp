// The smallest host that does something: polls one word of station 1, ten times, and prints it.
// The port must be set up already, e.g. by "stty -F /dev/ttyUSB0 raw -echo 38400".
#include "driver/entry_points.h"

#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

// Puts a request on the line and collects the reply; what is missing after 500 ms stays missing.
static QByteArray exchange(int port, const Protocol &request)
{
    QByteArray reply;
    char byte = 0;
    pollfd input = {port, POLLIN, 0};
    const size_t length = static_cast<size_t>(request.frameLength);
    if (write(port, request.frame.constData(), length) == request.frameLength)
        while (reply.size() < request.expectedReplyLength && poll(&input, 1, 500) == 1 &&
               read(port, &byte, 1) == 1)
            reply.append(byte);
    return reply;
}

#define ENTRY(name) reinterpret_cast<decltype(&(name))>(dlsym(driver, #name))

int main(int argc, char **argv)
{
    void *driver = argc == 3 ? dlopen(argv[1], RTLD_NOW) : nullptr;
    const int port = argc == 3 ? open(argv[2], O_RDWR | O_NOCTTY | O_CLOEXEC) : -1;
    const auto setComInfo = ENTRY(SetComInfo);
    const auto reCreatReadVarList = ENTRY(ReCreatReadVarList);
    const auto comCommunication = ENTRY(ComCommunication);
    const auto dataCom = ENTRY(DataCom);
    const auto getRegisterData = ENTRY(GetRegisterData);
    if (driver == nullptr || port < 0 || getRegisterData == nullptr) {
        fputs("usage: minimal_host path/to/libKVT.so.1 PORT\n", stderr);
        return 2;
    }

    static ComInfo info = {}; // the driver keeps its address
    info.retryLimit = 2;
    setComInfo(&info);
    HOST_VAR speed;
    speed.areaType = AREA_D;
    speed.station = 1;
    speed.addressText = "5.2.1";
    QList<HOST_VAR> variables = {speed};
    reCreatReadVarList(&variables);

    for (int i = 0; i < 10; ++i) {
        const Protocol *request = comCommunication(); // null when there is nothing to send
        QByteArray reply = request != nullptr ? exchange(port, *request) : QByteArray();
        const int result = dataCom(&reply, reply.size())->result; // 1: success, 0: to be repeated
        if (result == 1)
            info.retryCount = 0; // otherwise lost replies add up, however far apart
        QByteArray value;        // low byte first, from the value cache
        getRegisterData(QString(), AREA_D, speed.addressText, speed.station, value, 1);
        printf("result %d, value %d\n", result, quint8(value[0]) + 256 * quint8(value[1]));
    }
    return 0;
}
