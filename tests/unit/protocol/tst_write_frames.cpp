// The write requests: their bytes, the record that goes with them, and the host's block.
#include "protocol/write_frames.h"

#include "tests/support/callback_log.h"
#include "tests/support/driver_test.h"
#include "tests/support/frame_requests.h"
#include "tests/support/row_names.h"

#include <QtTest>

#include <vector>

namespace
{

RW_VAR writeOf(const char *addressText, const QByteArray &data, int station = 1)
{
    RW_VAR var;
    var.rwKind = RW_WRITE;
    var.addressText = QString::fromLatin1(addressText);
    var.station = station;
    var.data = data;
    return var;
}

QStringList hex(const QByteArray &frame)
{
    return {QString::fromLatin1(frame)};
}

void addColumns()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("frame");
}

void addWrite(const char *text, const char *data, const char *frame)
{
    formattedRow("%s value %s", text, data) << QByteArray(text) << bytes(data) << QByteArray(frame);
}

using Builder = void (*)(RW_VAR *);

/// Has `builder` frame the write of a row that addWrite made.
void frameRow(Builder builder)
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, frame);
    RW_VAR var = writeOf(text.constData(), data);
    builder(&var);
    QCOMPARE(pendingHex(), hex(frame));
    QCOMPARE(fieldsOf(PLC_driver.pendingFrames.first()),
             expectedFields(bytes(frame.constData()).size(), 6, 0, 0));
}

} // namespace

Q_DECLARE_METATYPE(Builder)

