// The built library, driven through its fourteen names as a host does it.
#include "tests/support/loaded_host.h"

#include <QtTest>

class LibraryTest : public QObject, private LoadedHost
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY(load()); }
    void cleanup() { driver.reset(); }

    void wordIsReadEndToEnd()
    {
        QCOMPARE(driver->plcAddressChangeIntef(AREA_D, QStringLiteral("5.2.1")), 165);
        QCOMPARE(list({hostVariable(AREA_D, "5.2.1", 1)}), 1);
        const Protocol *frame = driver->comCommunication();
        QVERIFY(frame != nullptr);
        QCOMPARE(frame->frame, bytes("05 30 31 30 35 32 38 0D"));
        QCOMPARE(frame->frameLength, 8);
        QCOMPARE(frame->expectedReplyLength, 8);
        QByteArray reply = bytes("06 30 31 31 32 41 42 0D");
        const RW_VAR *outcome = driver->dataCom(&reply, 8);
        QCOMPARE(outcome->result, 1);
        QCOMPARE(outcome->name, QStringLiteral("level"));
        QCOMPARE(outcome->addressText, QStringLiteral("5.2.1"));
        QCOMPARE(outcome->address, 165);
        QVERIFY(outcome->data.isEmpty());
        QCOMPARE(value(AREA_D, "5.2.1", 1), bytes("AB 12"));
        QCOMPARE(poll(), bytes("05 30 31 30 35 32 38 0D"));
    }

    void scanIsReportedComplete()
    {
        QCOMPARE(list({hostVariable(AREA_D, "5.2.1", 1)}), 1);
        for (const int complete : {0, 1}) {
            QVERIFY(!poll().isEmpty());
            QCOMPARE(receive(bytes("06 30 31 31 32 41 42 0D")), 1);
            QCOMPARE(info.scanComplete, complete);
        }
    }

    void blockIsReadWhereTheLocalWordSays()
    {
        localWords[50000] = 0x0013;
        QCOMPARE(list({hostVariable(AREA_C, "7.9.0.4", 1), hostVariable(AREA_C, "7.9.0.5", 1)}), 1);
        QCOMPARE(poll(), bytes("05 30 31 30 37 33 30 0D"));
        QCOMPARE(driver->comCommunication()->expectedReplyLength, 144);
        const QByteArray digits = QByteArray("0A0B0C0D0E") + QByteArray(130, '7');
        QCOMPARE(receive(bytes("06 30 31") + digits + '\r'), 1);
        QCOMPARE(value(AREA_C, "7.9.0.4", 1, 2), bytes("0E 00 77 00"));
    }

    void writeGoesOutAndIsReadBackAtOnce()
    {
        info.hostWriteMode = 2;
        info.defaultStation = 2;
        QCOMPARE(set(AREA_D, "3.4.0", bytes("34 12")), 1);
        QCOMPARE(poll(), bytes("05 30 32 30 33 34 31 31 32 33 34 0D"));
        QCOMPARE(driver->comCommunication()->expectedReplyLength, 6);
        QCOMPARE(calls(), QStringLiteral("notify 3 1 0"));
        QCOMPARE(value(AREA_D, "3.4.0", 2), bytes("34 12"));
        QCOMPARE(receive(bytes("06 30 32 30 30 0D")), 1);
        QVERIFY(poll().isEmpty());
        QCOMPARE(info.scanComplete, 1);
    }

    void writeOfTheCacheReachesNoLine()
    {
        info.defaultStation = 2;
        QCOMPARE(set(AREA_D, "3.4.0", bytes("34 12")), 1);
        QCOMPARE(value(AREA_D, "3.4.0", 2), bytes("34 12"));
        QVERIFY(poll().isEmpty());
    }

    void groupOfOnceReadsIsReportedWhenItsLastIsServed()
    {
        info.portTag = 7;
        info.defaultStation = 1;
        QCOMPARE(queue(request(AREA_D, "5.2.1", 4)), 1);
        QCOMPARE(queue(request(AREA_X, "1.2.0", 4)), 2);
        QCOMPARE(queue(request(AREA_X, "1.2.0", 4)), 2);
        QCOMPARE(poll(), bytes("05 30 31 30 35 32 38 0D"));
        QCOMPARE(receive(bytes("06 30 31 31 32 41 42 0D")), 1);
        QCOMPARE(calls(), QString());
        QCOMPARE(poll(), bytes("05 30 31 30 31 32 30 0D"));
        QCOMPARE(receive(bytes("06 30 31 46 46 0D")), 1);
        QCOMPARE(calls(), QStringLiteral("done 7 4 0 1"));
        QCOMPARE(value(AREA_X, "1.2.0", 1), bytes("FF 00"));
        QVERIFY(poll().isEmpty());
    }

    void failedAttemptIsRepeated()
    {
        info.retryLimit = 1;
        QCOMPARE(list({hostVariable(AREA_D, "5.2.1", 1), hostVariable(AREA_D, "5.2.0", 1)}), 2);
        const QByteArray frame = poll();
        QCOMPARE(driver->dataCom(nullptr, 0)->result, 0);
        QCOMPARE(info.retryCount, 1);
        QCOMPARE(poll(), frame);
        QCOMPARE(receive(bytes("06 30 31 31 32 41 42 0D")), 1);
        QVERIFY(poll() != frame);
    }

    void refusalIsAFinalFailureWithoutRetries()
    {
        QCOMPARE(list({hostVariable(AREA_D, "5.2.1", 1)}), 1);
        QVERIFY(!poll().isEmpty());
        QCOMPARE(receive(bytes("15 30 31 30 30 30 30 0D")), 11);
        QCOMPARE(calls(), QStringLiteral("notify 0 1 0"));
        QCOMPARE(value(AREA_D, "5.2.1", 1), bytes("00 00"));
        QVERIFY(!poll().isEmpty());
    }

    void finalFailurePurgesTheQueues()
    {
        info.defaultStation = 1;
        QCOMPARE(queue(request(AREA_D, "5.2.1", 4)), 1);
        QCOMPARE(queue(request(AREA_D, "6.2.1", 5)), 2);
        QVERIFY(!poll().isEmpty());
        QCOMPARE(queue(queuedWrite(2)), 1);
        QCOMPARE(driver->dataCom(nullptr, 0)->result, 45);
        QCOMPARE(calls(), QStringLiteral("done 0 4 0 2, notify 4 1 0"));
        QVERIFY(poll().isEmpty());
        QCOMPARE(queue(queuedWrite(2)), 1);
    }

    void finalFailurePurgesTheQueuesOfItsStationOnly()
    {
        info.purgeByStation = 1;
        QCOMPARE(queue(request(AREA_D, "5.2.1", 4)), 1);
        QCOMPARE(queue(request(AREA_D, "6.2.1", 5)), 2);
        QVERIFY(!poll().isEmpty());
        QCOMPARE(queue(queuedWrite(1)), 1);
        QCOMPARE(queue(queuedWrite(2)), 2);
        QCOMPARE(driver->dataCom(nullptr, 0)->result, 45);
        QCOMPARE(poll(), bytes("05 30 32 30 33 34 31 31 32 33 34 0D"));
        QCOMPARE(receive(bytes("06 30 32 30 30 0D")), 1);
        QVERIFY(poll().isEmpty());
    }

    void stationSwitchedOffIsNotPolled()
    {
        QCOMPARE(list({hostVariable(AREA_D, "5.2.1", 1)}), 1);
        driver->enCommStation(1, 0);
        QVERIFY(poll().isEmpty());
        driver->enCommStation(1, 1);
        QCOMPARE(poll(), bytes("05 30 31 30 35 32 38 0D"));
    }

    void remoteModeExchangesEnvelopes()
    {
        info.remoteMode = 1;
        RW_VAR var = request(AREA_D, "3.2.0", 7);
        var.plcNo = 2;
        var.address = 100;
        QCOMPARE(driver->addListReadVar(&var), 1);
        var.rwKind = RW_WRITE;
        var.data = bytes("34 12");
        QCOMPARE(queue(var), 1);

        QCOMPARE(poll(),
                 bytes("18 07 01 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 34 12 CF"));
        QCOMPARE(value(AREA_D, "3.2.0", 1), bytes("34 12"));
        QCOMPARE(receive(bytes("06 30 31 30 30 0D")), 100);
        QCOMPARE(poll(),
                 bytes("16 07 00 02 01 00 01 00 00 00 64 00 01 00 00 00 00 00 00 00 00 86"));
        QCOMPARE(driver->comCommunication()->expectedReplyLength, 8);
        QCOMPARE(receive(bytes("06 30 31 35 36 37 38 0D")), 100);
        QCOMPARE(value(AREA_D, "3.2.0", 1), bytes("34 12"));
    }

    void remoteReplyOfTagMinusOneIsStored()
    {
        info.remoteMode = 1;
        info.localPlcNo = 1;
        RW_VAR var = request(AREA_D, "3.2.0", 0);
        var.address = 100;
        var.remoteTag = -1;
        QCOMPARE(driver->addListReadVar(&var), 1);
        QVERIFY(!poll().isEmpty());
        QCOMPARE(receive(bytes("06 30 31 35 36 37 38 0D")), 1);
        QCOMPARE(value(AREA_D, "3.2.0", 1), bytes("78 56"));
        QVERIFY(!poll().isEmpty());
        QCOMPARE(driver->dataCom(nullptr, 0)->result, 141);
    }
};

QTEST_APPLESS_MAIN(LibraryTest)
#include "tst_library.moc"
