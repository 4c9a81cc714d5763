// The read requests: their bytes, the record that goes with them, and the host's block.
#include "protocol/read_frames.h"

#include "tests/support/callback_log.h"
#include "tests/support/driver_test.h"
#include "tests/support/frame_requests.h"
#include "tests/support/row_names.h"

#include <QtTest>

#include <limits>
#include <vector>

namespace
{

/// A host's local words: only word 50,000 differs from all ones.
std::vector<quint16> localWords(quint16 word50000)
{
    std::vector<quint16> words(50001, 0xFFFF);
    words[50000] = word50000;
    return words;
}

RW_VAR readOf(int areaType, const char *addressText, int station = 1)
{
    RW_VAR var;
    var.areaType = areaType;
    var.addressText = QString::fromLatin1(addressText);
    var.station = station;
    return var;
}

QStringList hex(const char *frame)
{
    return {QString::fromLatin1(frame)};
}

void addTextColumns()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("frame");
}

void addText(const char *text, const char *frame)
{
    QTest::newRow(text) << QByteArray(text) << QByteArray(frame);
}

using Builder = void (*)(RW_VAR *);

} // namespace

Q_DECLARE_METATYPE(Builder)

class TestReadFrames : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void readsOfXAndDFollowTheAddressText_data()
    {
        addTextColumns();
        addText("5.2.1", "05 30 31 30 35 32 38 0D");
        addText("5.2.0", "05 30 31 30 35 32 30 0D");
        addText("5.2.3", "05 30 31 30 35 30 33 0D");
        addText("16.0.0", "05 30 31 31 30 30 30 0D");
        addText("255.0.0", "05 30 31 46 46 30 30 0D");
        addText("256.0.0", "05 30 31 30 30 30 30 0D");
        addText("171.0.0", "05 30 31 41 42 30 30 0D");
        addText("0.17.1", "05 30 31 30 30 31 38 0D");
        addText("0.15.1", "05 30 31 30 30 46 38 0D");
        addText("0.15.0", "05 30 31 30 30 46 30 0D");
        addText("0.16.0", "05 30 31 30 30 30 30 0D");
        addText("0.5.2", "05 30 31 30 30 30 32 0D");
        addText("0.5.200", "05 30 31 30 30 43 38 0D");
        addText("0.9.200", "05 30 31 30 30 43 38 0D");
        addText("0.5.255", "05 30 31 30 30 46 46 0D");
        addText("0.5.256", "05 30 31 30 30 35 30 0D");
        addText("0.5.257", "05 30 31 30 30 35 38 0D");
        addText("0.5.258", "05 30 31 30 30 30 32 0D");
        addText("-1.0.0", "05 30 31 46 46 30 30 0D");
        addText("0.-1.0", "05 30 31 30 30 46 30 0D");
        addText("0.5.-1", "05 30 31 30 30 46 46 0D");
        addText("5.2.1.9.9", "05 30 31 30 35 32 38 0D");
        addText("5..1", "05 30 31 30 35 30 38 0D");
        addText(".2.1", "05 30 31 30 30 32 38 0D");
        addText("x.2.1", "05 30 31 30 30 32 38 0D");
        addText("5.x.1", "05 30 31 30 35 30 38 0D");
        addText("5.2.x", "05 30 31 30 35 32 30 0D");
        addText("5a.2.1", "05 30 31 30 30 32 38 0D");
        addText("0x10.2.1", "05 30 31 30 30 32 38 0D");
        addText("010.2.1", "05 30 31 30 41 32 38 0D");
        addText("99999999999.2.1", "05 30 31 30 30 32 38 0D");
        addText("+5. 2.1 ", "05 30 31 30 35 32 38 0D");
        addText("5.2", "05 30 31 30 35 32 30 0D");
        addText("5", "05 30 31 30 35 30 30 0D");
        addText("5,2,1", "05 30 31 30 30 30 30 0D");
        addText("", "05 30 31 30 30 30 30 0D");
        addText("..", "05 30 31 30 30 30 30 0D");
    }

    void readsOfXAndDFollowTheAddressText()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, frame);
        for (const int area : {AREA_X, AREA_D}) {
            PLC_driver.pendingFrames.clear();
            RW_VAR var = readOf(area, text.constData());
            ReadRegister(&var);
            QCOMPARE(pendingHex(), hex(frame.constData()));
        }
    }

    void readOfCTakesItsHighNibbleFromTheHost_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<quint16>("word");
        QTest::addColumn<QByteArray>("frame");
        const auto row = [](const char *text, int word, const char *frame) {
            formattedRow("%s with word 0x%04X", text, static_cast<unsigned>(word))
                << QByteArray(text) << static_cast<quint16>(word) << QByteArray(frame);
        };
        row("7.9.0.4", 0x0013, "05 30 31 30 37 33 30 0D");
        row("7.9.1.4", 0x0013, "05 30 31 30 37 33 38 0D");
        row("7.9.2.4", 0x0013, "05 30 31 30 37 30 32 0D");
        row("7.9.256.4", 0x0013, "05 30 31 30 37 33 30 0D");
        row("7.9.0.4", 0xFFFF, "05 30 31 30 37 46 30 0D");
        row("7.9.1.4", 0xFFF0, "05 30 31 30 37 30 38 0D");
        row("7.9.0.4", 0x0300, "05 30 31 30 37 30 30 0D");
        row("263.0.0.0", 0xABC5, "05 30 31 30 37 35 30 0D");
        row("7", 0x0002, "05 30 31 30 37 32 30 0D");
        row("", 0x0002, "05 30 31 30 30 32 30 0D");
    }

    void readOfCTakesItsHighNibbleFromTheHost()
    {
        QFETCH(QByteArray, text);
        QFETCH(quint16, word);
        QFETCH(QByteArray, frame);
        std::vector<quint16> words = localWords(word);
        LW = words.data();
        RW_VAR var = readOf(AREA_C, text.constData());
        ReadRegister(&var);
        QCOMPARE(pendingHex(), hex(frame.constData()));
        QVERIFY(words == localWords(word));
    }

    void readOfCWithoutLocalWordsHasHighNibbleZero()
    {
        RW_VAR var = readOf(AREA_C, "7.9.1.4");
        ReadRegister(&var);
        QCOMPARE(pendingHex(), hex("05 30 31 30 37 30 38 0D"));
    }

    void readOfCLooksAtTheLocalWordAtEveryBuild()
    {
        std::vector<quint16> words = localWords(3);
        LW = words.data();
        RW_VAR var = readOf(AREA_C, "7.9.0.4");
        ReadRegister(&var);
        words[50000] = 0x000A;
        ReadRegister(&var);
        QCOMPARE(pendingHex(), QStringList({"05 30 31 30 37 33 30 0D", "05 30 31 30 37 41 30 0D"}));
    }

    void localWordsMayLieAtAnOddAddress()
    {
        const std::vector<quint16> words = localWords(0x0013);
        QByteArray area("x");
        area.append(reinterpret_cast<const char *>(words.data()), 2 * 50001);
        LW = area.data() + 1;
        RW_VAR var = readOf(AREA_C, "7.9.0.4");
        ReadRegister(&var);
        QCOMPARE(pendingHex(), hex("05 30 31 30 37 33 30 0D"));
    }

    void readsOfXAndDIgnoreTheLocalWords()
    {
        std::vector<quint16> words = localWords(0x000A);
        LW = words.data();
        RW_VAR x = readOf(AREA_X, "5.2.1");
        ReadRegister(&x);
        RW_VAR d = readOf(AREA_D, "5.2.1");
        ReadRegister(&d);
        QCOMPARE(pendingHex(), QStringList({"05 30 31 30 35 32 38 0D", "05 30 31 30 35 32 38 0D"}));
    }

    void stationIsSentByItsLowEightBits_data()
    {
        QTest::addColumn<int>("station");
        QTest::addColumn<QByteArray>("frame");
        QTest::newRow("0") << 0 << QByteArray("05 30 30 30 35 32 38 0D");
        QTest::newRow("9") << 9 << QByteArray("05 30 39 30 35 32 38 0D");
        QTest::newRow("10") << 10 << QByteArray("05 30 41 30 35 32 38 0D");
        QTest::newRow("255") << 255 << QByteArray("05 46 46 30 35 32 38 0D");
        QTest::newRow("0x1AB") << 0x1AB << QByteArray("05 41 42 30 35 32 38 0D");
        QTest::newRow("-1") << -1 << QByteArray("05 46 46 30 35 32 38 0D");
    }

    void stationIsSentByItsLowEightBits()
    {
        QFETCH(int, station);
        QFETCH(QByteArray, frame);
        std::vector<quint16> words = localWords(2);
        LW = words.data();
        for (const int area : {AREA_X, AREA_D, AREA_C}) {
            PLC_driver.pendingFrames.clear();
            RW_VAR var = readOf(area, "5.2.1.0", station);
            ReadRegister(&var);
            QCOMPARE(pendingHex(), hex(frame.constData()));
        }
    }

    void recordTellsWhereTheReplyHasItsData_data()
    {
        QTest::addColumn<Builder>("builder");
        QTest::addColumn<int>("areaType");
        QTest::addColumn<int>("replyLength");
        QTest::addColumn<int>("digits");
        QTest::newRow("ReadRegister, X") << &ReadRegister << 0 << 6 << 2;
        QTest::newRow("ReadRegister, D") << &ReadRegister << 1 << 8 << 4;
        QTest::newRow("ReadRegister, C") << &ReadRegister << 2 << 144 << 140;
        QTest::newRow("ReadAnalog_X, whatever the area") << &ReadAnalog_X << 7 << 6 << 2;
        QTest::newRow("ReadAnalog_D, whatever the area") << &ReadAnalog_D << 7 << 8 << 4;
        QTest::newRow("ReadAnalog_C, whatever the area") << &ReadAnalog_C << 7 << 144 << 140;
    }

    void recordTellsWhereTheReplyHasItsData()
    {
        QFETCH(Builder, builder);
        QFETCH(int, areaType);
        QFETCH(int, replyLength);
        QFETCH(int, digits);
        std::vector<quint16> words = localWords(2);
        LW = words.data();
        fillWords(info_);
        RW_VAR var = distinctRequest(areaType, "5.2.1.6");
        const QString before = recordText(var);
        {
            const AllLocksHeld held; // as builders run under the caller's locks
            builder(&var);
        }
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
        const Protocol &queued = PLC_driver.pendingFrames.first();
        QCOMPARE(queued.frame, bytes("05 30 31 30 35 32 38 0D"));
        QCOMPARE(fieldsOf(queued), expectedFields(8, replyLength, 3, digits));
        QCOMPARE(recordText(queued.var), before);
        QCOMPARE(recordText(var), before);
        QCOMPARE(changedWords(info_), oneReplyAwaited());
    }

    void unknownAreaBuildsNothing_data()
    {
        QTest::addColumn<int>("areaType");
        QTest::newRow("3") << 3;
        QTest::newRow("-1") << -1;
        QTest::newRow("256") << 256;
        QTest::newRow("lowest") << std::numeric_limits<int>::min();
        QTest::newRow("highest") << std::numeric_limits<int>::max();
    }

    void unknownAreaBuildsNothing()
    {
        QFETCH(int, areaType);
        fillWords(info_);
        RW_VAR var = distinctRequest(areaType, "5.2.1.6");
        const QString before = recordText(var);
        ReadRegister(&var);
        QVERIFY(PLC_driver.pendingFrames.isEmpty());
        QCOMPARE(changedWords(info_), QStringList());
        QCOMPARE(recordText(var), before);
    }

    void countAndNumericAddressPlayNoPart()
    {
        for (const int count : {0, -1, 1, 1000000}) {
            PLC_driver.pendingFrames.clear();
            RW_VAR var = readOf(AREA_D, "5.2.1");
            var.count = count;
            var.address = -count;
            ReadRegister(&var);
            QCOMPARE(pendingHex(), hex("05 30 31 30 35 32 38 0D"));
        }
    }

    void readsQueueInCallOrder()
    {
        RW_VAR first = readOf(AREA_D, "1.2.0");
        RW_VAR second = readOf(AREA_X, "3.4.0");
        ReadRegister(&first);
        info_.framesReceived = 9;
        ReadRegister(&second);
        QCOMPARE(pendingHex(), QStringList({"05 30 31 30 31 32 30 0D", "05 30 31 30 33 34 30 0D"}));
        QCOMPARE(info_.framesExpected, 1);
        QCOMPARE(info_.framesReceived, 0);
    }

    void recordKeepsItsOwnCopy()
    {
        RW_VAR var = distinctRequest(AREA_D, "5.2.1");
        const QString before = recordText(var);
        ReadRegister(&var);
        var.addressText = "9.9.9";
        var.name.append(QLatin1Char('!'));
        var.data[0] = 'x';
        QCOMPARE(recordText(PLC_driver.pendingFrames.first().var), before);
    }

    void requestListsAndCacheStayUntouched()
    {
        callbackLog() = CallbackLog();
        PLC_driver.ownerNotify = &logOwnerNotify;
        PLC_driver.onceReadDone = &logOnceReadDone;
        RW_VAR var = distinctRequest(AREA_D, "5.2.1");
        PLC_driver.readList.append(var);
        ReadRegister(&var);
        QCOMPARE(PLC_driver.readList.size(), 1);
        QVERIFY(PLC_driver.writeList.isEmpty());
        QVERIFY(PLC_driver.onceReadList.isEmpty());
        QVERIFY(PLC_driver.extendVars.isEmpty());
        QCOMPARE(PLC_driver.lastKind, 100);
        QCOMPARE(callbackLog().calls, QStringList());
    }
};

QTEST_APPLESS_MAIN(TestReadFrames)
#include "tst_read_frames.moc"
