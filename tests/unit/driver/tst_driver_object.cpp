// The driver object: start values, locks, release of what it holds, and passRetValue.
#include "driver/driver_object.h"
#include "tests/support/driver_requests.h"
#include "tests/support/driver_test.h"

#include <QtTest>

#include <algorithm>
#include <functional>
#include <memory>

namespace
{

RW_VAR everySlotSet()
{
    RW_VAR var;
    var.ownerId = 1;
    var.ownerSubId = 2;
    var.rwKind = 3;
    var.reserved3 = 4;
    var.plcNo = 5;
    var.result = 6;
    var.name = "seven";
    var.addressText = "8.8.8";
    var.areaType = 9;
    var.address = 10;
    var.station = 11;
    var.count = 12;
    var.remoteTag = 13;
    var.reserved13 = 14;
    var.data = bytes("0F 10");
    return var;
}

std::unique_ptr<Modbus_RTU_Master> newDriver()
{
    return std::unique_ptr<Modbus_RTU_Master>(new Modbus_RTU_Master());
}

bool allZero(const quint8 *area)
{
    return std::all_of(area, area + IMAGE_AREA_BYTES, [](quint8 byte) { return byte == 0; });
}

} // namespace

class TestDriverObject : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void newDriverHasEmptyLists()
    {
        const auto driver = newDriver();
        QVERIFY(driver->readList.isEmpty());
        QVERIFY(driver->writeList.isEmpty());
        QVERIFY(driver->onceReadList.isEmpty());
        QVERIFY(driver->readListWork.isEmpty());
        QVERIFY(driver->pendingFrames.isEmpty());
        QVERIFY(driver->extendVars.isEmpty());
        QVERIFY(driver->disabledStations.isEmpty());
    }

    void newDriverHasNoHostYet()
    {
        const auto driver = newDriver();
        QVERIFY(driver->comInfo == nullptr);
        QVERIFY(driver->onceReadDone == nullptr);
        QVERIFY(driver->ownerNotify == nullptr);
    }

    void newDriverHasItsCountersAtStart()
    {
        const auto driver = newDriver();
        QCOMPARE(driver->lastKind, 100);
        QCOMPARE(driver->writeBurst, 0);
        QCOMPARE(driver->onceReadBurst, 0);
        QCOMPARE(driver->scanCount, 0);
        QCOMPARE(int(driver->errorFlag), 0);
    }

    void newDriverHasAnEmptyReply()
    {
        const auto driver = newDriver();
        QVERIFY(driver->reply.name.isEmpty());
        QVERIFY(driver->reply.addressText.isEmpty());
        QVERIFY(driver->reply.data.isEmpty());
        QCOMPARE(driver->reply.result, 0);
    }

    void newDriverHasZeroedAlignedImageAreas()
    {
        const auto driver = newDriver();
        for (const quint8 *area : {driver->imageArea1, driver->imageArea2, driver->imageArea3}) {
            QVERIFY(allZero(area));
            QCOMPARE(int(reinterpret_cast<quintptr>(area) % sizeof(quint16)), 0);
        }
        QCOMPARE(sizeof(driver->imageArea1), size_t(131072));
        QCOMPARE(sizeof(driver->imageArea2), size_t(131072));
        QCOMPARE(sizeof(driver->imageArea3), size_t(131072));
    }

    void imageAreasOfTheLoadedDriverAreZero()
    {
        QVERIFY(allZero(PLC_driver.imageArea1));
        QVERIFY(allZero(PLC_driver.imageArea2));
        QVERIFY(allZero(PLC_driver.imageArea3));
    }

    void mutexesAreFreeAndNotRecursive()
    {
        const auto driver = newDriver();
        for (QMutex *mutex : {&driver->listMutex, &driver->areaMutex, &driver->stationMutex}) {
            QVERIFY(mutex->tryLock());
            QVERIFY(!mutex->tryLock());
            mutex->unlock();
            QVERIFY(isFree(*mutex));
        }
    }

    void fieldsLieInOrder()
    {
        const auto d = newDriver();
        const std::initializer_list<const void *> fields = {
            &d->comInfo,       &d->readList,      &d->writeList,  &d->onceReadList,
            &d->readListWork,  &d->pendingFrames, &d->extendVars, &d->disabledStations,
            &d->onceReadDone,  &d->ownerNotify,   &d->listMutex,  &d->areaMutex,
            &d->stationMutex,  &d->reply,         &d->lastKind,   &d->writeBurst,
            &d->onceReadBurst, &d->scanCount,     &d->errorFlag,  &d->imageArea1,
            &d->imageArea2,    &d->imageArea3};
        QVERIFY(std::is_sorted(fields.begin(), fields.end(), std::less<const void *>()));
    }

    void destructionReleasesEverythingHeld()
    {
        const QByteArray value(40, 'v');
        const QString text(40, QLatin1Char('t'));
        auto driver = newDriver();
        RW_VAR var;
        var.name = text;
        var.addressText = text;
        var.data = value;
        driver->reply = var;
        driver->readList.append(var);
        driver->writeList.append(var);
        driver->onceReadList.append(var);
        driver->readListWork.append(var);
        driver->pendingFrames.append(frameFor(var, 8));
        driver->extendVars.append(EXTENDVAR{1, AREA_D, 2, value});
        driver->disabledStations.insert(3, 0);
        var = RW_VAR();
        QVERIFY(!value.isDetached());
        QVERIFY(!text.isDetached());
        driver.reset();
        QVERIFY(value.isDetached());
        QVERIFY(text.isDetached());
    }

    void destructionLeavesTheHostsBlockAlone()
    {
        auto driver = newDriver();
        info_.retryLimit = 5;
        driver->comInfo = &info_;
        driver.reset();
        QCOMPARE(info_.retryLimit, 5);
    }

    void kindsOfRequestHaveTheirNumbers()
    {
        QCOMPARE(int(KIND_CYCLIC_READ), 0);
        QCOMPARE(int(KIND_WRITE), 1);
        QCOMPARE(int(KIND_ONCE_READ), 2);
        QCOMPARE(int(KIND_NONE), 100);
    }

    void finishedRequestIsPassedOnWithoutItsValue()
    {
        RW_VAR to;
        to.data = bytes("AA BB CC");
        passRetValue(everySlotSet(), to);
        QCOMPARE(to.ownerId, 1);
        QCOMPARE(to.ownerSubId, 2);
        QCOMPARE(to.rwKind, 3);
        QCOMPARE(to.reserved3, 4);
        QCOMPARE(to.plcNo, 5);
        QCOMPARE(to.result, 6);
        QCOMPARE(to.name, QString("seven"));
        QCOMPARE(to.addressText, QString("8.8.8"));
        QCOMPARE(to.areaType, 9);
        QCOMPARE(to.address, 10);
        QCOMPARE(to.station, 11);
        QCOMPARE(to.count, 12);
        QCOMPARE(to.remoteTag, 13);
        QCOMPARE(to.reserved13, 14);
        QVERIFY(to.data.isEmpty());
    }

    void passedOnRequestItselfKeepsItsValue()
    {
        const RW_VAR from = everySlotSet();
        RW_VAR to;
        passRetValue(from, to);
        QCOMPARE(from.data, bytes("0F 10"));
        QCOMPARE(from.name, QString("seven"));
    }

    void passingOnTakesNoLock()
    {
        const AllLocksHeld held;
        RW_VAR to;
        passRetValue(everySlotSet(), to);
        QCOMPARE(to.address, 10);
    }
};

QTEST_APPLESS_MAIN(TestDriverObject)
#include "tst_driver_object.moc"
