// The set-up entry points and the station switch.
#include "driver/driver_object.h"
#include "driver/entry_points.h"
#include "tests/support/callback_log.h"
#include "tests/support/driver_test.h"
#include "tests/support/lock_watch.h"

#include <QtTest>

#include <climits>

namespace
{

ComInfo numberedWords()
{
    ComInfo info = ComInfo();
    auto *words = reinterpret_cast<qint32 *>(&info);
    for (int i = 0; i < 19; ++i)
        words[i] = 100 + i;
    return info;
}

} // namespace
Q_DECLARE_METATYPE(QList<int>)

class TestSetUp : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void setComInfoClearsTwoWordsAndNoOther()
    {
        ComInfo block = numberedWords();
        PLC_driver.comInfo = nullptr;
        SetComInfo(&block);
        QVERIFY(PLC_driver.comInfo == &block);
        const auto *words = reinterpret_cast<const qint32 *>(&block);
        for (int i = 0; i < 19; ++i)
            QCOMPARE(words[i], i == 10 || i == 13 ? 0 : 100 + i);
    }

    void setComInfoAgainReplacesTheBlock()
    {
        ComInfo second = numberedWords();
        SetComInfo(&info_);
        info_.comWord10 = 7;
        SetComInfo(&second);
        QVERIFY(PLC_driver.comInfo == &second);
        QCOMPARE(second.comWord10, 0);
        QCOMPARE(info_.comWord10, 7);
        resetDriver(info_);
    }

    void setComInfoIgnoresNull()
    {
        SetComInfo(nullptr);
        QVERIFY(PLC_driver.comInfo == &info_);
    }

    void localRegistersAreKeptAndAnsweredWith396()
    {
        quint8 lb = 1;
        quint16 lw = 2;
        quint16 rwi = 3;
        QCOMPARE(FlashLocalRegister(&lb, &lw, &rwi), 396);
        QVERIFY(LB == &lb);
        QVERIFY(LW == &lw);
        QVERIFY(RWI == &rwi);
        QCOMPARE(int(lb) + lw + rwi, 6);
        QCOMPARE(FlashLocalRegister(nullptr, nullptr, nullptr), 396);
        QVERIFY(LB == nullptr);
        QVERIFY(LW == nullptr);
        QVERIFY(RWI == nullptr);
    }

    void eachLocalRegisterMayBeNull()
    {
        quint16 lw = 2;
        QCOMPARE(FlashLocalRegister(nullptr, &lw, nullptr), 396);
        QVERIFY(LB == nullptr);
        QVERIFY(LW == &lw);
        QVERIFY(RWI == nullptr);
        resetDriver(info_);
    }

    void callbacksAreKeptAndNotCalled()
    {
        callbackLog() = CallbackLog();
        RegistCallBackFuncIntf(logOnceReadDone, logOwnerNotify);
        QVERIFY(PLC_driver.onceReadDone == logOnceReadDone);
        QVERIFY(PLC_driver.ownerNotify == logOwnerNotify);
        QVERIFY(callbackLog().calls.isEmpty());
        RegistCallBackFuncIntf(nullptr, nullptr);
        QVERIFY(PLC_driver.onceReadDone == nullptr);
        QVERIFY(PLC_driver.ownerNotify == nullptr);
    }

    void setUpIsAlwaysFinished()
    {
        QCOMPARE(QueryFinishFlag(), 1);
        PLC_driver.comInfo = nullptr;
        QCOMPARE(QueryFinishFlag(), 1);
    }

    void setUpTakesNoLock()
    {
        const AllLocksHeld held;
        SetComInfo(&info_);
        QCOMPARE(FlashLocalRegister(nullptr, nullptr, nullptr), 396);
        RegistCallBackFuncIntf(nullptr, nullptr);
        QCOMPARE(QueryFinishFlag(), 1);
    }

    void stationSwitch_data()
    {
        QTest::addColumn<QList<int>>("before");
        QTest::addColumn<int>("station");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QList<int>>("after");
        using L = QList<int>;

        QTest::newRow("3,0 disables") << L() << 3 << 0 << L{3};
        QTest::newRow("3,0 when disabled") << L{3} << 3 << 0 << L{3};
        QTest::newRow("3,1 enables") << L{1, 3, 5} << 3 << 1 << L{1, 5};
        QTest::newRow("3,1 when enabled") << L{1, 5} << 3 << 1 << L{1, 5};
        QTest::newRow("3,2 does nothing") << L{1, 3} << 3 << 2 << L{1, 3};
        QTest::newRow("4,2 does nothing") << L{1, 3} << 4 << 2 << L{1, 3};
        QTest::newRow("3,-1 does nothing") << L{1, 3} << 3 << -1 << L{1, 3};
        QTest::newRow("0,0 disables") << L{3} << 0 << 0 << L{0, 3};
        QTest::newRow("0,1 enables") << L{0, 3} << 0 << 1 << L{3};
        QTest::newRow("INT_MAX,0 disables") << L{3} << INT_MAX << 0 << L{3, INT_MAX};
        QTest::newRow("-1,1 enables all") << L{1, 3} << -1 << 1 << L();
        QTest::newRow("-5,0 enables all") << L{1, 3} << -5 << 0 << L();
        QTest::newRow("-1,9 enables all") << L{1, 3} << -1 << 9 << L();
        QTest::newRow("INT_MIN,0 enables all") << L{1, 3} << INT_MIN << 0 << L();
        QTest::newRow("-1,0 when none is disabled") << L() << -1 << 0 << L();
    }

    void stationSwitch()
    {
        QFETCH(QList<int>, before);
        QFETCH(int, station);
        QFETCH(int, mode);
        QFETCH(QList<int>, after);
        for (const int disabled : before)
            EnCommStation(disabled, 0);
        EnCommStation(station, mode);
        QCOMPARE(PLC_driver.disabledStations.keys(), after);
        for (const int value : PLC_driver.disabledStations)
            QCOMPARE(value, 0);
        QVERIFY(isFree(PLC_driver.stationMutex));
    }

    void stationDisabledTwiceIsEnabledAtOnce()
    {
        EnCommStation(3, 0);
        EnCommStation(3, 0);
        EnCommStation(3, 1);
        QVERIFY(PLC_driver.disabledStations.isEmpty());
    }

    void aStationAlreadyDisabledStaysAsItIs()
    {
        PLC_driver.disabledStations.insert(3, 7);
        EnCommStation(3, 0);
        QCOMPARE(PLC_driver.disabledStations.value(3), 7);
    }

    void stationSwitchWaitsForTheStationMutexInEveryMode()
    {
        for (const int station : {-1, 3})
            for (const int mode : {0, 1, 2})
                QVERIFY(waitsFor(PLC_driver.stationMutex, [=] { EnCommStation(station, mode); }));
    }

    void stationSwitchTakesNoOtherLock()
    {
        PLC_driver.listMutex.lock();
        PLC_driver.areaMutex.lock();
        EnCommStation(3, 0);
        PLC_driver.areaMutex.unlock();
        PLC_driver.listMutex.unlock();
        QCOMPARE(PLC_driver.disabledStations.keys(), QList<int>{3});
    }
};

QTEST_APPLESS_MAIN(TestSetUp)
#include "tst_set_up.moc"
