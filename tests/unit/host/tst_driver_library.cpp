// Loading the driver, and everything that is not the driver.
#include "host/driver_library.h"

#include "driver/version.h"

#include <QFileInfo>
#include <QTemporaryFile>
#include <QtTest>

using namespace kvt;

namespace
{

const QString DRIVER = QStringLiteral(KVT_LIBRARY);

} // namespace

class TestDriverLibrary : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theDriverIsLoadedAndCallable()
    {
        DriverLibrary library;
        QString error;
        QVERIFY(!library.isLoaded());
        QVERIFY2(library.load(DRIVER, &error), qPrintable(error));
        QVERIFY(library.isLoaded());
        QCOMPARE(library.version(), KVT_VERSION);
        QCOMPARE(library.versionText(), QStringLiteral(KVT_VERSION_STRING));
        QCOMPARE(QFileInfo(library.file()), QFileInfo(DRIVER));
        QCOMPARE(library.api().QueryFinishFlag(), 1);
        QCOMPARE(library.api().FlashLocalRegister(nullptr, nullptr, nullptr), 396);
        QCOMPARE(library.api().PLCAddressChangeIntef(AREA_D, QStringLiteral("1.2.3")), 39);
    }

    void everyMissingEntryPointIsNamed()
    {
        DriverLibrary library;
        QString error;
        QVERIFY(!library.load(QStringLiteral("libm.so.6"), &error));
        for (const char *name :
             {"SetComInfo", "FlashLocalRegister", "RegistCallBackFuncIntf", "QueryFinishFlag",
              "EnCommStation", "ComCommunication", "DataCom", "PLCAddressChangeIntef",
              "AddListReadVar", "ReCreatReadVarList", "AddListWriteVar", "AddListOnceReadVar",
              "GetRegisterData", "SetRegisterData"})
            QVERIFY2(error.contains(QLatin1String(name)), name);
        QVERIFY(!library.isLoaded());
        QVERIFY2(library.load(DRIVER, &error), qPrintable(error));
    }

    void aMissingFileIsRefusedWithTheLoadersReason()
    {
        DriverLibrary library;
        QString error;
        QVERIFY(!library.load(QStringLiteral("/nowhere/libKVT.so.1"), &error));
        QVERIFY2(error.contains(QLatin1String("/nowhere/libKVT.so.1")), qPrintable(error));
        QVERIFY2(error.contains(QLatin1String("No such file")), qPrintable(error));
        QVERIFY(library.api().DataCom == nullptr);
    }

    void aFileThatIsNoLibraryIsRefusedWithTheLoadersReason()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("this is a text of more than a few bytes and no library at all\n");
        file.close();
        DriverLibrary library;
        QString error;
        QVERIFY(!library.load(file.fileName(), &error));
        QVERIFY2(error.contains(file.fileName()), qPrintable(error));
        QVERIFY(!library.isLoaded());
    }

    void aSecondDriverIsRefused()
    {
        DriverLibrary first;
        DriverLibrary second;
        QString error;
        QVERIFY2(first.load(DRIVER, &error), qPrintable(error));
        QVERIFY(!second.load(DRIVER, &error));
        QVERIFY(error.contains(QLatin1String("already")));
        QVERIFY(!first.load(DRIVER, &error));
        QVERIFY(first.isLoaded());
        first.unload();
        QVERIFY2(second.load(DRIVER, &error), qPrintable(error));
    }

    void unloadingAndLoadingGivesAFreshDriver()
    {
        DriverLibrary library;
        QString error;
        for (int time = 0; time < 3; ++time) {
            QVERIFY2(library.load(DRIVER, &error), qPrintable(error));
            RW_VAR write;
            QCOMPARE(library.api().AddListWriteVar(&write, 1), 1);
            QCOMPARE(library.api().AddListWriteVar(&write, 1), 2);
            library.unload();
        }
    }

    void unloadingTwiceIsHarmless()
    {
        DriverLibrary library;
        QString error;
        QVERIFY2(library.load(DRIVER, &error), qPrintable(error));
        library.unload();
        library.unload();
        QVERIFY(!library.isLoaded());
        QVERIFY(library.api().ComCommunication == nullptr);
    }
};

QTEST_APPLESS_MAIN(TestDriverLibrary)
#include "tst_driver_library.moc"
