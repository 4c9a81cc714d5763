// The queue of one-time reads; AddListOnceReadVar is an entry point.
#include "driver/entry_points.h"

#include "tests/support/driver_test.h"
#include "tests/support/lock_watch.h"
#include "tests/support/record_text.h"

#include <QtTest>

#include <functional>

namespace
{

constexpr int LIMIT = 1024;

RW_VAR readOf(int area, const char *text)
{
    RW_VAR var = filledRecord();
    var.areaType = area;
    var.addressText = QLatin1String(text);
    return var;
}

/// What AddListOnceReadVar makes of `var` when it keeps the station.
RW_VAR amended(RW_VAR var, int address, int count)
{
    var.address = address;
    var.count = count;
    var.remoteTag = 0;
    var.reserved13 = 0;
    return var;
}

QStringList queuedReads()
{
    return recordTexts(PLC_driver.onceReadList);
}

void fillReads(int count)
{
    for (int i = 0; i < count; ++i) {
        RW_VAR var = amended(readOf(AREA_D, "0.0.0"), 0, 1);
        var.ownerId = i;
        PLC_driver.onceReadList.append(var);
    }
}

typedef std::function<void(RW_VAR &)> Change;

} // namespace
Q_DECLARE_METATYPE(Change)

class TestOnceReadQueue : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void aOnceReadIsAmendedAndQueued_data()
    {
        QTest::addColumn<int>("area");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("address");
        QTest::addColumn<int>("count");
        QTest::newRow("X 1.2.3") << 0 << QByteArray("1.2.3") << 39 << 1;
        QTest::newRow("X 0.0.0") << 0 << QByteArray("0.0.0") << 0 << 1;
        QTest::newRow("D 1.x.3") << 1 << QByteArray("1.x.3") << 35 << 1;
        QTest::newRow("D empty") << 1 << QByteArray("") << 0 << 1;
        QTest::newRow("C 0.2.1.7") << 2 << QByteArray("0.2.1.7") << 400 << 70;
        QTest::newRow("C 0.x.1.7") << 2 << QByteArray("0.x.1.7") << 80 << 70;
        QTest::newRow("C 0.2..7") << 2 << QByteArray("0.2..7") << 320 << 70;
        QTest::newRow("C 0.2") << 2 << QByteArray("0.2") << 320 << 70;
        QTest::newRow("C element valid, block not") << 2 << QByteArray("0.-1.0.200") << -160 << 70;
        QTest::newRow("unknown 3") << 3 << QByteArray("-1.2.3") << 0 << 1;
        QTest::newRow("unknown -1") << -1 << QByteArray("1.2.3.4") << 0 << 1;
    }
    void aOnceReadIsAmendedAndQueued()
    {
        QFETCH(int, area);
        QFETCH(QByteArray, text);
        QFETCH(int, address);
        QFETCH(int, count);
        RW_VAR var = readOf(area, text.constData());
        const QString expected = recordText(amended(var, address, count));
        QCOMPARE(AddListOnceReadVar(&var, 0), 1);
        QCOMPARE(recordText(var), expected);
        QCOMPARE(queuedReads(), QStringList(expected));
        QCOMPARE(wordsOf(info_), words_);
        QCOMPARE(PLC_driver.writeList.size(), 0);
    }

    void aNegativeAddressIsRefusedUnchangedWithoutALock_data()
    {
        QTest::addColumn<int>("area");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("X -1.0.0") << 0 << QByteArray("-1.0.0");
        QTest::newRow("D 0.0.-1") << 1 << QByteArray("0.0.-1");
        QTest::newRow("C 0.-1.0.0") << 2 << QByteArray("0.-1.0.0");
        QTest::newRow("C 0.1.0.-161") << 2 << QByteArray("0.1.0.-161");
    }
    void aNegativeAddressIsRefusedUnchangedWithoutALock()
    {
        QFETCH(int, area);
        QFETCH(QByteArray, text);
        fillReads(2);
        const QStringList before = queuedReads();
        info_.purgeByStation = 0;
        RW_VAR var = readOf(area, text.constData());
        const QString unchanged = recordText(var);
        const AllLocksHeld held;
        QCOMPARE(AddListOnceReadVar(&var, 0), 0);
        QCOMPARE(recordText(var), unchanged);
        QCOMPARE(queuedReads(), before);
    }

    void theDefaultStationIsTakenWhilePurgeIsNotByStation()
    {
        info_.purgeByStation = 0;
        info_.defaultStation = 17;
        RW_VAR first = readOf(AREA_D, "0.0.1");
        first.station = 5;
        RW_VAR second = first;
        second.station = 6;
        QCOMPARE(AddListOnceReadVar(&first, 0), 1);
        QCOMPARE(AddListOnceReadVar(&second, 0), 1);
        QCOMPARE(PLC_driver.onceReadList.first().station, 17);
        QCOMPARE(first.station, 17);
        QCOMPARE(second.station, 17);
    }

    void theOwnStationIsKeptWhilePurgeIsByStation()
    {
        info_.purgeByStation = -1;
        info_.defaultStation = 17;
        RW_VAR first = readOf(AREA_D, "0.0.1");
        first.station = 5;
        RW_VAR second = first;
        second.station = 6;
        QCOMPARE(AddListOnceReadVar(&first, 0), 1);
        QCOMPARE(AddListOnceReadVar(&second, 0), 2);
        QCOMPARE(PLC_driver.onceReadList.first().station, 5);
        QCOMPARE(PLC_driver.onceReadList.last().station, 6);
    }

    void aOnceReadMatchesOnItsRequesterAndItsVariable_data()
    {
        QTest::addColumn<Change>("change");
        QTest::addColumn<bool>("matches");
        QTest::newRow("nothing") << Change([](RW_VAR &) {}) << true;
        QTest::newRow("ownerId") << Change([](RW_VAR &v) { ++v.ownerId; }) << false;
        QTest::newRow("ownerSubId") << Change([](RW_VAR &v) { ++v.ownerSubId; }) << false;
        QTest::newRow("station") << Change([](RW_VAR &v) { ++v.station; }) << false;
        QTest::newRow("areaType") << Change([](RW_VAR &v) { --v.areaType; }) << false;
        QTest::newRow("text") << Change([](RW_VAR &v) { v.addressText = "0.0.9"; }) << false;
        QTest::newRow("same address") << Change([](RW_VAR &v) { v.addressText = "0.1.0"; }) << true;
        QTest::newRow("address") << Change([](RW_VAR &v) { v.address = 99; }) << true;
        QTest::newRow("count") << Change([](RW_VAR &v) { v.count = 99; }) << true;
        QTest::newRow("rwKind") << Change([](RW_VAR &v) { ++v.rwKind; }) << true;
        QTest::newRow("plcNo") << Change([](RW_VAR &v) { ++v.plcNo; }) << true;
        QTest::newRow("name") << Change([](RW_VAR &v) { v.name.clear(); }) << true;
        QTest::newRow("data") << Change([](RW_VAR &v) { v.data = "zz"; }) << true;
    }
    void aOnceReadMatchesOnItsRequesterAndItsVariable()
    {
        QFETCH(Change, change);
        QFETCH(bool, matches);
        RW_VAR first = readOf(AREA_D, "0.0.2");
        RW_VAR other = readOf(AREA_D, "7.7.7");
        RW_VAR second = readOf(AREA_D, "0.0.2");
        change(second);
        QCOMPARE(AddListOnceReadVar(&first, 0), 1);
        QCOMPARE(AddListOnceReadVar(&other, 0), 2);
        QCOMPARE(AddListOnceReadVar(&second, 0), matches ? 2 : 3);
        QCOMPARE(QStringList(queuedReads().mid(0, 2)),
                 QStringList({recordText(first), recordText(other)}));
        if (!matches)
            QCOMPARE(queuedReads().last(), recordText(second));
    }

    void aQueuedReadWithAnotherCountDoesNotMatch()
    {
        PLC_driver.onceReadList << amended(readOf(AREA_D, "0.0.2"), 2, 3);
        RW_VAR var = readOf(AREA_D, "0.0.2");
        QCOMPARE(AddListOnceReadVar(&var, 0), 2);
    }

    void elementsOfOneBlockAreReadOnce()
    {
        RW_VAR first = readOf(AREA_C, "0.2.1.7");
        RW_VAR second = readOf(AREA_C, "0.2.1.66");
        QCOMPARE(AddListOnceReadVar(&first, 0), 1);
        QCOMPARE(AddListOnceReadVar(&second, 0), 1);
        QCOMPARE(PLC_driver.onceReadList.first().addressText, QString("0.2.1.7"));
        QCOMPARE(second.address, 400);
    }

    void modeOneAppendsAOnceReadAsItIs()
    {
        PLC_driver.comInfo = nullptr;
        RW_VAR var = readOf(AREA_X, "-1.0.0");
        const QString unchanged = recordText(var);
        QCOMPARE(AddListOnceReadVar(&var, 1), 1);
        QCOMPARE(AddListOnceReadVar(&var, 1), 2);
        QCOMPARE(recordText(var), unchanged);
        QCOMPARE(queuedReads(), QStringList({unchanged, unchanged}));
    }

    void aFullOnceReadQueueDropsNewReadsUnlessToldToAppend()
    {
        fillReads(LIMIT - 1);
        RW_VAR fresh = readOf(AREA_D, "1.1.1");
        QCOMPARE(AddListOnceReadVar(&fresh, 2), LIMIT);
        RW_VAR another = readOf(AREA_D, "2.2.2");
        QCOMPARE(AddListOnceReadVar(&another, -1), LIMIT);
        QCOMPARE(PLC_driver.onceReadList.last().addressText, QString("1.1.1"));
        QCOMPARE(another.address, 70); // amended all the same
        QCOMPARE(AddListOnceReadVar(&another, 1), LIMIT + 1);
        QCOMPARE(PLC_driver.onceReadList.last().addressText, QString("2.2.2"));
        RW_VAR queued = readOf(AREA_D, "0.0.0");
        queued.ownerId = 0;
        QCOMPARE(AddListOnceReadVar(&queued, 0), LIMIT + 1);
    }

    void aNullOnceReadAddsNothing()
    {
        QCOMPARE(AddListOnceReadVar(nullptr, 0), 0);
        fillReads(2);
        QCOMPARE(AddListOnceReadVar(nullptr, 0), 2);
        QCOMPARE(AddListOnceReadVar(nullptr, 1), 2);
        QCOMPARE(PLC_driver.onceReadList.size(), 2);
    }

    void onceReadsAreQueuedUnderTheListMutexAlone()
    {
        for (const int mode : {0, 1}) {
            RW_VAR var = readOf(AREA_D, mode == 0 ? "0.0.0" : "0.0.1");
            int meanwhile = -1;
            QVERIFY(waitsFor(
                PLC_driver.listMutex, [&] { AddListOnceReadVar(&var, mode); },
                [&] { meanwhile = PLC_driver.onceReadList.size(); }));
            QCOMPARE(meanwhile, mode);
            QCOMPARE(PLC_driver.onceReadList.size(), mode + 1);
        }
        const QMutexLocker area(&PLC_driver.areaMutex);
        const QMutexLocker station(&PLC_driver.stationMutex);
        RW_VAR var = readOf(AREA_D, "3.0.0");
        QCOMPARE(AddListOnceReadVar(&var, 0), 3);
    }

private:
    void prepare() override
    {
        fillWords(info_);
        words_ = wordsOf(info_);
    }

    void finish() override
    {
        QCOMPARE(PLC_driver.extendVars.size(), 0);
        QCOMPARE(PLC_driver.readList.size(), 0);
        QCOMPARE(PLC_driver.pendingFrames.size(), 0);
    }

    QByteArray words_;
};

QTEST_APPLESS_MAIN(TestOnceReadQueue)
#include "tst_once_read_queue.moc"
