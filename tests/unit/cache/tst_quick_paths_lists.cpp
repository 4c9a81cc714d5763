// The rebuild and the rotation of the read list and the coalescing of the queues against plain ones
// that do it step by step.
#include "driver/entry_points.h"

#include "tests/support/draw.h"
#include "tests/support/driver_test.h"
#include "tests/support/plain_models.h"
#include "tests/support/record_text.h"

#include <QMultiMap>
#include <QtTest>

namespace
{

constexpr int LISTS = draws(1000);
constexpr int REQUESTS = draws(50000);

int plainBlock(const QString &text)
{
    const QStringList parts = plainParts(text);
    return plainPart(parts, 1) * 160 + plainPart(parts, 2) * 80;
}

RW_VAR plainEntry(const HOST_VAR &hostVar, const ComInfo &info)
{
    RW_VAR entry;
    entry.ownerSubId = -1;
    entry.reserved3 = info.remoteMode;
    entry.plcNo = info.localPlcNo;
    entry.name = hostVar.name;
    entry.addressText = hostVar.addressText;
    entry.areaType = hostVar.areaType;
    entry.address = hostVar.areaType == AREA_C
                        ? plainBlock(hostVar.addressText)
                        : plainAddress(hostVar.areaType, hostVar.addressText);
    entry.station = hostVar.station;
    entry.count = hostVar.areaType == AREA_C ? BLOCK_ELEMENTS : 1;
    return entry;
}

QList<RW_VAR> plainRebuild(const QList<HOST_VAR> &hostVars, const ComInfo &info)
{
    QMultiMap<int, RW_VAR> groups;
    QList<int> keys;
    for (const HOST_VAR &hostVar : hostVars) {
        if (plainAddress(hostVar.areaType, hostVar.addressText) < 0)
            continue;
        const int key = hostVar.areaType * 255 + hostVar.station;
        groups.insert(key, plainEntry(hostVar, info));
        if (!keys.contains(key))
            keys.append(key);
    }
    QList<RW_VAR> all;
    for (const int key : keys) {
        QList<RW_VAR> group = groups.values(key);
        plainSort(group);
        int last = -1;
        for (const RW_VAR &entry : group) {
            if (entry.address != last)
                all.append(entry);
            last = entry.address;
        }
    }
    return all;
}

QString drawText(Draw &draw)
{
    static const QString parts[] = {"0", "1", "1", "2", "3", "-1", "x", "", " 1", "007"};
    QStringList text;
    for (int i = 3 + draw.below(2); i > 0; --i)
        text.append(draw.of(parts));
    return text.join(".");
}

QList<HOST_VAR> drawHostVars(Draw &draw, int count)
{
    static const quint8 areas[] = {AREA_X, AREA_D, AREA_D, AREA_C, 3};
    static const quint8 stations[] = {0, 1, 2, 255};
    QList<HOST_VAR> list;
    for (int i = 0; i < count; ++i) {
        HOST_VAR hostVar;
        hostVar.areaType = draw.of(areas);
        hostVar.station = draw.of(stations);
        hostVar.addressText = drawText(draw);
        hostVar.name = QString::number(i);
        list.append(hostVar);
    }
    return list;
}

RW_VAR drawRequest(Draw &draw)
{
    RW_VAR var = filledRecord();
    var.ownerId = draw.below(3);
    var.ownerSubId = draw.below(2);
    var.station = draw.below(3);
    var.areaType = draw.below(3);
    var.address = draw.below(100) - 2;
    var.addressText =
        QString("0.%1.%2.%3").arg(draw.below(10)).arg(draw.below(3)).arg(draw.below(40) - 10);
    var.count = 1 + draw.below(2);
    var.data = QByteArray(2, static_cast<char>(draw.below(256)));
    return var;
}

bool sameVariable(const RW_VAR &left, const RW_VAR &right)
{
    return left.station == right.station && left.areaType == right.areaType &&
           left.address == right.address && left.count == right.count;
}

int plainAddWrite(QList<RW_VAR> &queue, const RW_VAR &var, int mode)
{
    for (int i = 1; mode != LIST_APPEND && i < queue.size(); ++i) {
        if (sameVariable(queue.at(i), var)) {
            queue[i] = var;
            return queue.size();
        }
    }
    if (mode == LIST_APPEND || queue.size() < QUEUE_LIMIT)
        queue.append(var);
    return queue.size();
}

int plainAddOnceRead(QList<RW_VAR> &queue, RW_VAR &var, int mode, const ComInfo &info)
{
    if (mode != LIST_APPEND) {
        const int address = plainAddress(var.areaType, var.addressText);
        if (address < 0)
            return 0;
        var.remoteTag = 0;
        var.reserved13 = 0;
        var.station = info.purgeByStation == 0 ? info.defaultStation : var.station;
        var.address = var.areaType == AREA_C ? plainBlock(var.addressText) : address;
        var.count = var.areaType == AREA_C ? BLOCK_ELEMENTS : 1;
        for (const RW_VAR &queued : queue) {
            if (queued.ownerId == var.ownerId && queued.ownerSubId == var.ownerSubId &&
                sameVariable(queued, var))
                return queue.size();
        }
    }
    if (mode == LIST_APPEND || queue.size() < QUEUE_LIMIT)
        queue.append(var);
    return queue.size();
}

QByteArray answerTo(const Protocol &request)
{
    return QByteArray(request.expectedReplyLength - 1, '0') + '\r';
}

QList<int> addresses(const QList<RW_VAR> &list)
{
    QList<int> all;
    for (const RW_VAR &var : list)
        all.append(var.address);
    return all;
}

} // namespace

