// The queue of writes; AddListWriteVar is an entry point.
#include "driver/entry_points.h"

#include "tests/support/driver_test.h"
#include "tests/support/lock_watch.h"
#include "tests/support/record_text.h"

#include <QtTest>

#include <functional>

namespace
{

constexpr int LIMIT = 1024;

RW_VAR writeTo(int address, const char *hexData = "01 00")
{
    RW_VAR var = filledRecord();
    var.address = address;
    var.data = bytes(hexData);
    return var;
}

QStringList queuedWrites()
{
    return recordTexts(PLC_driver.writeList);
}

void fillWrites(int count)
{
    for (int i = 0; i < count; ++i)
        PLC_driver.writeList.append(writeTo(i));
}

typedef std::function<void(RW_VAR &)> Change;

} // namespace
Q_DECLARE_METATYPE(Change)

class TestWriteQueue : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void writesAreQueuedInOrderAsTheyAre()
    {
        PLC_driver.comInfo = nullptr;
        RW_VAR first = writeTo(-7, "");
        RW_VAR second = writeTo(8);
        QCOMPARE(AddListWriteVar(&first, 0), 1);
        QCOMPARE(AddListWriteVar(&second, 0), 2);
        QCOMPARE(queuedWrites(),
                 QStringList({recordText(writeTo(-7, "")), recordText(writeTo(8))}));
        QCOMPARE(recordText(first), recordText(writeTo(-7, "")));
    }

    void theOnlyQueuedWriteIsNeverReplaced()
    {
        RW_VAR same = writeTo(1);
        QCOMPARE(AddListWriteVar(&same, 0), 1);
        QCOMPARE(AddListWriteVar(&same, 0), 2);
        QCOMPARE(queuedWrites(), QStringList({recordText(same), recordText(same)}));
    }

    void theFirstQueuedWriteIsNeverReplaced()
    {
        fillWrites(3);
        RW_VAR again = writeTo(0, "AA BB");
        QCOMPARE(AddListWriteVar(&again, 0), 4);
        QCOMPARE(PLC_driver.writeList.first().data, bytes("01 00"));
        QCOMPARE(PLC_driver.writeList.last().data, bytes("AA BB"));
    }

    void aRepeatedWriteReplacesTheQueuedOneInItsPlace()
    {
        fillWrites(3);
        RW_VAR again;
        again.station = 5;
        again.areaType = AREA_D;
        again.address = 2;
        again.count = 111;
        again.ownerId = -9;
        again.name = "newer";
        again.data = bytes("12 34 56");
        QCOMPARE(AddListWriteVar(&again, 0), 3);
        QCOMPARE(queuedWrites(),
                 QStringList({recordText(writeTo(0)), recordText(writeTo(1)), recordText(again)}));
    }

    void onlyTheFirstMatchingWriteIsReplaced()
    {
        fillWrites(2);
        PLC_driver.writeList << writeTo(1) << writeTo(9);
        RW_VAR again = writeTo(1, "FF FF");
        QCOMPARE(AddListWriteVar(&again, 0), 4);
        QCOMPARE(queuedWrites(),
                 QStringList({recordText(writeTo(0)), recordText(writeTo(1, "FF FF")),
                              recordText(writeTo(1)), recordText(writeTo(9))}));
    }

    void aWriteMatchesOnStationAreaAddressAndCountOnly_data()
    {
        QTest::addColumn<Change>("change");
        QTest::addColumn<bool>("matches");
        QTest::newRow("station") << Change([](RW_VAR &v) { ++v.station; }) << false;
        QTest::newRow("areaType") << Change([](RW_VAR &v) { --v.areaType; }) << false;
        QTest::newRow("address") << Change([](RW_VAR &v) { v.address += 50; }) << false;
        QTest::newRow("count") << Change([](RW_VAR &v) { ++v.count; }) << false;
        QTest::newRow("ownerId") << Change([](RW_VAR &v) { ++v.ownerId; }) << true;
        QTest::newRow("ownerSubId") << Change([](RW_VAR &v) { ++v.ownerSubId; }) << true;
        QTest::newRow("rwKind") << Change([](RW_VAR &v) { ++v.rwKind; }) << true;
        QTest::newRow("plcNo") << Change([](RW_VAR &v) { ++v.plcNo; }) << true;
        QTest::newRow("name") << Change([](RW_VAR &v) { v.name.clear(); }) << true;
        QTest::newRow("text") << Change([](RW_VAR &v) { v.addressText.clear(); }) << true;
        QTest::newRow("tag") << Change([](RW_VAR &v) { ++v.remoteTag; }) << true;
        QTest::newRow("data") << Change([](RW_VAR &v) { v.data.clear(); }) << true;
    }
    void aWriteMatchesOnStationAreaAddressAndCountOnly()
    {
        QFETCH(Change, change);
        QFETCH(bool, matches);
        fillWrites(3);
        RW_VAR var = writeTo(1);
        change(var);
        QCOMPARE(AddListWriteVar(&var, 0), matches ? 3 : 4);
        QCOMPARE(queuedWrites().at(matches ? 1 : 3), recordText(var));
    }

    void anyModeButOneReplaces_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("size");
        QTest::newRow("0") << 0 << 2;
        QTest::newRow("1") << 1 << 3;
        QTest::newRow("2") << 2 << 2;
        QTest::newRow("-1") << -1 << 2;
    }
    void anyModeButOneReplaces()
    {
        QFETCH(int, mode);
        QFETCH(int, size);
        fillWrites(2);
        RW_VAR again = writeTo(1, "CC");
        QCOMPARE(AddListWriteVar(&again, mode), size);
        QCOMPARE(PLC_driver.writeList.last().data, bytes("CC"));
        QCOMPARE(PLC_driver.writeList.size(), size);
    }

    void aFullWriteQueueDropsNewWritesUnlessToldToAppend()
    {
        fillWrites(LIMIT - 1);
        RW_VAR fresh = writeTo(5000);
        QCOMPARE(AddListWriteVar(&fresh, 0), LIMIT);
        RW_VAR another = writeTo(5001);
        QCOMPARE(AddListWriteVar(&another, 0), LIMIT);
        QCOMPARE(PLC_driver.writeList.last().address, 5000);
        QCOMPARE(AddListWriteVar(&another, 1), LIMIT + 1);
        QCOMPARE(PLC_driver.writeList.last().address, 5001);
        RW_VAR third = writeTo(5002);
        QCOMPARE(AddListWriteVar(&third, 0), LIMIT + 1);
    }

    void aFullWriteQueueStillReplaces()
    {
        fillWrites(LIMIT);
        RW_VAR again = writeTo(LIMIT - 1, "77");
        QCOMPARE(AddListWriteVar(&again, 0), LIMIT);
        QCOMPARE(PLC_driver.writeList.last().data, bytes("77"));
        RW_VAR head = writeTo(0, "77");
        QCOMPARE(AddListWriteVar(&head, 0), LIMIT);
        QCOMPARE(PLC_driver.writeList.first().data, bytes("01 00"));
    }

    void aNullWriteAddsNothing()
    {
        QCOMPARE(AddListWriteVar(nullptr, 0), 0);
        fillWrites(2);
        QCOMPARE(AddListWriteVar(nullptr, 0), 2);
        QCOMPARE(AddListWriteVar(nullptr, 1), 2);
        QCOMPARE(PLC_driver.writeList.size(), 2);
    }

    void writesAreQueuedUnderTheListMutexAlone()
    {
        for (const int mode : {0, 1}) {
            RW_VAR var = writeTo(mode);
            const int before = PLC_driver.writeList.size();
            int meanwhile = -1;
            QVERIFY(waitsFor(
                PLC_driver.listMutex, [&] { AddListWriteVar(&var, mode); },
                [&] { meanwhile = PLC_driver.writeList.size(); }));
            QCOMPARE(meanwhile, before);
            QCOMPARE(PLC_driver.writeList.size(), before + 1);
        }
        const QMutexLocker area(&PLC_driver.areaMutex);
        const QMutexLocker station(&PLC_driver.stationMutex);
        RW_VAR var = writeTo(7);
        QCOMPARE(AddListWriteVar(&var, 0), 3);
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
        QCOMPARE(PLC_driver.onceReadList.size(), 0);
        QCOMPARE(wordsOf(info_), words_);
    }

    QByteArray words_;
};

QTEST_APPLESS_MAIN(TestWriteQueue)
#include "tst_write_queue.moc"
