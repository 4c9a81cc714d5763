// A small host without a line, for an allocator that fails: loads the driver, reads a word in turn
// and once, writes it, has a request fail, and prints what it found. Exit status 0: all of it.
//   allocating_host LIBRARY
#include "driver/entry_points.h"

#include <cstdio>
#include <dlfcn.h>

namespace
{

int notices = 0;

int countOnceRead(int, int, int, int status)
{
    notices += status == 1 ? 1 : 100;
    return 0;
}

void countNotice(QList<RW_VAR> *, int, int)
{
    notices += 10;
}

RW_VAR requestOf(int kind, int ownerId)
{
    RW_VAR request;
    request.rwKind = kind;
    request.ownerId = ownerId;
    request.areaType = AREA_D;
    request.address = 168; // of 5.4.0
    request.addressText = QString::fromLatin1("5.4.0");
    request.station = 1;
    request.count = 1;
    if (kind == RW_WRITE)
        request.data = QByteArray("\x34\x12", 2);
    return request;
}

#define ENTRY(name) reinterpret_cast<decltype(&(name))>(dlsym(driver, #name))

// Answers each frame: a read with 0x12AB, a write with its acknowledgement, every fifth not at all.
void exchangeFrames(void *driver, ComInfo *info)
{
    for (int turn = 1; turn <= 24; ++turn) {
        const Protocol *frame = ENTRY(ComCommunication)();
        if (frame == nullptr)
            continue;
        QByteArray reply;
        if (turn % 5 != 0)
            reply = frame->var.rwKind == RW_WRITE ? QByteArray("\x06"
                                                               "0100\r")
                                                  : QByteArray("\x06"
                                                               "0112AB\r");
        printf("%s", frame->frame.toHex().constData());
        const int result = ENTRY(DataCom)(&reply, reply.size())->result;
        printf(" %d\n", result);
        if (result != 0)
            info->retryCount = 0;
    }
}

} // namespace

int main(int argc, char **argv)
{
    void *driver = argc == 2 ? dlopen(argv[1], RTLD_NOW) : nullptr;
    if (driver == nullptr) {
        fprintf(stderr, "allocating_host: %s\n",
                argc == 2 ? dlerror() : "usage: allocating_host LIBRARY");
        return 2;
    }
    static ComInfo info = {};
    info.retryLimit = 1;
    ENTRY(SetComInfo)(&info);
    ENTRY(RegistCallBackFuncIntf)(countOnceRead, countNotice);
    QList<HOST_VAR> variables;
    for (const char *address : {"5.2.1", "5.3.0", "5.3.1"}) {
        HOST_VAR word;
        word.areaType = AREA_D;
        word.station = 1;
        word.addressText = QString::fromLatin1(address);
        variables.append(word);
    }
    printf("list %d\n", ENTRY(ReCreatReadVarList)(&variables));
    RW_VAR write = requestOf(RW_WRITE, 3);
    RW_VAR read = requestOf(RW_READ, 4);
    printf("queued %d %d\n", ENTRY(AddListWriteVar)(&write, 0),
           ENTRY(AddListOnceReadVar)(&read, 0));
    exchangeFrames(driver, &info);
    QByteArray value;
    ENTRY(GetRegisterData)(QString(), AREA_D, variables.first().addressText, 1, value, 1);
    printf("value %s, notices %d\n", value.toHex().constData(), notices);
    return fflush(stdout) == 0 ? 0 : 1;
}
