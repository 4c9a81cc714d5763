// A whole host: a thread that polls two words, a program that writes one and waits for both.
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

// A station may take REPLY_ms to begin its reply, and to go on with it. QUIET_ms must not be less:
// behind an attempt that failed at once, the true reply may have all of that time before it.
const int REPLY_ms = 500;
const int QUIET_ms = REPLY_ms;
const int GAP_ms = 5; // before each request; longer than a character takes on the line
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
    discard(port, GAP_ms); // it cannot be the reply to what has not been sent
    const size_t length = static_cast<size_t>(request.frameLength);
    if (write(port, request.frame.constData(), length) != request.frameLength)
        return reply;
    while (reply.size() < request.expectedReplyLength && !reply.endsWith('\r')) {
        if (!arrives(port, REPLY_ms, byte))
            return QByteArray();
        reply.append(byte);
    }
    return reply;
}

bool isSuccess(const RW_VAR &outcome)
{
    return outcome.result == 1 || outcome.result == 100;
}

void judge(const RW_VAR &outcome)
{
    if (outcome.result == 0)
        return; // the same frame comes again
    if (isSuccess(outcome))
        info.retryCount = 0; // the next frame has all its attempts
    if (outcome.rwKind == RW_WRITE)
        writeResult = outcome.result;
    else if (isSuccess(outcome))
        ++readsDone;
    else
        readFailure = outcome.result;
}

void pollLine(const Driver &driver, int port)
{
    bool repeated = false;
    discard(port, QUIET_ms); // replies to whoever had the line before
    while (!stopping) {
        const Protocol *request = driver.comCommunication();
        if (request == nullptr) {
            std::this_thread::sleep_for(PAUSE);
            continue;
        }
        QByteArray reply = exchange(port, *request);
        const RW_VAR &outcome = *driver.dataCom(&reply, reply.size());
        // The true reply may still come; after a repetition, this may have been that to the first.
        if (!isSuccess(outcome) || repeated)
            discard(port, QUIET_ms);
        repeated = !isSuccess(outcome);
        judge(outcome);
    }
}

int valueOf(const Driver &driver, const HOST_VAR &tag)
{
    QByteArray value;
    driver.getRegisterData(tag.name, tag.areaType, tag.addressText, tag.station, value, 1);
    return static_cast<quint8>(value.at(0)) + 256 * static_cast<quint8>(value.at(1));
}

// A host that shows values would run its screens here.
void runScreens(const Driver &driver, const HOST_VAR &first, const HOST_VAR &second)
{
    QByteArray value("\x34\x12", 2); // low byte first
    driver.setRegisterData(first.name, first.areaType, first.addressText, first.station, value, 1,
                           0, 0);
    while (writeResult == 0 && readFailure == 0)
        std::this_thread::sleep_for(PAUSE);
    const int before = readsDone;
    while (readsDone < before + 2 && readFailure == 0) // one of each, by turns
        std::this_thread::sleep_for(PAUSE);
    printf("write %d, read failure %d, values %d and %d\n", writeResult.load(), readFailure.load(),
           valueOf(driver, first), valueOf(driver, second));
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
    const HOST_VAR first = word(1, "5.2.1");
    const HOST_VAR second = word(1, "5.4.0");
    QList<HOST_VAR> variables;
    variables.append(first);
    variables.append(second);
    info.retryLimit = 2;
    info.purgeByStation = 1;
    info.hostWriteMode = 2; // SetRegisterData sends to the PLC
    driver.setComInfo(&info);
    driver.registCallBackFuncIntf(nullptr, nullptr);
    driver.reCreatReadVarList(&variables);

    std::thread polling(pollLine, driver, port);
    runScreens(driver, first, second);
    stopping = true;
    polling.join(); // nothing may be under way when the library goes
    dlclose(library);
    close(port);
    return writeResult == 1 && readFailure == 0 ? 0 : 1;
}
