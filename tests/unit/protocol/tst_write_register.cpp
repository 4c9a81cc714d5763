// A write as the send cycle asks for it: the frame, then the host's callback, then the cache.
#include "protocol/write_frames.h"

#include "tests/support/callback_log.h"
#include "tests/support/driver_test.h"
#include "tests/support/frame_requests.h"

#include <QtTest>

#include <limits>

namespace
{

RW_VAR writeOf(int areaType, const char *addressText, const char *data)
{
    RW_VAR var;
    var.ownerId = 5;
    var.rwKind = RW_WRITE;
    var.areaType = areaType;
    var.addressText = QString::fromLatin1(addressText);
    var.address = 40; // not what the text stands for, to tell the two apart
    var.station = 1;
    var.count = 1;
    var.data = bytes(data);
    return var;
}

QStringList one(const char *text)
{
    return {QString::fromLatin1(text)};
}

/// Fills the driver's list with a record that holds these bytes too, as a host may.
QByteArray sharedBytes;

void shareBytes(QList<RW_VAR> *out, int, int)
{
    RW_VAR var;
    var.data = sharedBytes;
    out->append(var);
}

} // namespace

class TestWriteRegister : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void areaChoosesTheFrame_data()
    {
        QTest::addColumn<int>("areaType");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("frame");
        QTest::newRow("X") << 0 << QByteArray("3.4.0")
                           << QByteArray("05 30 31 30 33 34 31 33 34 0D");
        QTest::newRow("D") << 1 << QByteArray("3.4.0")
                           << QByteArray("05 30 31 30 33 34 31 31 32 33 34 0D");
        QTest::newRow("D, no value")
            << 1 << QByteArray("18.1.0") << QByteArray("05 30 31 31 32 31 31 0D");
        QTest::newRow("X has no command without value")
            << 0 << QByteArray("18.1.0") << QByteArray("05 30 31 31 32 31 31 33 34 0D");
    }

    void areaChoosesTheFrame()
    {
        QFETCH(int, areaType);
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, frame);
        fillWords(info_);
        RW_VAR var = writeOf(areaType, text.constData(), "34 12");
        WriteRegister(&var);
        QCOMPARE(pendingHex(), one(frame.constData()));
        QCOMPARE(changedWords(info_), oneReplyAwaited());
        QCOMPARE(callbackLog().calls, one("notify 5 1 0"));
    }

    void areasThatCannotBeWrittenAreStillNotified_data()
    {
        QTest::addColumn<int>("areaType");
        QTest::newRow("C") << 2;
        QTest::newRow("3") << 3;
        QTest::newRow("-1") << -1;
        QTest::newRow("256") << 256;
        QTest::newRow("lowest") << std::numeric_limits<int>::min();
    }

    void areasThatCannotBeWrittenAreStillNotified()
    {
        QFETCH(int, areaType);
        fillWords(info_);
        RW_VAR var = writeOf(areaType, "3.4.0.1", "34 12");
        WriteRegister(&var);
        QVERIFY(PLC_driver.pendingFrames.isEmpty());
        QCOMPARE(changedWords(info_), QStringList());
        QCOMPARE(callbackLog().calls, one("notify 5 1 0"));
        QVERIFY(PLC_driver.extendVars.isEmpty());
    }

    void callbackGetsTheOwnerAndFlagOne_data()
    {
        QTest::addColumn<int>("ownerId");
        QTest::newRow("0") << 0;
        QTest::newRow("12") << 12;
        QTest::newRow("-1") << -1;
        QTest::newRow("highest") << std::numeric_limits<int>::max();
    }

    void callbackGetsTheOwnerAndFlagOne()
    {
        QFETCH(int, ownerId);
        RW_VAR var = writeOf(AREA_D, "3.4.0", "34 12");
        var.ownerId = ownerId;
        WriteRegister(&var);
        QCOMPARE(callbackLog().calls, QStringList(QString("notify %1 1 0").arg(ownerId)));
    }

    void callbackRunsBetweenFrameAndCache()
    {
        QStringList frames;
        QStringList records;
        QStringList words;
        bool listsFree = true;
        bool areasFree = false;
        bool stationsFree = false;
        callbackLog().inside = [&] {
            frames = pendingHex();
            records = cacheRecords();
            words = changedWords(info_);
            listsFree = isFree(PLC_driver.listMutex);
            areasFree = isFree(PLC_driver.areaMutex);
            stationsFree = isFree(PLC_driver.stationMutex);
        };
        fillWords(info_);
        RW_VAR var = writeOf(AREA_D, "3.4.0", "34 12");
        {
            const QMutexLocker caller(&PLC_driver.listMutex); // as the send cycle holds it
            WriteRegister(&var);
        }
        QCOMPARE(frames, one("05 30 31 30 33 34 31 31 32 33 34 0D"));
        QCOMPARE(records, QStringList());
        QCOMPARE(words, oneReplyAwaited());
        QVERIFY(!listsFree);
        QVERIFY(areasFree);
        QVERIFY(stationsFree);
        QCOMPARE(cacheRecords(), one("1/1/40=3412"));
        QVERIFY(isFree(PLC_driver.areaMutex));
    }

    void callbackGetsAnEmptyListEachTime()
    {
        RW_VAR var = writeOf(AREA_D, "3.4.0", "34 12");
        WriteRegister(&var);
        WriteRegister(&var);
        // The callback fills the list; the second call must not see what the first left there.
        QCOMPARE(callbackLog().calls, one("notify 5 1 0") + one("notify 5 1 0"));
    }

    void listOfTheCallbackIsDestroyed()
    {
        sharedBytes = QByteArray(32, 'x');
        PLC_driver.ownerNotify = &shareBytes;
        RW_VAR var = writeOf(AREA_D, "3.4.0", "34 12");
        WriteRegister(&var);
        QVERIFY(sharedBytes.isDetached());
    }

    void unregisteredCallbackIsNotCalled()
    {
        PLC_driver.ownerNotify = nullptr;
        RW_VAR var = writeOf(AREA_D, "3.4.0", "34 12");
        WriteRegister(&var);
        QCOMPARE(pendingHex(), one("05 30 31 30 33 34 31 31 32 33 34 0D"));
        QCOMPARE(cacheRecords(), one("1/1/40=3412"));
    }

    void valueIsMirroredIntoTheCache_data()
    {
        QTest::addColumn<int>("areaType");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QStringList>("records");
        const QByteArray text = "3.4.0";
        QTest::newRow("word") << 1 << text << 1 << bytes("34 12") << one("1/1/40=3412");
        QTest::newRow("word of the command without value")
            << 1 << QByteArray("18.1.0") << 1 << bytes("34 12") << one("1/1/40=3412");
        QTest::newRow("two words")
            << 1 << text << 2 << bytes("34 12 78 56") << one("1/1/40=3412") + one("1/1/41=7856");
        QTest::newRow("second word incomplete")
            << 1 << text << 2 << bytes("34 12 78") << one("1/1/40=3412");
        QTest::newRow("word of one byte") << 1 << text << 1 << bytes("34") << QStringList();
        QTest::newRow("no elements") << 1 << text << 0 << bytes("34 12") << QStringList();
        QTest::newRow("byte of X") << 0 << text << 1 << bytes("FF 00") << one("1/0/40=FF");
        QTest::newRow("X as the host queues it") << 0 << text << 1 << bytes("FF") << QStringList();
        QTest::newRow("area C") << 2 << text << 1 << bytes("34 12") << QStringList();
    }

    void valueIsMirroredIntoTheCache()
    {
        QFETCH(int, areaType);
        QFETCH(QByteArray, text);
        QFETCH(int, count);
        QFETCH(QByteArray, data);
        QFETCH(QStringList, records);
        RW_VAR var = writeOf(areaType, text.constData(), "");
        var.count = count;
        var.data = data;
        WriteRegister(&var);
        QCOMPARE(cacheRecords(), records);
        QCOMPARE(PLC_driver.pendingFrames.size(), areaType == AREA_C ? 0 : 1);
    }

    void valueIsMirroredBeforeItIsAcknowledged()
    {
        RW_VAR var = writeOf(AREA_D, "3.4.0", "34 12");
        WriteRegister(&var);
        var.data = bytes("78 56");
        WriteRegister(&var);
        QCOMPARE(PLC_driver.pendingFrames.size(), 2);
        QCOMPARE(cacheRecords(), one("1/1/40=7856"));
    }

    void afterAFailedExchangeTheCacheStays_data()
    {
        QTest::addColumn<int>("errorFlag");
        QTest::newRow("1") << 1;
        QTest::newRow("255") << 255;
    }

    void afterAFailedExchangeTheCacheStays()
    {
        QFETCH(int, errorFlag);
        PLC_driver.errorFlag = static_cast<quint8>(errorFlag);
        RW_VAR var = writeOf(AREA_D, "3.4.0", "34 12");
        {
            const AllLocksHeld held; // a look at the cache would hang
            WriteRegister(&var);
        }
        QCOMPARE(pendingHex(), one("05 30 31 30 33 34 31 31 32 33 34 0D"));
        QCOMPARE(callbackLog().calls, one("notify 5 1 0"));
        QVERIFY(PLC_driver.extendVars.isEmpty());
        QCOMPARE(static_cast<int>(PLC_driver.errorFlag), errorFlag);
    }

    void requestIsNotModified()
    {
        RW_VAR var = distinctRequest(AREA_D, "3.4.0");
        const QString before = recordText(var);
        WriteRegister(&var);
        QCOMPARE(recordText(var), before);
        QCOMPARE(recordText(PLC_driver.pendingFrames.first().var), before);
    }

private:
    void prepare() override { PLC_driver.ownerNotify = &logOwnerNotify; }
};

QTEST_APPLESS_MAIN(TestWriteRegister)
#include "tst_write_register.moc"