class TestWriteFrames : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void writeOfXCarriesOneByte_data()
    {
        addColumns();
        addWrite("1.2.0", "FF", "05 30 31 30 31 32 31 46 46 0D");
        addWrite("1.2.1", "FF", "05 30 31 30 31 32 39 46 46 0D");
        addWrite("1.2.2", "FF", "05 30 31 30 31 30 32 46 46 0D");
        addWrite("1.2.7", "01", "05 30 31 30 31 30 37 30 31 0D");
        addWrite("1.2.200", "01", "05 30 31 30 31 43 38 30 31 0D");
        addWrite("1.2.256", "01", "05 30 31 30 31 32 31 30 31 0D");
        addWrite("1.2.257", "01", "05 30 31 30 31 32 39 30 31 0D");
        addWrite("1.15.1", "01", "05 30 31 30 31 46 39 30 31 0D");
        addWrite("1.18.0", "01", "05 30 31 30 31 32 31 30 31 0D");
        addWrite("256.2.0", "0F", "05 30 31 30 30 32 31 30 46 0D");
        addWrite("-1.-1.0", "80", "05 30 31 46 46 46 31 38 30 0D");
        addWrite("x.y.z", "80", "05 30 31 30 30 30 31 38 30 0D");
        addWrite("1..0", "A5", "05 30 31 30 31 30 31 41 35 0D");
        addWrite("1.2", "A5", "05 30 31 30 31 32 31 41 35 0D");
        addWrite("1", "A5", "05 30 31 30 31 30 31 41 35 0D");
        addWrite("", "A5", "05 30 31 30 30 30 31 41 35 0D");
        addWrite("1.2.0.9", "A5", "05 30 31 30 31 32 31 41 35 0D");
        addWrite("1.2.0", "A5 FF FF", "05 30 31 30 31 32 31 41 35 0D");
        addWrite("1.2.0", "", "05 30 31 30 31 32 31 30 30 0D");
        addWrite("18.1.0", "5A", "05 30 31 31 32 31 31 35 41 0D");
    }

    void writeOfXCarriesOneByte() { frameRow(&WriteAnalog_X); }

    void writeOfDCarriesAWordHighByteFirst_data()
    {
        addColumns();
        addWrite("3.4.0", "34 12", "05 30 31 30 33 34 31 31 32 33 34 0D");
        addWrite("0.0.0", "34 12", "05 30 31 30 30 30 31 31 32 33 34 0D");
        addWrite("0.0.1", "34 12", "05 30 31 30 30 30 39 31 32 33 34 0D");
        addWrite("0.0.7", "34 12", "05 30 31 30 30 30 37 31 32 33 34 0D");
        addWrite("0.5.200", "34 12", "05 30 31 30 30 43 38 31 32 33 34 0D");
        addWrite("0.17.1", "34 12", "05 30 31 30 30 31 39 31 32 33 34 0D");
        addWrite("0.15.0", "34 12", "05 30 31 30 30 46 31 31 32 33 34 0D");
        addWrite("0.5.256", "34 12", "05 30 31 30 30 35 31 31 32 33 34 0D");
        addWrite("271.-1.1", "34 12", "05 30 31 30 46 46 39 31 32 33 34 0D");
        addWrite("", "34 12", "05 30 31 30 30 30 31 31 32 33 34 0D");
        addWrite("3", "34 12", "05 30 31 30 33 30 31 31 32 33 34 0D");
        addWrite("3.4", "34 12", "05 30 31 30 33 34 31 31 32 33 34 0D");
        addWrite("3.4.0.1", "34 12", "05 30 31 30 33 34 31 31 32 33 34 0D");
        addWrite("3.4.0", "FF 80", "05 30 31 30 33 34 31 38 30 46 46 0D");
        addWrite("3.4.0", "CD AB 01 02", "05 30 31 30 33 34 31 41 42 43 44 0D");
        addWrite("3.4.0", "34", "05 30 31 30 33 34 31 30 30 33 34 0D");
        addWrite("3.4.0", "", "05 30 31 30 33 34 31 30 30 30 30 0D");
    }

    void writeOfDCarriesAWordHighByteFirst() { frameRow(&WriteAnalog_D); }

    void commandWithoutValueIsKnownByItsText_data()
    {
        addColumns();
        addWrite("18.1.0", "34 12", "05 30 31 31 32 31 31 0D");
        addWrite("18.1.1", "34 12", "05 30 31 31 32 31 39 0D");
        addWrite("18.1.5", "34 12", "05 30 31 31 32 30 35 0D");
        addWrite("18.1.0.3", "34 12", "05 30 31 31 32 31 31 0D");
        addWrite("18.1", "34 12", "05 30 31 31 32 31 31 0D");
        addWrite("18.1.0", "34", "05 30 31 31 32 31 31 0D");
        addWrite("18.1.0", "", "05 30 31 31 32 31 31 0D");
        // The same numbers in other words, and other numbers, carry their value.
        addWrite("18.01.0", "34 12", "05 30 31 31 32 31 31 31 32 33 34 0D");
        addWrite("018.1.0", "34 12", "05 30 31 31 32 31 31 31 32 33 34 0D");
        addWrite("18 .1.0", "34 12", "05 30 31 31 32 31 31 31 32 33 34 0D");
        addWrite(" 18.1.0", "34 12", "05 30 31 31 32 31 31 31 32 33 34 0D");
        addWrite("18.1 .0", "34 12", "05 30 31 31 32 31 31 31 32 33 34 0D");
        addWrite("+18.1.0", "34 12", "05 30 31 31 32 31 31 31 32 33 34 0D");
        addWrite("18.+1.0", "34 12", "05 30 31 31 32 31 31 31 32 33 34 0D");
        addWrite("274.1.0", "34 12", "05 30 31 31 32 31 31 31 32 33 34 0D");
        addWrite("18.17.0", "34 12", "05 30 31 31 32 31 31 31 32 33 34 0D");
        addWrite("18.2.0", "34 12", "05 30 31 31 32 32 31 31 32 33 34 0D");
        addWrite("18.10.0", "34 12", "05 30 31 31 32 41 31 31 32 33 34 0D");
        addWrite("18..1", "34 12", "05 30 31 31 32 30 39 31 32 33 34 0D");
        addWrite("18", "34 12", "05 30 31 31 32 30 31 31 32 33 34 0D");
        addWrite("17.1.0", "34 12", "05 30 31 31 31 31 31 31 32 33 34 0D");
        addWrite("180.1.0", "34 12", "05 30 31 42 34 31 31 31 32 33 34 0D");
        addWrite("1.18.0", "34 12", "05 30 31 30 31 32 31 31 32 33 34 0D");
    }

    void commandWithoutValueIsKnownByItsText() { frameRow(&WriteAnalog_D); }

    void stationIsSentByItsLowEightBits_data()
    {
        QTest::addColumn<int>("station");
        QTest::addColumn<QByteArray>("digits");
        QTest::newRow("0") << 0 << QByteArray("30 30");
        QTest::newRow("2") << 2 << QByteArray("30 32");
        QTest::newRow("16") << 16 << QByteArray("31 30");
        QTest::newRow("255") << 255 << QByteArray("46 46");
        QTest::newRow("0x1AB") << 0x1AB << QByteArray("41 42");
        QTest::newRow("-2") << -2 << QByteArray("46 45");
    }

    void stationIsSentByItsLowEightBits()
    {
        QFETCH(int, station);
        QFETCH(QByteArray, digits);
        RW_VAR var = writeOf("3.4.0", bytes("34 12"), station);
        WriteAnalog_X(&var);
        WriteAnalog_D(&var);
        QCOMPARE(pendingHex(), hex("05 " + digits + " 30 33 34 31 33 34 0D") +
                                   hex("05 " + digits + " 30 33 34 31 31 32 33 34 0D"));
    }

    void localWordsPlayNoPart()
    {
        std::vector<quint16> words(50001, 0xFFFF);
        LW = words.data();
        RW_VAR var = writeOf("3.4.0", bytes("34 12"));
        WriteAnalog_X(&var);
        WriteAnalog_D(&var);
        QCOMPARE(pendingHex(), QStringList({"05 30 31 30 33 34 31 33 34 0D",
                                            "05 30 31 30 33 34 31 31 32 33 34 0D"}));
    }

    void recordExpectsAnAcknowledgement_data()
    {
        QTest::addColumn<Builder>("builder");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("length");
        QTest::newRow("X") << &WriteAnalog_X << QString("3.4.0") << 10;
        QTest::newRow("D") << &WriteAnalog_D << QString("3.4.0") << 12;
        QTest::newRow("D without a value") << &WriteAnalog_D << QString("18.1.0") << 8;
    }

    void recordExpectsAnAcknowledgement()
    {
        QFETCH(Builder, builder);
        QFETCH(QString, text);
        QFETCH(int, length);
        fillWords(info_);
        RW_VAR var = distinctRequest(7, text); // the builders do not look at the area
        const QString before = recordText(var);
        {
            const AllLocksHeld held; // as builders run under the caller's locks
            builder(&var);
        }
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
        const Protocol &queued = PLC_driver.pendingFrames.first();
        QCOMPARE(queued.frame.size(), length);
        QCOMPARE(fieldsOf(queued), expectedFields(length, 6, 0, 0));
        QCOMPARE(recordText(queued.var), before);
        QCOMPARE(recordText(var), before);
        QCOMPARE(changedWords(info_), oneReplyAwaited());
    }

    void writesQueueInCallOrder()
    {
        RW_VAR first = writeOf("1.2.0", bytes("FF 00"));
        RW_VAR second = writeOf("3.4.0", bytes("34 12"));
        WriteAnalog_X(&first);
        info_.framesReceived = 9;
        WriteAnalog_D(&second);
        QCOMPARE(pendingHex(), QStringList({"05 30 31 30 31 32 31 46 46 0D",
                                            "05 30 31 30 33 34 31 31 32 33 34 0D"}));
        QCOMPARE(info_.framesExpected, 1);
        QCOMPARE(info_.framesReceived, 0);
    }

    void recordKeepsItsOwnCopy()
    {
        RW_VAR var = distinctRequest(AREA_D, "3.4.0");
        const QString before = recordText(var);
        WriteAnalog_D(&var);
        var.data[0] = 'x';
        var.addressText.clear();
        QCOMPARE(recordText(PLC_driver.pendingFrames.first().var), before);
    }

    void buildersNeitherNotifyNorStore()
    {
        callbackLog() = CallbackLog();
        PLC_driver.ownerNotify = &logOwnerNotify;
        RW_VAR var = distinctRequest(AREA_D, "3.4.0");
        WriteAnalog_X(&var);
        WriteAnalog_D(&var);
        QCOMPARE(callbackLog().calls, QStringList());
        QVERIFY(PLC_driver.extendVars.isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestWriteFrames)
#include "tst_write_frames.moc"
