// The types of the entry points as a C++17 host sees them, where noexcept would be part of the
// type; and that no exception gets past one all the same.
#include "tests/support/loaded_host.h"

#include <QtTest>

#include <csignal>
#include <type_traits>

#include <sys/wait.h>
#include <unistd.h>

namespace
{

static_assert(std::is_same<decltype(&SetComInfo), void (*)(ComInfo *)>::value, "");
static_assert(std::is_same<decltype(&FlashLocalRegister), int (*)(void *, void *, void *)>::value,
              "");
static_assert(
    std::is_same<decltype(&RegistCallBackFuncIntf),
                 void (*)(int (*)(int, int, int, int), void (*)(QList<RW_VAR> *, int, int))>::value,
    "");
static_assert(std::is_same<decltype(&QueryFinishFlag), int (*)()>::value, "");
static_assert(std::is_same<decltype(&EnCommStation), void (*)(int, int)>::value, "");
static_assert(std::is_same<decltype(&ComCommunication), Protocol *(*)()>::value, "");
static_assert(std::is_same<decltype(&DataCom), RW_VAR *(*)(QByteArray *, int)>::value, "");
static_assert(std::is_same<decltype(&PLCAddressChangeIntef), int (*)(int, QString)>::value, "");
static_assert(std::is_same<decltype(&AddListReadVar), int (*)(RW_VAR *)>::value, "");
static_assert(std::is_same<decltype(&ReCreatReadVarList), int (*)(QList<HOST_VAR> *)>::value, "");
static_assert(std::is_same<decltype(&AddListWriteVar), int (*)(RW_VAR *, int)>::value, "");
static_assert(std::is_same<decltype(&AddListOnceReadVar), int (*)(RW_VAR *, int)>::value, "");
static_assert(std::is_same<decltype(&GetRegisterData),
                           int (*)(QString, int, QString, int, QByteArray &, int)>::value,
              "");
static_assert(std::is_same<decltype(&SetRegisterData),
                           int (*)(QString, int, QString, int, QByteArray &, int, int, int)>::value,
              "");

void throwNotice(QList<RW_VAR> *, int, int)
{
    throw 1;
}

} // namespace

class LibraryTypesTest : public QObject, private LoadedHost
{
    Q_OBJECT

private Q_SLOTS:
    void aCallbackThatThrowsEndsTheProcess()
    {
        QVERIFY(load());
        driver->registCallBackFuncIntf(nullptr, throwNotice);
        RW_VAR write = queuedWrite(1);
        driver->addListWriteVar(&write, 1);
        const pid_t child = ::fork();
        if (child == 0) {
            ::signal(SIGABRT, SIG_DFL);
            ::close(STDERR_FILENO);
            try {
                driver->comCommunication();
            } catch (...) {
                ::_exit(1);
            }
            ::_exit(0);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGABRT);
    }
};

QTEST_APPLESS_MAIN(LibraryTypesTest)
#include "tst_library_types.moc"
