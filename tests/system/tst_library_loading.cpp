// The built library: its names, its silence, and loading and unloading it.
#include "tests/support/loaded_host.h"
#include "tests/support/output_capture.h"

#include <QFile>
#include <QFileInfo>
#include <QtTest>

namespace
{

/// True while the library's file is mapped into this process.
bool isMapped()
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    if (!maps.open(QIODevice::ReadOnly))
        qFatal("no list of mappings");
    const QString file = QFileInfo(QStringLiteral(KVT_LIBRARY)).canonicalFilePath();
    return maps.readAll().contains(file.toLocal8Bit());
}

} // namespace

class LibraryLoadingTest : public QObject, private LoadedHost
{
    Q_OBJECT

    /// Loads, reads and writes well and badly, unloads; false when the library refused to work.
    bool runThroughGoodAndBadInput()
    {
        if (!load())
            return false;
        info.hostWriteMode = 2;
        const char *const texts[] = {"5.2.1", "", "...", "x.y.z", "-1.0.0", "99999999999.1.1"};
        QList<HOST_VAR> vars;
        for (const char *text : texts) {
            for (const int area : {0, 1, 2})
                vars.append(hostVariable(area, text, 1));
            set(AREA_D, text, QByteArray());
            queue(request(AREA_C, text, 1));
        }
        const bool listed = list(vars) > 0;
        const QByteArray replies[] = {QByteArray(), bytes("15"), bytes("06 30 31 31 32 41 42 0D"),
                                      bytes("06 30 31 0D"), QByteArray(144, '\r')};
        bool polled = false;
        for (int i = 0; i < 100; ++i) {
            polled = !poll().isEmpty() || polled;
            receive(replies[i % 5]);
            driver->dataCom(nullptr, i);
            for (const int kind : {-1, 0, 1, 2, 3})
                value(kind, texts[i % 6], i, i % 80);
            info.remoteMode = i % 2;
        }
        driver.reset();
        return listed && polled;
    }

private Q_SLOTS:
    void init() { QVERIFY(load()); }
    void cleanup() { driver.reset(); }

    void entryPointHasItsPlainName_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char *name :
             {"SetComInfo", "FlashLocalRegister", "RegistCallBackFuncIntf", "QueryFinishFlag",
              "EnCommStation", "ComCommunication", "DataCom", "PLCAddressChangeIntef",
              "AddListReadVar", "ReCreatReadVarList", "AddListWriteVar", "AddListOnceReadVar",
              "GetRegisterData", "SetRegisterData"})
            QTest::newRow(name) << QByteArray(name);
    }

    void entryPointHasItsPlainName()
    {
        QFETCH(QByteArray, name);
        QVERIFY(driver->find(name.constData()) != nullptr);
    }

    void outputCaptureCatchesEveryWayOfPrinting()
    {
        OutputCapture capture;
        QVERIFY(std::fputs("to stdout;", stdout) >= 0);
        QVERIFY(std::fputs("to stderr;", stderr) >= 0);
        qWarning("by Qt");
        const QByteArray printed = capture.stop();
        QVERIFY(printed.contains("to stdout;"));
        QVERIFY(printed.contains("to stderr;"));
        QVERIFY(printed.contains("by Qt"));
    }

    void nothingIsPrinted()
    {
        driver.reset();
        OutputCapture capture;
        const bool done = runThroughGoodAndBadInput();
        const QByteArray printed = capture.stop();
        QVERIFY(done);
        QCOMPARE(printed, QByteArray());
    }

    void libraryIsGoneAfterEachUnload()
    {
        driver.reset();
        QVERIFY(!isMapped());
        for (int turn = 0; turn < 100; ++turn) {
            QVERIFY(load());
            QVERIFY(isMapped());
            QCOMPARE(list({hostVariable(AREA_D, "5.2.1", 1)}), 1);
            QVERIFY(!poll().isEmpty());
            QCOMPARE(receive(bytes("06 30 31 31 32 41 42 0D")), 1);
            driver.reset();
            QVERIFY(!isMapped());
        }
    }

    void driverIsFreshAfterReload()
    {
        QCOMPARE(list({hostVariable(AREA_D, "5.2.1", 1)}), 1);
        QVERIFY(!poll().isEmpty());
        QCOMPARE(receive(bytes("06 30 31 31 32 41 42 0D")), 1);
        QCOMPARE(queue(queuedWrite(1)), 1);
        driver->enCommStation(2, 0);
        QVERIFY(!poll().isEmpty());

        driver.reset();
        QVERIFY(load());
        const RW_VAR *reply = driver->dataCom(nullptr, 0);
        QCOMPARE(reply->result, 1);
        QVERIFY(reply->name.isEmpty());
        QVERIFY(poll().isEmpty());
        QCOMPARE(value(AREA_D, "5.2.1", 1), bytes("00 00"));
        QCOMPARE(list({}), 0);
        QCOMPARE(queue(queuedWrite(2)), 1);
        QVERIFY(!poll().isEmpty());
    }

    void unloadingLeavesTheHostsBlocksAlone()
    {
        info.retryLimit = 4;
        info.comWord10 = 10;
        localWords[50000] = 0x1234;
        driver.reset();
        QCOMPARE(info.retryLimit, 4);
        QCOMPARE(info.comWord10, 10);
        QCOMPARE(int(localWords[50000]), 0x1234);
        QCOMPARE(calls(), QString());
    }
};

QTEST_APPLESS_MAIN(LibraryLoadingTest)
#include "tst_library_loading.moc"