class TestQuickPathsLists : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void everyRebuildIsTheOneDoneStepByStep()
    {
        Draw draw(20114);
        for (int i = 0; i < LISTS; ++i) {
            info_.remoteMode = draw.below(2);
            QList<HOST_VAR> hostVars = drawHostVars(draw, draw.below(i % 100 == 0 ? 1000 : 100));
            const QList<RW_VAR> expected = plainRebuild(hostVars, info_);
            QCOMPARE(ReCreatReadVarList(&hostVars), expected.size());
            QCOMPARE(recordTexts(PLC_driver.readList), recordTexts(expected));
        }
    }

    void everyTurnOfTheListMovesItsHeadToItsEnd_data()
    {
        QTest::addColumn<int>("entries");
        for (const int entries : {1, 2, 3, 100, 255, 256, 257, 1000})
            QTest::newRow(qPrintable(QString::number(entries))) << entries;
    }

    void everyTurnOfTheListMovesItsHeadToItsEnd()
    {
        QFETCH(int, entries);
        QList<RW_VAR> expected = listOf(entries);
        for (const RW_VAR &entry : expected)
            PLC_driver.readList.append(entry);
        for (int i = 0; i < 3 * entries + 300; ++i) {
            const Protocol *request = ComCommunication();
            QCOMPARE(request->var.address, expected.first().address);
            QByteArray answer = answerTo(*request);
            QCOMPARE(DataCom(&answer, answer.size())->result, qint32(RESULT_SUCCESS));
            expected.append(expected.takeFirst());
            if (i % 50 == 0)
                QCOMPARE(addresses(PLC_driver.readList), addresses(expected));
        }
    }

    void everyWriteIsQueuedAsStepByStep()
    {
        Draw draw(20115);
        QList<RW_VAR> plain;
        for (int i = 0; i < REQUESTS; ++i) {
            shorten(draw, plain, PLC_driver.writeList);
            RW_VAR var = drawRequest(draw);
            const int mode = draw.below(4);
            QCOMPARE(AddListWriteVar(&var, mode), plainAddWrite(plain, var, mode));
            if (i % 500 == 0)
                QCOMPARE(recordTexts(PLC_driver.writeList), recordTexts(plain));
        }
    }

    void everyOnceReadIsQueuedAsStepByStep()
    {
        Draw draw(20116);
        QList<RW_VAR> plain;
        for (int i = 0; i < REQUESTS; ++i) {
            shorten(draw, plain, PLC_driver.onceReadList);
            info_.purgeByStation = draw.below(2);
            info_.defaultStation = draw.below(3);
            RW_VAR var = drawRequest(draw);
            RW_VAR plainVar = var;
            const int mode = draw.below(4);
            QCOMPARE(AddListOnceReadVar(&var, mode),
                     plainAddOnceRead(plain, plainVar, mode, info_));
            QCOMPARE(recordText(var), recordText(plainVar));
            if (i % 500 == 0)
                QCOMPARE(recordTexts(PLC_driver.onceReadList), recordTexts(plain));
        }
    }

private:
    void prepare() override { info_.localPlcNo = 3; }

    QList<RW_VAR> listOf(int entries) const
    {
        QList<RW_VAR> list;
        for (int i = 0; i < entries; ++i) {
            RW_VAR entry;
            entry.areaType = AREA_D;
            entry.address = i;
            entry.plcNo = info_.localPlcNo;
            list.append(entry);
        }
        return list;
    }

    // Now and then most of a queue is served, so that short queues and full ones are met.
    static void shorten(Draw &draw, QList<RW_VAR> &plain, QList<RW_VAR> &queue)
    {
        if (!draw.onceIn(3000))
            return;
        const int kept = draw.below(4);
        plain = plain.mid(0, kept);
        queue = queue.mid(0, kept);
    }
};

QTEST_APPLESS_MAIN(TestQuickPathsLists)
#include "tst_quick_paths_lists.moc"
