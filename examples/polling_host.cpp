// A whole host: a thread that polls one word, a program that writes it and waits for its return.
// The port must be set up already, e.g. by "stty -F /dev/ttyUSB0 raw -echo 38400".
#include "driver/entry_points.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <thread>
#include <unistd.h>

namespace
{

const int REPLY_ms = 500; // from the last byte sent, or from the byte before
const int QUIET_ms = 200; // after a time-out; longer than a late reply takes to end
const auto PAUSE = std::chrono::milliseconds(10);

// The driver's functions that this host needs.
struct Driver {
    decltype(&SetComInfo) setComInfo;
    decltype(&RegistCallBackFuncIntf) registCallBackFuncIntf;
    decltype(&ReCreatReadVarList) reCreatReadVarList;
    decltype(&ComCommunication) comCommunication;
    decltype(&DataCom) dataCom;
    decltype(&GetRegisterData) getRegisterData;
    decltype(&SetRegisterData) setRegisterData;
};

template <typename Function>
bool resolve(void *library, const char *name, Function &function)
{
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

bool resolveAll(void *library, Driver &driver)
{
    return library != nullptr && resolve(library, "SetComInfo", driver.setComInfo) &&
           resolve(library, "RegistCallBackFuncIntf", driver.registCallBackFuncIntf) &&
           resolve(library, "ReCreatReadVarList", driver.reCreatReadVarList) &&
           resolve(library, "ComCommunication", driver.comCommunication) &&
           resolve(library, "DataCom", driver.dataCom) &&
           resolve(library, "GetRegisterData", driver.getRegisterData) &&
           resolve(library, "SetRegisterData", driver.setRegisterData);
}

ComInfo info = {}; // the driver keeps its address until it is unloaded
std::atomic<bool> stopping(false);
std::atomic<int> readsDone(0);
std::atomic<int> readFailure(0);
std::atomic<int> writeResult(0); // 0 while it is under way

bool arrives(int port, int patience_ms, char &byte)
{
    pollfd input = {port, POLLIN, 0};
    return poll(&input, 1, patience_ms) == 1 && read(port, &byte, 1) == 1;
}

// Throws away what arrives until the line has been quiet for a time.
void discard(int port, int quiet_ms)
{
    char byte = 0;
    while (!stopping && arrives(port, quiet_ms, byte)) {
    }
}

// CR ends a reply; a refusal is shorter than what is expected.
QByteArray exchange(int port, const Protocol &request)
{
    QByteArray reply;
    char byte = 0;
    discard(port, 0); // it cannot be the reply to what has not been sent
    if (write(port, request.frame.constData(), request.frameLength) != request.frameLength)
        return reply;
    while (reply.size() < request.expectedReplyLength && !reply.endsWith('\r')) {
        if (!arrives(port, REPLY_ms, byte)) {
            discard(port, QUIET_ms);
            return QByteArray();
        }
        reply.append(byte);
    }
    return reply;
}

void judge(const RW_VAR &outcome)
{
    if (outcome.result == 0)
        return; // the same frame comes again
    const bool good = outcome.result == 1 || outcome.result == 100;
    if (good)
        info.retryCount = 0; // the next frame has all its attempts
    if (outcome.rwKind == RW_WRITE)
        writeResult = outcome.result;
    else if (good)
        ++readsDone;
    else
        readFailure = outcome.result;
}

void pollLine(const Driver &driver, int port)
{
    while (!stopping) {
        const Protocol *request = driver.comCommunication();
        if (request == nullptr) {
            std::this_thread::sleep_for(PAUSE);
            continue;
        }
        QByteArray reply = exchange(port, *request);
        judge(*driver.dataCom(&reply, reply.size()));
    }
}

// A host that shows values would run its screens here.
void runScreens(const Driver &driver, const HOST_VAR &tag)
{
    QByteArray value("\x34\x12", 2); // low byte first
    driver.setRegisterData(tag.name, tag.areaType, tag.addressText, tag.station, value, 1, 0, 0);
    while (writeResult == 0 && readFailure == 0)
        std::this_thread::sleep_for(PAUSE);
    const int before = readsDone;
    while (readsDone < before + 2 && readFailure == 0) // the first may have been under way
        std::this_thread::sleep_for(PAUSE);
    driver.getRegisterData(QString(), tag.areaType, tag.addressText, tag.station, value, 1);
    printf("write %d, read failure %d, value %d\n", writeResult.load(), readFailure.load(),
           static_cast<quint8>(value.at(0)) + 256 * static_cast<quint8>(value.at(1)));
}

HOST_VAR word(int station, const char *addressText)
{
    HOST_VAR tag;
    tag.areaType = AREA_D;
    tag.station = static_cast<quint8>(station);
    tag.addressText = QString::fromLatin1(addressText);
    return tag;
}

} // namespace

int main(int argc, char **argv)
{
    void *library = argc == 3 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
    const int port = argc == 3 ? open(argv[2], O_RDWR | O_NOCTTY | O_CLOEXEC) : -1;
    Driver driver = {};
    if (port < 0 || !resolveAll(library, driver)) {
        fputs("usage: polling_host path/to/libKVT.so.1 PORT\n", stderr);
        return 2;
    }
    const HOST_VAR tag = word(1, "5.2.1");
    QList<HOST_VAR> variables;
    variables.append(tag);
    info.retryLimit = 2;
    info.purgeByStation = 1;
    info.hostWriteMode = 2; // SetRegisterData sends to the PLC
    driver.setComInfo(&info);
    driver.registCallBackFuncIntf(nullptr, nullptr);
    driver.reCreatReadVarList(&variables);

    std::thread polling(pollLine, driver, port);
    runScreens(driver, tag);
    stopping = true;
    polling.join(); // nothing may be under way when the library goes
    dlclose(library);
    close(port);
    return writeResult == 1 && readFailure == 0 ? 0 : 1;
}
