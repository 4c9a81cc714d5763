// The records: their start values, their order of fields and their value semantics.
#include "driver/records.h"

#include <QtTest>

#include <algorithm>
#include <functional>
#include <type_traits>

namespace
{

/// True when the addresses rise, that is when the fields lie in the order given.
bool rising(std::initializer_list<const void *> fields)
{
    const auto less = std::less<const void *>();
    return std::is_sorted(fields.begin(), fields.end(), less) &&
           std::adjacent_find(fields.begin(), fields.end()) == fields.end();
}

} // namespace

class TestRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void areaCodesAndDirectionsHaveTheirNumbers()
    {
        QCOMPARE(int(AREA_X), 0);
        QCOMPARE(int(AREA_D), 1);
        QCOMPARE(int(AREA_C), 2);
        QCOMPARE(int(RW_READ), 0);
        QCOMPARE(int(RW_WRITE), 1);
        QCOMPARE(BLOCK_ELEMENTS, 70);
    }

    void newVariableIsZeroAndEmpty()
    {
        const RW_VAR var;
        for (const qint32 slot :
             {var.ownerId, var.ownerSubId, var.rwKind, var.reserved3, var.plcNo, var.result,
              var.areaType, var.address, var.station, var.count, var.remoteTag, var.reserved13})
            QCOMPARE(slot, 0);
        QVERIFY(var.name.isEmpty());
        QVERIFY(var.addressText.isEmpty());
        QVERIFY(var.data.isEmpty());
    }

    void newFrameIsZeroAndEmpty()
    {
        const Protocol frame;
        for (const qint32 slot :
             {frame.frameLength, frame.expectedReplyLength, frame.builderParam1,
              frame.builderParam2, frame.extra0, frame.extra1, frame.extra2, frame.var.address})
            QCOMPARE(slot, 0);
        QVERIFY(frame.frame.isEmpty());
        QVERIFY(frame.var.data.isEmpty());
    }

    void newHostVariableIsZeroAndEmpty()
    {
        const HOST_VAR var;
        QCOMPARE(int(var.kind) + var.areaType + var.station, 0);
        QVERIFY(var.addressText.isEmpty());
        QVERIFY(var.name.isEmpty());
    }

    void variableSlotsLieInOrder()
    {
        const RW_VAR v;
        QVERIFY(rising({&v.ownerId, &v.ownerSubId, &v.rwKind, &v.reserved3, &v.plcNo, &v.result,
                        &v.name, &v.addressText, &v.areaType, &v.address, &v.station, &v.count,
                        &v.remoteTag, &v.reserved13, &v.data}));
    }

    void frameSlotsLieInOrder()
    {
        const Protocol f;
        QVERIFY(rising({&f.frame, &f.frameLength, &f.expectedReplyLength, &f.builderParam1,
                        &f.builderParam2, &f.var, &f.extra0, &f.extra1, &f.extra2}));
    }

    void cacheRecordSlotsLieInOrder()
    {
        const EXTENDVAR e{1, 2, 3, QByteArray()};
        QVERIFY(rising({&e.station, &e.areaType, &e.address, &e.data}));
        QCOMPARE(e.station, 1);
        QCOMPARE(e.areaType, 2);
        QCOMPARE(e.address, 3);
    }

    void hostVariableBeginsWithItsThreeBytes()
    {
        QCOMPARE(offsetof(HOST_VAR, kind), size_t(0));
        QCOMPARE(offsetof(HOST_VAR, areaType), size_t(1));
        QCOMPARE(offsetof(HOST_VAR, station), size_t(2));
    }

    void comInfoWordsLieAtTheirIndices()
    {
        ComInfo info = ComInfo();
        auto *words = reinterpret_cast<qint32 *>(&info);
        for (int i = 0; i < 19; ++i)
            words[i] = 100 + i;
        QCOMPARE(info.hostWord0, 100);
        QCOMPARE(info.hostWord5, 105);
        QCOMPARE(info.defaultStation, 106);
        QCOMPARE(info.retryLimit, 107);
        QCOMPARE(info.retryCount, 108);
        QCOMPARE(info.purgeByStation, 109);
        QCOMPARE(info.comWord10, 110);
        QCOMPARE(info.framesExpected, 111);
        QCOMPARE(info.framesReceived, 112);
        QCOMPARE(info.comWord13, 113);
        QCOMPARE(info.remoteMode, 114);
        QCOMPARE(info.localPlcNo, 115);
        QCOMPARE(info.hostWriteMode, 116);
        QCOMPARE(info.scanComplete, 117);
        QCOMPARE(info.portTag, 118);
        QCOMPARE(sizeof(ComInfo), size_t(76));
    }

    void changingACopyLeavesTheOriginal()
    {
        RW_VAR original;
        original.name = "pump";
        original.data = QByteArray("\x34\x12", 2);
        RW_VAR copy = original;
        copy.name.append(QString(" 2"));
        copy.data[0] = 0;
        QCOMPARE(original.name, QString("pump"));
        QCOMPARE(original.data, QByteArray("\x34\x12", 2));
    }

    void frameHoldsAFullCopyOfItsVariable()
    {
        Protocol frame;
        {
            RW_VAR var;
            var.addressText = "5.2.1";
            var.reserved13 = 13;
            frame.var = var;
        }
        QCOMPARE(frame.var.addressText, QString("5.2.1"));
        QCOMPARE(frame.var.reserved13, 13);
    }

    void callbacksHaveTheirSignatures()
    {
        QVERIFY((std::is_same<OnceReadDone, int (*)(int, int, int, int)>::value));
        QVERIFY((std::is_same<OwnerNotify, void (*)(QList<RW_VAR> *, int, int)>::value));
    }
};

QTEST_APPLESS_MAIN(TestRecords)
#include "tst_records.moc"
