#include "varlist/read_list.h"

#include "tests/support/driver_test.h"
#include "tests/support/lock_watch.h"
#include "tests/support/record_text.h"

#include <QtTest>

namespace
{

HOST_VAR hostVar(int area, int station, const char *text, const char *name = "")
{
    HOST_VAR var;
    var.kind = 0xEE;
    var.areaType = quint8(area);
    var.station = quint8(station);
    var.addressText = QLatin1String(text);
    var.name = QLatin1String(name);
    return var;
}

/// "area/station/address*count:name" of each entry of the read list.
QStringList listed()
{
    QStringList all;
    for (const RW_VAR &var : PLC_driver.readList) {
        all.append(QString("%1/%2/%3*%4:%5")
                       .arg(var.areaType)
                       .arg(var.station)
                       .arg(var.address)
                       .arg(var.count)
                       .arg(var.name));
    }
    return all;
}

int rebuild(QList<HOST_VAR> vars)
{
    return ReCreatReadVarList(&vars);
}

} // namespace

class TestReadList : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void anEmptyListEmptiesTheReadListAndKeepsTheScanState()
    {
        PLC_driver.readList << filledRecord() << filledRecord();
        PLC_driver.scanCount = 7;
        fillWords(info_);
        const QByteArray before = wordsOf(info_);

        QCOMPARE(rebuild({}), 0);
        QCOMPARE(PLC_driver.readList.size(), 0);
        QCOMPARE(PLC_driver.scanCount, 7);
        QCOMPARE(wordsOf(info_), before);
    }

    void aNullListCountsAsEmpty()
    {
        PLC_driver.readList << filledRecord();
        PLC_driver.scanCount = 7;
        info_.scanComplete = 1;

        QCOMPARE(ReCreatReadVarList(nullptr), 0);
        QCOMPARE(PLC_driver.readList.size(), 0);
        QCOMPARE(PLC_driver.scanCount, 7);
        QCOMPARE(info_.scanComplete, 1);
    }

    void anEntryIsFilledFromTheHostRecordAndTheBlock()
    {
        info_.remoteMode = 3;
        info_.localPlcNo = 9;
        info_.defaultStation = 44;
        QCOMPARE(rebuild({hostVar(AREA_D, 200, "1.2.3", "level")}), 1);

        RW_VAR expected;
        expected.ownerId = 0;
        expected.ownerSubId = -1;
        expected.rwKind = RW_READ;
        expected.reserved3 = 3;
        expected.plcNo = 9;
        expected.result = 0;
        expected.name = "level";
        expected.addressText = "1.2.3";
        expected.areaType = AREA_D;
        expected.address = 39;
        expected.station = 200;
        expected.count = 1;
        expected.remoteTag = 0;
        expected.reserved13 = 0;
        QCOMPARE(recordTexts(PLC_driver.readList), QStringList(recordText(expected)));
    }

    void everyEntryCarriesTheBlocksRemoteModeAndPlcNumber()
    {
        info_.remoteMode = 1;
        info_.localPlcNo = 2;
        rebuild({hostVar(0, 1, "0.0.1"), hostVar(1, 1, "0.0.1"), hostVar(2, 1, "0.0.1.0")});
        QCOMPARE(PLC_driver.readList.size(), 3);
        for (const RW_VAR &var : PLC_driver.readList) {
            QCOMPARE(var.reserved3, 1);
            QCOMPARE(var.plcNo, 2);
        }
    }

    void theScanStartsAgain()
    {
        fillWords(info_);
        PLC_driver.scanCount = 7;
        ComInfo expected = info_;
        expected.scanComplete = 0;

        rebuild({hostVar(AREA_D, 1, "0.0.1")});
        QCOMPARE(PLC_driver.scanCount, 0);
        QCOMPARE(wordsOf(info_), wordsOf(expected));
    }

    void theScanStartsAgainEvenWhenEveryRecordIsLeftOut()
    {
        PLC_driver.readList << filledRecord();
        PLC_driver.scanCount = 7;
        info_.scanComplete = 1;
        QCOMPARE(rebuild({hostVar(AREA_X, 1, "-1.0.0")}), 0);
        QCOMPARE(PLC_driver.readList.size(), 0);
        QCOMPARE(PLC_driver.scanCount, 0);
        QCOMPARE(info_.scanComplete, 0);
    }

    void theOldListIsReplaced()
    {
        PLC_driver.readList << filledRecord() << filledRecord() << filledRecord();
        QCOMPARE(rebuild({hostVar(AREA_D, 1, "0.0.7")}), 1);
        QCOMPARE(listed(), QStringList("1/1/7*1:"));
        QCOMPARE(rebuild({hostVar(AREA_D, 1, "0.0.8")}), 1);
        QCOMPARE(listed(), QStringList("1/1/8*1:"));
    }

    void aGroupRisesByAddressAndHoldsEachOnce()
    {
        QCOMPARE(rebuild({hostVar(1, 1, "0.0.5"), hostVar(1, 1, "0.0.1"), hostVar(1, 1, "0.0.5")}),
                 2);
        QCOMPARE(listed(), QStringList({"1/1/1*1:", "1/1/5*1:"}));
    }

    void groupsComeInTheOrderInWhichTheyWereFirstMet()
    {
        const int count = rebuild({hostVar(1, 2, "0.0.9", "a"), hostVar(1, 1, "0.0.4", "b"),
                                   hostVar(0, 2, "0.0.8", "c"), hostVar(1, 2, "0.0.3", "d"),
                                   hostVar(0, 2, "0.0.1", "e"), hostVar(1, 1, "0.0.2", "f")});
        QCOMPARE(count, 6);
        QCOMPARE(listed(), QStringList({"1/2/3*1:d", "1/2/9*1:a", "1/1/2*1:f", "1/1/4*1:b",
                                        "0/2/1*1:e", "0/2/8*1:c"}));
    }

    void ofEqualAddressesTheLatestRecordIsKept()
    {
        QCOMPARE(rebuild({hostVar(1, 1, "0.0.5", "first"), hostVar(1, 1, "0.1.3", "second"),
                          hostVar(1, 1, "0.2.1", "third")}),
                 1);
        QCOMPARE(listed(), QStringList("1/1/5*1:third"));
        QCOMPARE(PLC_driver.readList.first().addressText, QString("0.2.1"));
    }

    void equalAddressesOfDifferentGroupsAreKept()
    {
        QCOMPARE(rebuild({hostVar(1, 1, "0.0.5"), hostVar(1, 2, "0.0.5"), hostVar(0, 1, "0.0.5")}),
                 3);
        QCOMPARE(listed(), QStringList({"1/1/5*1:", "1/2/5*1:", "0/1/5*1:"}));
    }

    void equalAddressesAtTheEdgeOfTwoGroupsAreBothKept()
    {
        QCOMPARE(rebuild({hostVar(1, 1, "0.0.1"), hostVar(1, 1, "0.0.9"), hostVar(1, 2, "0.0.9")}),
                 3);
        QCOMPARE(listed(), QStringList({"1/1/1*1:", "1/1/9*1:", "1/2/9*1:"}));
    }

    void station255SharesAGroupWithStation0OfTheNextArea()
    {
        QCOMPARE(rebuild({hostVar(0, 255, "0.0.7", "x7"), hostVar(1, 0, "0.0.3", "d3"),
                          hostVar(0, 255, "0.0.5", "x5"), hostVar(1, 0, "0.0.7", "d7")}),
                 3);
        QCOMPARE(listed(), QStringList({"1/0/3*1:d3", "0/255/5*1:x5", "1/0/7*1:d7"}));
    }

    void wordsOfStation255ShareAGroupWithBlocksOfStation0()
    {
        QCOMPARE(rebuild({hostVar(1, 255, "7.8.0", "d240"), hostVar(2, 0, "0.1.1.5", "c240"),
                          hostVar(1, 255, "0.0.1", "d1")}),
                 2);
        QCOMPARE(listed(), QStringList({"1/255/1*1:d1", "2/0/240*70:c240"}));
    }

    void aVariableOfAreaCBecomesItsWholeBlock()
    {
        QCOMPARE(rebuild({hostVar(2, 1, "0.1.1.5", "five"), hostVar(2, 1, "0.1.1.60", "sixty")}),
                 1);
        QCOMPARE(listed(), QStringList("2/1/240*70:sixty"));
        QCOMPARE(PLC_driver.readList.first().addressText, QString("0.1.1.60"));
    }

    void blocksRiseByTheirFirstElement()
    {
        QCOMPARE(rebuild({hostVar(2, 1, "0.1.1.5"), hostVar(2, 1, "0.1.0.79"),
                          hostVar(2, 1, "0.0.1.300"), hostVar(2, 1, "7.0.2.1")}),
                 3);
        QCOMPARE(listed(), QStringList({"2/1/80*70:", "2/1/160*70:", "2/1/240*70:"}));
    }

    void badAndMissingPartsOfABlockAddressCountAsZero()
    {
        QCOMPARE(rebuild({hostVar(2, 1, "0.x.1.5"), hostVar(2, 2, "0.1..5"), hostVar(2, 3, "0.1"),
                          hostVar(2, 4, ""), hostVar(2, 5, "0.1.1.5.9")}),
                 5);
        QCOMPARE(
            listed(),
            QStringList({"2/1/80*70:", "2/2/160*70:", "2/3/160*70:", "2/4/0*70:", "2/5/240*70:"}));
    }

    void negativeAddressesAreLeftOut()
    {
        QCOMPARE(rebuild({hostVar(0, 1, "-1.0.0"), hostVar(1, 1, "0.0.-1"), hostVar(1, 1, "0.0.0"),
                          hostVar(2, 1, "0.-1.0.0"), hostVar(0, 2, "67108864.0.0")}),
                 1);
        QCOMPARE(listed(), QStringList("1/1/0*1:"));
    }

    void aRecordLeftOutDoesNotOpenItsGroup()
    {
        QCOMPARE(rebuild({hostVar(0, 1, "-1.0.0"), hostVar(1, 1, "0.0.1"), hostVar(0, 1, "0.0.1")}),
                 2);
        QCOMPARE(listed(), QStringList({"1/1/1*1:", "0/1/1*1:"}));
    }

    void aBlockIsJudgedByItsElementNotByItsStart()
    {
        // Element -160 + 200 is valid, its block begins below 0; element 160 - 200 is not valid.
        QCOMPARE(rebuild({hostVar(2, 1, "0.-1.0.200"), hostVar(2, 1, "0.1.0.-200")}), 1);
        QCOMPARE(listed(), QStringList("2/1/-160*70:"));
    }

    void anUnknownAreaIsKeptAtAddressZero()
    {
        QCOMPARE(rebuild({hostVar(3, 1, "1.2.3"), hostVar(255, 255, "-9.9.9.9"),
                          hostVar(3, 1, "4.5.6", "kept")}),
                 2);
        QCOMPARE(listed(), QStringList({"3/1/0*1:kept", "255/255/0*1:"}));
    }

    void onlyTheReadListChanges()
    {
        PLC_driver.writeList << filledRecord();
        PLC_driver.onceReadList << filledRecord();
        PLC_driver.readListWork << filledRecord();
        PLC_driver.pendingFrames << Protocol();
        PLC_driver.disabledStations.insert(1, 0);
        PLC_driver.errorFlag = 1;
        PLC_driver.writeBurst = 3;
        QList<HOST_VAR> vars = {hostVar(2, 1, "0.1.1.5", "n"), hostVar(1, 1, "0.0.1")};
        QCOMPARE(ReCreatReadVarList(&vars), 2);

        const QStringList untouched(recordText(filledRecord()));
        QCOMPARE(recordTexts(PLC_driver.writeList), untouched);
        QCOMPARE(recordTexts(PLC_driver.onceReadList), untouched);
        QCOMPARE(recordTexts(PLC_driver.readListWork), untouched);
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
        QCOMPARE(PLC_driver.extendVars.size(), 0);
        QCOMPARE(PLC_driver.disabledStations.size(), 1);
        QCOMPARE(int(PLC_driver.errorFlag), 1);
        QCOMPARE(PLC_driver.writeBurst, 3);
        QCOMPARE(vars.size(), 2);
        QCOMPARE(vars.first().addressText, QString("0.1.1.5"));
        QCOMPARE(vars.first().name, QString("n"));
    }

    void theRebuildRunsUnderTheListMutexAlone()
    {
        PLC_driver.readList << filledRecord();
        int sizeMeanwhile = 0;
        QVERIFY(waitsFor(
            PLC_driver.listMutex, [] { rebuild({}); },
            [&sizeMeanwhile] { sizeMeanwhile = PLC_driver.readList.size(); }));
        QCOMPARE(sizeMeanwhile, 1);
        QCOMPARE(PLC_driver.readList.size(), 0);

        const QMutexLocker area(&PLC_driver.areaMutex);
        const QMutexLocker station(&PLC_driver.stationMutex);
        QCOMPARE(rebuild({hostVar(1, 1, "0.0.1")}), 1);
    }
};

QTEST_APPLESS_MAIN(TestReadList)
#include "tst_read_list.moc"
