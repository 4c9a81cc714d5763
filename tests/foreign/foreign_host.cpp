// A host that has nothing of this project but the two installed headers: loads the library, does
// one exchange, unloads it, as often as asked.
//   foreign_host LIBRARY [TURNS]
// Exit status 0: all went well; 3: the file cannot be loaded; 4: an entry point is missing; 1: an
// exchange went wrong or the library stayed loaded.
#include "driver/entry_points.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>

namespace
{

constexpr int LOAD_FAILED = 3;
constexpr int ENTRY_POINT_MISSING = 4;

constexpr const char *ENTRY_POINTS[] = {"SetComInfo",
                                        "FlashLocalRegister",
                                        "RegistCallBackFuncIntf",
                                        "QueryFinishFlag",
                                        "EnCommStation",
                                        "ComCommunication",
                                        "DataCom",
                                        "PLCAddressChangeIntef",
                                        "AddListReadVar",
                                        "ReCreatReadVarList",
                                        "AddListWriteVar",
                                        "AddListOnceReadVar",
                                        "GetRegisterData",
                                        "SetRegisterData"};

#define ENTRY(name) reinterpret_cast<decltype(&(name))>(dlsym(library, #name))

bool is(const char *what, bool right)
{
    if (!right)
        fprintf(stderr, "foreign_host: wrong %s\n", what);
    return right;
}

/// One cyclic read of the word 5.2.1 at station 1, answered with 0x12AB.
bool exchange(void *library)
{
    ComInfo info = {};
    QList<HOST_VAR> variables;
    HOST_VAR word;
    word.areaType = AREA_D;
    word.station = 1;
    word.addressText = QString::fromLatin1("5.2.1");
    variables.append(word);

    ENTRY(SetComInfo)(&info);
    if (!is("set-up", ENTRY(QueryFinishFlag)() == 1) ||
        !is("number of reads", ENTRY(ReCreatReadVarList)(&variables) == 1))
        return false;
    const Protocol *request = ENTRY(ComCommunication)();
    if (!is("request", request && request->frame == QByteArray("\x05"
                                                               "010528\r")) ||
        !is("length of the reply", request->expectedReplyLength == 8))
        return false;
    QByteArray reply("\x06"
                     "0112AB\r");
    const RW_VAR *outcome = ENTRY(DataCom)(&reply, reply.size());
    QByteArray value;
    ENTRY(GetRegisterData)(QString(), AREA_D, word.addressText, 1, value, 1);
    return is("result", outcome->result == 1) && is("value", value == QByteArray("\xAB\x12"));
}

int turn(const char *file)
{
    void *library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        fprintf(stderr, "foreign_host: %s\n", dlerror());
        return LOAD_FAILED;
    }
    for (const char *name : ENTRY_POINTS) {
        if (!dlsym(library, name)) {
            fprintf(stderr, "foreign_host: no entry point %s\n", name);
            dlclose(library);
            return ENTRY_POINT_MISSING;
        }
    }
    const bool right = exchange(library);
    dlclose(library);
    const bool gone = is("unloading", dlopen(file, RTLD_NOW | RTLD_NOLOAD) == nullptr);
    return right && gone ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        fprintf(stderr, "usage: foreign_host LIBRARY [TURNS]\n");
        return 2;
    }
    const int turns = argc > 2 ? atoi(argv[2]) : 1;
    int status = 0;
    for (int i = 0; i < turns && status == 0; ++i)
        status = turn(argv[1]);
    return status;
}
