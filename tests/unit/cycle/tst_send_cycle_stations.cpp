// The send cycle with stations switched off.
#include "cycle/receive_cycle.h"
#include "cycle/send_cycle.h"
#include "tests/support/callback_log.h"
#include "tests/support/driver_requests.h"
#include "tests/support/driver_test.h"
#include "tests/support/lock_watch.h"

#include <QtTest>

#include <climits>

namespace
{

QString nextName()
{
    const Protocol *frame = ComCommunication();
    return frame ? frame->var.name : QString("-");
}

} // namespace

class TestSendCycleStations : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void stationIsKnownAsDisabled()
    {
        EnCommStation(3, 0);
        EnCommStation(0, 0);
        QVERIFY(Ethernetcontains(3));
        QVERIFY(Ethernetcontains(0));
        for (const int station : {2, 4, -1, INT_MIN, INT_MAX, 3 + 256})
            QVERIFY(!Ethernetcontains(station));
        QCOMPARE(PLC_driver.disabledStations.size(), 2);
        EnCommStation(3, 1);
        QVERIFY(!Ethernetcontains(3));
    }

    void stationTestWaitsForTheStationMutexAlone()
    {
        QVERIFY(waitsFor(PLC_driver.stationMutex, [] { Ethernetcontains(1); }));
        PLC_driver.listMutex.lock();
        PLC_driver.areaMutex.lock();
        QVERIFY(!Ethernetcontains(1));
        PLC_driver.areaMutex.unlock();
        PLC_driver.listMutex.unlock();
    }

    void sendCycleTestsTheStationUnderTheListMutex_data() { addKindRows(); }

    void sendCycleTestsTheStationUnderTheListMutex()
    {
        QFETCH(int, kind);
        listOf(kind).append(wordRead("e"));
        bool listMutexFree = true;
        bool areaMutexFree = false;
        QVERIFY(waitsFor(
            PLC_driver.stationMutex, [] { ComCommunication(); },
            [&] {
                listMutexFree = isFree(PLC_driver.listMutex);
                areaMutexFree = isFree(PLC_driver.areaMutex);
            }));
        QVERIFY(!listMutexFree);
        QVERIFY(areaMutexFree);
    }

    void writeOfDisabledStationIsDroppedUnreported()
    {
        EnCommStation(2, 0);
        PLC_driver.writeList << wordWrite("w1", 2) << wordWrite("w2", 2) << wordWrite("w3", 1)
                             << wordWrite("w4", 2);
        callbackLog().inside = [] { QCOMPARE(names(PLC_driver.writeList), QString("w3 w4")); };
        QCOMPARE(nextName(), QString("w3"));
        QCOMPARE(names(PLC_driver.writeList), QString("w3 w4"));
        QCOMPARE(callbackLog().calls, QStringList("notify 0 1 0"));
        QCOMPARE(PLC_driver.writeBurst, 1);
    }

    void pollThatDropsEveryWriteYieldsNothing()
    {
        EnCommStation(2, 0);
        PLC_driver.writeList << wordWrite("w1", 2) << wordWrite("w2", 2);
        PLC_driver.onceReadList.append(wordRead("o"));
        PLC_driver.readList.append(wordRead("r"));
        PLC_driver.writeBurst = 2;
        QVERIFY(ComCommunication() == nullptr);
        QVERIFY(PLC_driver.writeList.isEmpty());
        QVERIFY(PLC_driver.pendingFrames.isEmpty());
        QVERIFY(callbackLog().calls.isEmpty());
        QVERIFY(PLC_driver.extendVars.isEmpty());
        QCOMPARE(PLC_driver.lastKind, 1);
        QCOMPARE(PLC_driver.writeBurst, 2);
        QCOMPARE(info_.scanComplete, 0);
        QVERIFY(isFree(PLC_driver.listMutex));
        QVERIFY(isFree(PLC_driver.stationMutex));
        QCOMPARE(nextName(), QString("o"));
    }

    void onceReadOfDisabledStationIsDroppedUnreported()
    {
        EnCommStation(2, 0);
        PLC_driver.onceReadList << ownedRead("o1", 5, 5, 2) << ownedRead("o2", 6, 6, 1)
                                << ownedRead("o3", 7, 7, 2);
        QCOMPARE(nextName(), QString("o2"));
        QCOMPARE(names(PLC_driver.onceReadList), QString("o2 o3"));
        QVERIFY(callbackLog().calls.isEmpty());
        QCOMPARE(PLC_driver.onceReadBurst, 1);
        QCOMPARE(PLC_driver.lastKind, 2);
    }

    void pollThatDropsEveryOnceReadYieldsNothing()
    {
        EnCommStation(2, 0);
        PLC_driver.onceReadList << wordRead("o1", 2) << wordRead("o2", 2);
        PLC_driver.readList.append(wordRead("r"));
        QVERIFY(ComCommunication() == nullptr);
        QVERIFY(PLC_driver.onceReadList.isEmpty());
        QVERIFY(callbackLog().calls.isEmpty());
        QCOMPARE(PLC_driver.lastKind, 2);
        QCOMPARE(PLC_driver.onceReadBurst, 0);
        QVERIFY(isFree(PLC_driver.listMutex));
        QCOMPARE(nextName(), QString("r"));
    }

    void queuesOfDisabledStationsWaitBehindAClosedDoor()
    {
        EnCommStation(2, 0);
        PLC_driver.writeList.append(wordWrite("w", 2));
        PLC_driver.onceReadList.append(wordRead("o", 2));
        PLC_driver.readList.append(wordRead("r", 1));
        PLC_driver.writeBurst = 5;
        PLC_driver.onceReadBurst = 5;
        QCOMPARE(nextName(), QString("r"));
        QCOMPARE(names(PLC_driver.writeList), QString("w"));
        QCOMPARE(names(PLC_driver.onceReadList), QString("o"));
    }

    void cyclicReadsOfDisabledStationsAreSkippedAndKept()
    {
        EnCommStation(2, 0);
        PLC_driver.readList << wordRead("a", 2) << wordRead("b", 2) << wordRead("c", 1)
                            << wordRead("d", 2);
        PLC_driver.writeBurst = 3;
        QCOMPARE(nextName(), QString("c"));
        QCOMPARE(names(PLC_driver.readList), QString("c d a b"));
        QCOMPARE(PLC_driver.writeBurst, 0);
        QByteArray reply = wordReply();
        DataCom(&reply, reply.size());
        QCOMPARE(names(PLC_driver.readList), QString("d a b c"));
        QCOMPARE(nextName(), QString("c"));
    }

    void lastOfManyMayBeTheOnlyOneEnabled()
    {
        EnCommStation(2, 0);
        PLC_driver.readList << wordRead("a", 2) << wordRead("b", 2) << wordRead("c", 1);
        QCOMPARE(nextName(), QString("c"));
        QCOMPARE(names(PLC_driver.readList), QString("c a b"));
    }

    void cyclicListOfDisabledStationsTurnsOnceAndYieldsNothing()
    {
        EnCommStation(2, 0);
        EnCommStation(3, 0);
        PLC_driver.readList << wordRead("a", 2) << wordRead("b", 3) << wordRead("c", 2);
        PLC_driver.writeBurst = 3;
        PLC_driver.onceReadBurst = 4;
        for (int poll = 0; poll < 3; ++poll) {
            QVERIFY(ComCommunication() == nullptr);
            QCOMPARE(names(PLC_driver.readList), QString("a b c"));
        }
        QCOMPARE(PLC_driver.lastKind, 0);
        QCOMPARE(PLC_driver.writeBurst, 3);
        QCOMPARE(PLC_driver.onceReadBurst, 4);
        QCOMPARE(info_.scanComplete, 0);
        QVERIFY(isFree(PLC_driver.listMutex));
    }

    void stationSwitchedOnAgainIsPolledAgain()
    {
        EnCommStation(1, 0);
        PLC_driver.readList.append(wordRead("a", 1));
        QCOMPARE(nextName(), QString("-"));
        EnCommStation(-1, 0);
        QCOMPARE(nextName(), QString("a"));
    }

private:
    void prepare() override { logCallbacks(); }
};

QTEST_APPLESS_MAIN(TestSendCycleStations)
#include "tst_send_cycle_stations.moc"
