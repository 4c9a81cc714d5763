// SetRegisterData and the store behind it; reading is in tst_host_reads.cpp.
#include "cache/host_data.h"

#include "tests/support/driver_test.h"
#include "tests/support/lock_watch.h"
#include "tests/support/record_text.h"
#include "tests/support/row_names.h"

#include <QtTest>

#include <limits>

namespace
{

constexpr int LOWEST = std::numeric_limits<int>::min();
constexpr int HIGHEST = std::numeric_limits<int>::max();

RW_VAR toStore(int kind, int address, int count, const char *hexData)
{
    RW_VAR var = filledRecord();
    var.areaType = kind;
    var.address = address;
    var.station = 4;
    var.count = count;
    var.data = bytes(hexData);
    return var;
}

int set(int kind, const char *text, const QByteArray &value, int count = 1)
{
    QByteArray copy = value;
    return SetRegisterData(QString("level"), kind, QLatin1String(text), 4, copy, count, 21, 22);
}

} // namespace

class TestHostData : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void cachedValuesDoNotStandInTheHostsMemory()
    {
        char memory[] = {0x34, 0x12};
        QByteArray value = QByteArray::fromRawData(memory, 2);
        QCOMPARE(SetRegisterData(QString(), AREA_D, QString("0.0.1"), 4, value, 1, 0, 0), 1);
        memory[0] = 0x55;
        QByteArray out;
        QCOMPARE(GetRegisterData(QString(), AREA_D, QString("0.0.1"), 4, out, 1), 1);
        QCOMPARE(out, bytes("34 12"));
    }

    void storedBitsKeepTheirFirstByteAndWordsBoth_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QStringList>("stored");
        const QByteArray six("010012345678");
        QTest::newRow("bit") << 0 << 1 << QByteArray("0100") << QStringList{"4/0/40=01"};
        QTest::newRow("bit as given") << 0 << 1 << QByteArray("FE77") << QStringList{"4/0/40=FE"};
        QTest::newRow("three bits")
            << 0 << 3 << six << QStringList{"4/0/40=01", "4/0/41=12", "4/0/42=56"};
        QTest::newRow("bit of one byte") << 0 << 1 << QByteArray("01") << QStringList{};
        QTest::newRow("two bits, three bytes")
            << 0 << 2 << QByteArray("010001") << QStringList{"4/0/40=01"};
        QTest::newRow("word") << 1 << 1 << QByteArray("3412") << QStringList{"4/1/40=3412"};
        QTest::newRow("three words")
            << 1 << 3 << six << QStringList{"4/1/40=0100", "4/1/41=1234", "4/1/42=5678"};
        QTest::newRow("word of one byte") << 1 << 1 << QByteArray("34") << QStringList{};
        QTest::newRow("two words, three bytes")
            << 1 << 2 << QByteArray("341278") << QStringList{"4/1/40=3412"};
        QTest::newRow("no data") << 1 << 1 << QByteArray("") << QStringList{};
        QTest::newRow("more data than count") << 1 << 1 << six << QStringList{"4/1/40=0100"};
        QTest::newRow("count 0") << 1 << 0 << six << QStringList{};
        QTest::newRow("count -1") << 0 << -1 << six << QStringList{};
        QTest::newRow("count lowest") << 1 << LOWEST << six << QStringList{};
        QTest::newRow("count highest")
            << 1 << HIGHEST << QByteArray("3412") << QStringList{"4/1/40=3412"};
        QTest::newRow("count highest, bits")
            << 0 << HIGHEST << QByteArray("0100") << QStringList{"4/0/40=01"};
        QTest::newRow("kind 2") << 2 << 1 << six << QStringList{};
        QTest::newRow("kind 3") << 3 << 1 << six << QStringList{};
        QTest::newRow("kind -1") << -1 << 1 << six << QStringList{};
    }
    void storedBitsKeepTheirFirstByteAndWordsBoth()
    {
        QFETCH(int, kind);
        QFETCH(int, count);
        QFETCH(QByteArray, data);
        QFETCH(QStringList, stored);
        RW_VAR var = toStore(kind, 40, count, data.constData());
        const QString before = recordText(var);
        PLC_driver.comInfo = nullptr;
        WriteDataToLocal(&var);
        QCOMPARE(cacheRecords(), stored);
        QCOMPARE(recordText(var), before);
    }

    void storingReplacesTheRecordsDataWhole()
    {
        PLC_driver.extendVars << EXTENDVAR{4, 1, 40, bytes("00 00 00 00")}
                              << EXTENDVAR{4, 0, 41, bytes("11 22 33 44")};
        RW_VAR word = toStore(1, 40, 1, "34 12");
        WriteDataToLocal(&word);
        RW_VAR bit = toStore(0, 41, 1, "01 00");
        WriteDataToLocal(&bit);
        QCOMPARE(cacheRecords(), QStringList({"4/1/40=3412", "4/0/41=01"}));
    }

    void addressesOfARunWrapAt32Bits()
    {
        RW_VAR var = toStore(1, HIGHEST, 2, "34 12 78 56");
        WriteDataToLocal(&var);
        QCOMPARE(cacheRecords(), QStringList({"4/1/2147483647=3412", "4/1/-2147483648=7856"}));
    }

    void storingHappensUnderTheAreaMutexAlone()
    {
        RW_VAR var = toStore(1, 40, 1, "34 12");
        int meanwhile = -1;
        QVERIFY(waitsFor(
            PLC_driver.areaMutex, [&var] { WriteDataToLocal(&var); },
            [&meanwhile] { meanwhile = PLC_driver.extendVars.size(); }));
        QCOMPARE(meanwhile, 0);
        QCOMPARE(cacheRecords(), QStringList("4/1/40=3412"));
        RW_VAR nothing = toStore(3, 40, 0, "");
        QVERIFY(waitsFor(PLC_driver.areaMutex, [&nothing] { WriteDataToLocal(&nothing); }));
        const QMutexLocker list(&PLC_driver.listMutex);
        const QMutexLocker station(&PLC_driver.stationMutex);
        RW_VAR other = toStore(1, 41, 1, "78 56");
        WriteDataToLocal(&other);
        QCOMPARE(PLC_driver.extendVars.size(), 2);
    }

    void theRecordIsReadUnderTheAreaMutex()
    {
        RW_VAR var = toStore(3, 40, 2, "34 12 78 56");
        QVERIFY(waitsFor(
            PLC_driver.areaMutex, [&var] { WriteDataToLocal(&var); },
            [&var] { var = toStore(1, 50, 1, "BC 9A"); }));
        QCOMPARE(cacheRecords(), QStringList("4/1/50=BC9A"));
    }

    void aHostWriteIsCachedUnlessItIsToBeSent_data()
    {
        QTest::addColumn<int>("mode");
        for (const int mode : {0, 1, 3, -2})
            formattedRow("%d", mode) << mode;
    }
    void aHostWriteIsCachedUnlessItIsToBeSent()
    {
        QFETCH(int, mode);
        info_.hostWriteMode = mode;
        const QByteArray words = wordsOf(info_);
        QCOMPARE(set(1, "1.2.3", bytes("34 12")), 1);
        QCOMPARE(cacheRecords(), QStringList("4/1/39=3412"));
        QCOMPARE(PLC_driver.writeList.size(), 0);
        QCOMPARE(wordsOf(info_), words);
    }

    void aCachedWriteStoresEveryElement()
    {
        QCOMPARE(set(1, "1.2.3", bytes("01 02 03 04 05 06"), 3), 1);
        QCOMPARE(set(0, "0.0.1", bytes("01 00 00 00"), 2), 1);
        QCOMPARE(cacheRecords(), QStringList({"4/1/39=0102", "4/1/40=0304", "4/1/41=0506",
                                              "4/0/1=01", "4/0/2=00"}));
    }

    void aCachedWriteOfTooFewBytesStoresNothing()
    {
        QCOMPARE(set(0, "0.0.1", bytes("01")), 1);
        QCOMPARE(set(1, "0.0.1", bytes("01")), 1);
        QCOMPARE(set(1, "0.0.1", bytes("")), 1);
        QCOMPARE(set(1, "0.0.1", bytes("01 02"), 0), 1);
        QCOMPARE(set(1, "0.0.1", bytes("01 02"), -3), 1);
        QCOMPARE(cacheRecords(), QStringList());
    }

    void aCachedWriteOfAnotherKindStoresNothing()
    {
        QCOMPARE(set(2, "0.1.1.5", bytes("01 00")), 1);
        QCOMPARE(set(3, "1.2.3", bytes("01 00")), 1);
        QCOMPARE(set(-1, "-1.2.3", bytes("01 00")), 1);
        QCOMPARE(cacheRecords(), QStringList());
    }

    void aNegativeAddressIsRefusedWithoutALock_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QByteArray>("text");
        for (const int mode : {0, 2}) {
            formattedRow("mode %d bit", mode) << mode << 0 << QByteArray("-1.0.0");
            formattedRow("mode %d word", mode) << mode << 1 << QByteArray("0.0.-1");
            formattedRow("mode %d block", mode) << mode << 2 << QByteArray("0.-1.0.0");
        }
    }
    void aNegativeAddressIsRefusedWithoutALock()
    {
        QFETCH(int, mode);
        QFETCH(int, kind);
        QFETCH(QByteArray, text);
        info_.hostWriteMode = mode;
        const AllLocksHeld held;
        QCOMPARE(set(kind, text.constData(), bytes("01 00")), 0);
        QCOMPARE(cacheRecords(), QStringList());
        QCOMPARE(PLC_driver.writeList.size(), 0);
    }

    void badDigitsAreNoReasonToRefuse()
    {
        QCOMPARE(set(1, "1.x.3", bytes("34 12")), 1);
        QCOMPARE(set(1, "", bytes("78 56")), 1);
        QCOMPARE(cacheRecords(), QStringList({"4/1/35=3412", "4/1/0=7856"}));
    }

    void theDefaultStationIsTakenWhilePurgeIsNotByStation()
    {
        info_.purgeByStation = 0;
        info_.defaultStation = 17;
        QCOMPARE(set(1, "1.2.3", bytes("34 12")), 1);
        QCOMPARE(cacheRecords(), QStringList("17/1/39=3412"));
        info_.hostWriteMode = 2;
        QCOMPARE(set(1, "1.2.3", bytes("34 12")), 1);
        QCOMPARE(PLC_driver.writeList.first().station, 17);
    }

    void aSentWriteIsQueuedAndNotCached()
    {
        info_.hostWriteMode = 2;
        const QByteArray words = wordsOf(info_);
        QCOMPARE(set(1, "1.2.3", bytes("34 12")), 1);

        RW_VAR expected;
        expected.ownerId = 21;
        expected.ownerSubId = 22;
        expected.rwKind = RW_WRITE;
        expected.reserved3 = 1014; // the block's remoteMode
        expected.plcNo = 1015;     // the block's localPlcNo
        expected.name = "level";
        expected.addressText = "1.2.3";
        expected.areaType = AREA_D;
        expected.address = 39;
        expected.station = 4;
        expected.count = 1;
        expected.data = bytes("34 12");
        QCOMPARE(recordTexts(PLC_driver.writeList), QStringList(recordText(expected)));
        QCOMPARE(cacheRecords(), QStringList());
        QCOMPARE(wordsOf(info_), words);
    }

    void aSentWriteCarriesOneElement_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QByteArray>("data");
        QTest::newRow("bit") << 0 << 1 << bytes("01 00") << bytes("01");
        QTest::newRow("bit of one byte") << 0 << 1 << bytes("01") << bytes("01");
        QTest::newRow("three bits") << 0 << 3 << bytes("FE 00 01 00 01 00") << bytes("FE");
        QTest::newRow("bit without value") << 0 << 1 << bytes("") << bytes("00");
        QTest::newRow("word") << 1 << 1 << bytes("34 12") << bytes("34 12");
        QTest::newRow("five words")
            << 1 << 5 << bytes("34 12 78 56 00 00 00 00 00 00") << bytes("34 12");
        QTest::newRow("word of one byte") << 1 << 1 << bytes("34") << bytes("34 00");
        QTest::newRow("word without value") << 1 << 1 << bytes("") << bytes("00 00");
        QTest::newRow("count 0") << 1 << 0 << bytes("34 12") << bytes("34 12");
        QTest::newRow("count -1") << 0 << -1 << bytes("01 00") << bytes("01");
    }
    void aSentWriteCarriesOneElement()
    {
        QFETCH(int, kind);
        QFETCH(int, count);
        QFETCH(QByteArray, value);
        QFETCH(QByteArray, data);
        info_.hostWriteMode = 2;
        QCOMPARE(set(kind, "1.2.3", value, count), 1);
        QCOMPARE(PLC_driver.writeList.size(), 1);
        QCOMPARE(PLC_driver.writeList.first().count, 1);
        QCOMPARE(PLC_driver.writeList.first().areaType, kind);
        QCOMPARE(PLC_driver.writeList.first().data, data);
    }

    void kindsThatCannotBeSentAreRefused()
    {
        info_.hostWriteMode = 2;
        QCOMPARE(set(2, "0.1.1.5", bytes("01 00")), 0);
        QCOMPARE(set(3, "1.2.3", bytes("01 00")), 0);
        QCOMPARE(set(-1, "1.2.3", bytes("01 00")), 0);
        QCOMPARE(PLC_driver.writeList.size(), 0);
        QCOMPARE(cacheRecords(), QStringList());
    }

    void aSentWriteAnswersTheSizeOfTheQueueAndCoalesces()
    {
        info_.hostWriteMode = 2;
        QCOMPARE(set(1, "1.2.3", bytes("01 00")), 1);
        QCOMPARE(set(1, "1.2.3", bytes("02 00")), 2);
        QCOMPARE(set(1, "1.2.3", bytes("03 00")), 2);
        QCOMPARE(set(1, "1.2.4", bytes("04 00")), 3);
        QCOMPARE(PLC_driver.writeList.at(0).data, bytes("01 00"));
        QCOMPARE(PLC_driver.writeList.at(1).data, bytes("03 00"));
        QCOMPARE(PLC_driver.writeList.at(2).data, bytes("04 00"));
        for (int i = 3; i < 1024; ++i)
            PLC_driver.writeList.append(filledRecord());
        QCOMPARE(set(1, "1.2.5", bytes("05 00")), 1024);
    }

    void theValueStaysTheHosts()
    {
        QByteArray value = bytes("34 12 78");
        info_.hostWriteMode = 2;
        SetRegisterData(QString(), 1, QString("0.0.1"), 4, value, 1, 0, 0);
        info_.hostWriteMode = 0;
        SetRegisterData(QString(), 1, QString("0.0.1"), 4, value, 1, 0, 0);
        QCOMPARE(value, bytes("34 12 78"));
        value.fill('\xFF');
        QCOMPARE(PLC_driver.writeList.first().data, bytes("34 12"));
        QCOMPARE(cacheRecords(), QStringList("4/1/1=3412"));
    }

    void aCachedWriteTakesTheAreaMutexAlone()
    {
        const auto write = [] { set(1, "0.0.1", bytes("34 12")); };
        QVERIFY(waitsFor(PLC_driver.areaMutex, write));
        const QMutexLocker list(&PLC_driver.listMutex);
        const QMutexLocker station(&PLC_driver.stationMutex);
        QCOMPARE(set(1, "0.0.2", bytes("34 12")), 1);
        QCOMPARE(PLC_driver.extendVars.size(), 2);
    }

    void aSentWriteTakesTheListMutexAlone()
    {
        info_.hostWriteMode = 2;
        const auto write = [] { set(1, "0.0.1", bytes("34 12")); };
        QVERIFY(waitsFor(PLC_driver.listMutex, write));
        QCOMPARE(PLC_driver.writeList.size(), 1);
        const QMutexLocker area(&PLC_driver.areaMutex);
        const QMutexLocker station(&PLC_driver.stationMutex);
        QCOMPARE(set(1, "0.0.2", bytes("34 12")), 2);
    }

private:
    void prepare() override
    {
        fillWords(info_); // purgeByStation is not 0, hostWriteMode is not 2
    }

    void finish() override
    {
        QCOMPARE(PLC_driver.pendingFrames.size(), 0);
        QCOMPARE(PLC_driver.readList.size(), 0);
        QCOMPARE(PLC_driver.onceReadList.size(), 0);
    }
};

QTEST_APPLESS_MAIN(TestHostData)
#include "tst_host_data.moc"
