// GetRegisterData, which answers from the value cache.
#include "driver/entry_points.h"

#include "tests/support/driver_test.h"
#include "tests/support/lock_watch.h"
#include "tests/support/output_capture.h"
#include "tests/support/record_text.h"
#include "tests/support/row_names.h"

#include <QtTest>

namespace
{

void cache(int station, int kind, int address, const char *hexData)
{
    PLC_driver.extendVars.append(EXTENDVAR{station, kind, address, bytes(hexData)});
}

int get(int kind, const char *text, QByteArray &out, int count = 1, int station = 4)
{
    return GetRegisterData(QString("no use"), kind, QLatin1String(text), station, out, count);
}

} // namespace

class TestHostReads : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void aValueNeverStoredReadsAsZeroAndIsCachedFromThenOn()
    {
        QByteArray out;
        QCOMPARE(get(1, "1.2.3", out), 1);
        QCOMPARE(out, bytes("00 00"));
        QCOMPARE(cacheRecords(), QStringList("4/1/39=00000000"));
        QCOMPARE(get(1, "1.2.3", out), 1);
        QCOMPARE(PLC_driver.extendVars.size(), 1);
        out.clear();
        QCOMPARE(get(0, "1.2.3", out), 1);
        QCOMPARE(out, bytes("00 00"));
        out.clear();
        QCOMPARE(get(2, "0.0.0.5", out), 1);
        QCOMPARE(out, bytes("00 00"));
        QCOMPARE(cacheRecords(),
                 QStringList({"4/1/39=00000000", "4/0/39=00000000", "4/2/5=00000000"}));
    }

    void aStoredValueIsRead_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QByteArray>("read");
        QTest::newRow("bit") << 0 << QByteArray("01") << bytes("01 00");
        QTest::newRow("byte of X") << 0 << QByteArray("FE") << bytes("FE 00");
        QTest::newRow("bit, more bytes") << 0 << QByteArray("11223344") << bytes("11 00");
        QTest::newRow("bit, no bytes") << 0 << QByteArray("") << bytes("00 00");
        QTest::newRow("word") << 1 << QByteArray("AB12") << bytes("AB 12");
        QTest::newRow("word, high bytes") << 1 << QByteArray("FF80") << bytes("FF 80");
        QTest::newRow("word, more bytes") << 1 << QByteArray("11223344") << bytes("11 22");
        QTest::newRow("word, one byte") << 1 << QByteArray("11") << bytes("11 00");
        QTest::newRow("word, no bytes") << 1 << QByteArray("") << bytes("00 00");
    }
    void aStoredValueIsRead()
    {
        QFETCH(int, kind);
        QFETCH(QByteArray, data);
        QFETCH(QByteArray, read);
        cache(4, kind, 39, data.constData());
        const QStringList before = cacheRecords();
        QByteArray out;
        QCOMPARE(get(kind, "1.2.3", out), 1);
        QCOMPARE(out, read);
        QCOMPARE(cacheRecords(), before);
    }

    void bitsAndWordsIgnoreTheCount_data()
    {
        QTest::addColumn<int>("count");
        for (const int count : {-5, 0, 1, 2, 1000000})
            formattedRow("%d", count) << count;
    }
    void bitsAndWordsIgnoreTheCount()
    {
        QFETCH(int, count);
        cache(4, 0, 39, "01");
        cache(4, 1, 39, "34 12");
        QByteArray out;
        QCOMPARE(get(0, "1.2.3", out, count), 1);
        QCOMPARE(out, bytes("01 00"));
        QCOMPARE(get(1, "1.2.3", out, count), 1);
        QCOMPARE(out, bytes("34 12"));
        QCOMPARE(PLC_driver.extendVars.size(), 2);
    }

    void elementsOfABlockAreReadOneAfterTheOther()
    {
        cache(4, 2, 245, "A5");
        cache(4, 2, 247, "01 02");
        cache(4, 2, 248, "");
        QByteArray out;
        QCOMPARE(get(2, "9.1.1.5", out, 4), 1);
        QCOMPARE(out, bytes("A5 00 00 00 01 00 00 00"));
        QCOMPARE(cacheRecords(),
                 QStringList({"4/2/245=A5", "4/2/247=0102", "4/2/248=", "4/2/246=00000000"}));
    }

    void theBufferMayBeTheBytesOfARecord()
    {
        cache(4, 2, 245, "11");
        cache(4, 2, 246, "22");
        cache(4, 2, 247, "33");
        QByteArray &second = PLC_driver.extendVars[1].data;
        QCOMPARE(get(2, "9.1.1.5", second, 3), 1);
        QCOMPARE(second, bytes("11 00 22 00 33 00"));
    }

    void aBlockOfNoElementsLeavesTheBuffer()
    {
        for (const int count : {0, -1, -2147483647 - 1}) {
            QByteArray out = bytes("EE");
            QCOMPARE(get(2, "0.1.1.5", out, count), 1);
            QCOMPARE(out, bytes("EE"));
        }
        QCOMPARE(PLC_driver.extendVars.size(), 0);
    }

    void addressesOfABlockWrapAt32Bits()
    {
        cache(4, 2, 2147483647, "11");
        cache(4, 2, -2147483647 - 1, "22");
        QByteArray out;
        QCOMPARE(get(2, "0.0.0.2147483647", out, 2), 1);
        QCOMPARE(out, bytes("11 00 22 00"));
        QCOMPARE(PLC_driver.extendVars.size(), 2);
    }

    void anotherKindWritesNothing()
    {
        for (const int kind : {3, 7, -1}) {
            QByteArray out = bytes("EE");
            QCOMPARE(get(kind, "-1.2.3", out, 3), 1);
            QCOMPARE(out, bytes("EE"));
        }
        QCOMPARE(PLC_driver.extendVars.size(), 0);
    }

    void bytesBeyondTheValueAreKept()
    {
        cache(4, 0, 39, "01");
        cache(4, 1, 39, "34 12");
        cache(4, 2, 5, "77");
        const QByteArray six = bytes("EE EE EE EE EE EE");
        QByteArray out = six;
        get(0, "1.2.3", out);
        QCOMPARE(out, bytes("01 00 EE EE EE EE"));
        out = six;
        get(1, "1.2.3", out);
        QCOMPARE(out, bytes("34 12 EE EE EE EE"));
        out = six;
        get(2, "0.0.0.5", out, 2);
        QCOMPARE(out, bytes("77 00 00 00 EE EE"));
        QCOMPARE(six, bytes("EE EE EE EE EE EE"));
    }

    void aShorterBufferGrows()
    {
        cache(4, 1, 39, "34 12");
        QByteArray out = bytes("EE");
        get(1, "1.2.3", out);
        QCOMPARE(out, bytes("34 12"));
        out = bytes("EE EE EE");
        get(2, "0.0.0.5", out, 2);
        QCOMPARE(out, bytes("00 00 00 00"));
    }

    void growingABufferPrintsNothing()
    {
        OutputCapture printed;
        for (const int kind : {0, 1, 2}) {
            QByteArray out;
            get(kind, "0.0.0.1", out, 3);
        }
        QCOMPARE(printed.stop(), QByteArray());
        QCOMPARE(PLC_driver.extendVars.size(), 5);
    }

    void theStationIsTakenAsItIs()
    {
        info_.purgeByStation = 0;
        info_.defaultStation = 17;
        info_.hostWriteMode = 0;
        QByteArray value = bytes("34 12");
        QCOMPARE(SetRegisterData(QString(), 1, QString("1.2.3"), 4, value, 1, 0, 0), 1);
        QByteArray out;
        QCOMPARE(get(1, "1.2.3", out, 1, 17), 1);
        QCOMPARE(out, bytes("34 12"));
        QCOMPARE(get(1, "1.2.3", out, 1, 4), 1);
        QCOMPARE(out, bytes("00 00"));
        QCOMPARE(cacheRecords(), QStringList({"17/1/39=3412", "4/1/39=00000000"}));
    }

    void whatTheHostCachedReadsBack()
    {
        QByteArray words = bytes("34 12 78 56");
        QCOMPARE(SetRegisterData(QString(), 1, QString("1.2.3"), 4, words, 2, 0, 0), 1);
        info_.defaultStation = 0;
        QByteArray out;
        QCOMPARE(get(1, "1.2.3", out, 1, 0), 1);
        QCOMPARE(out, bytes("34 12"));
        QCOMPARE(get(1, "1.2.4", out, 1, 0), 1);
        QCOMPARE(out, bytes("78 56"));
    }

    void aNegativeAddressIsRefusedWithoutALock_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("bit") << 0 << QByteArray("-1.0.0");
        QTest::newRow("word") << 1 << QByteArray("0.0.-1");
        QTest::newRow("block") << 2 << QByteArray("0.-1.0.0");
    }
    void aNegativeAddressIsRefusedWithoutALock()
    {
        QFETCH(int, kind);
        QFETCH(QByteArray, text);
        QByteArray out = bytes("EE");
        const AllLocksHeld held;
        QCOMPARE(get(kind, text.constData(), out), 0);
        QCOMPARE(out, bytes("EE"));
        QCOMPARE(PLC_driver.extendVars.size(), 0);
    }

    void badDigitsCountAsZero()
    {
        cache(4, 1, 35, "34 12");
        QByteArray out;
        QCOMPARE(get(1, "1.x.3", out), 1);
        QCOMPARE(out, bytes("34 12"));
    }

    void readingHappensUnderTheAreaMutexAlone_data()
    {
        QTest::addColumn<int>("kind");
        for (const int kind : {0, 1, 2, 3})
            formattedRow("kind %d", kind) << kind;
    }
    void readingHappensUnderTheAreaMutexAlone()
    {
        QFETCH(int, kind);
        PLC_driver.comInfo = nullptr;
        QByteArray out;
        int meanwhile = -1;
        QVERIFY(waitsFor(
            PLC_driver.areaMutex, [&] { get(kind, "0.0.0.1", out); },
            [&meanwhile] { meanwhile = PLC_driver.extendVars.size(); }));
        QCOMPARE(meanwhile, 0);
        QCOMPARE(out.size(), kind < 3 ? 2 : 0);
        const QMutexLocker list(&PLC_driver.listMutex);
        const QMutexLocker station(&PLC_driver.stationMutex);
        QCOMPARE(get(kind, "0.0.0.1", out), 1);
    }

private:
    void finish() override
    {
        QCOMPARE(PLC_driver.pendingFrames.size(), 0);
        QCOMPARE(PLC_driver.writeList.size(), 0);
        QCOMPARE(PLC_driver.onceReadList.size(), 0);
    }
};

QTEST_APPLESS_MAIN(TestHostReads)
#include "tst_host_reads.moc"
