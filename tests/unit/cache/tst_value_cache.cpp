#include "cache/value_cache.h"

#include "tests/support/driver_test.h"
#include "tests/support/record_text.h"

#include <QtTest>

#include <algorithm>
#include <iterator>
#include <limits>

namespace
{

template <size_t Size>
bool isZero(const quint8 (&area)[Size])
{
    return std::all_of(std::begin(area), std::end(area), [](quint8 byte) { return byte == 0; });
}

} // namespace

class TestValueCache : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstLookupCreatesARecordOfFourZeroBytes()
    {
        QCOMPARE(ExtendFindSameVar(1, 2, 3), 0);
        QCOMPARE(cacheRecords(), QStringList("1/2/3=00000000"));
    }

    void aKnownKeyIsFoundAndNothingIsAdded()
    {
        ExtendFindSameVar(1, 1, 40);
        PLC_driver.extendVars.first().data = bytes("AB 12");
        QCOMPARE(ExtendFindSameVar(1, 1, 40), 0);
        QCOMPARE(cacheRecords(), QStringList("1/1/40=AB12"));
    }

    void eachPartOfTheKeyCounts()
    {
        QCOMPARE(ExtendFindSameVar(1, 1, 40), 0);
        QCOMPARE(ExtendFindSameVar(2, 1, 40), 1);
        QCOMPARE(ExtendFindSameVar(1, 0, 40), 2);
        QCOMPARE(ExtendFindSameVar(1, 1, 41), 3);
        QCOMPARE(ExtendFindSameVar(1, 1, 40), 0);
        QCOMPARE(ExtendFindSameVar(2, 1, 40), 1);
        QCOMPARE(ExtendFindSameVar(1, 0, 40), 2);
        QCOMPARE(ExtendFindSameVar(1, 1, 41), 3);
        QCOMPARE(cacheRecords(), QStringList({"1/1/40=00000000", "2/1/40=00000000",
                                              "1/0/40=00000000", "1/1/41=00000000"}));
    }

    void partsOfAKeyAreNotMixedUp()
    {
        QCOMPARE(ExtendFindSameVar(1, 2, 3), 0);
        QCOMPARE(ExtendFindSameVar(3, 2, 1), 1);
        QCOMPARE(ExtendFindSameVar(2, 1, 3), 2);
        QCOMPARE(ExtendFindSameVar(1, 3, 2), 3);
        QCOMPARE(ExtendFindSameVar(257, 2, 3), 4);
        QCOMPARE(ExtendFindSameVar(1, 258, 3), 5);
        QCOMPARE(ExtendFindSameVar(1, 2, 65539), 6);
    }

    void keysOfEqualHashAreKeptApart()
    {
        const int shifted = 0x61C88654; // 5 less the hash's multiplier, at 32 bits
        QCOMPARE(ExtendFindSameVar(1, 0, 5), 0);
        QCOMPARE(ExtendFindSameVar(0, 3, 5), 1);
        QCOMPARE(ExtendFindSameVar(1, 1, shifted), 2);
        QCOMPARE(ExtendFindSameVar(1, 0, 5), 0);
        QCOMPARE(ExtendFindSameVar(0, 3, 5), 1);
        QCOMPARE(ExtendFindSameVar(1, 1, shifted), 2);
        QCOMPARE(PLC_driver.extendVars.size(), 3);
    }

    // Each of these has its place at an even number of the table, which is half full then.
    void aLookupEndsWhereEveryOtherPlaceIsTaken()
    {
        for (int i = 0; i < 32; ++i)
            QCOMPARE(ExtendFindSameVar(0, 0, static_cast<int>(quint32(i) << 27)), i);
        QCOMPARE(ExtendFindSameVar(0, 0, 3), 32);
    }

    void aListEmptiedMeanwhileIsFilledAnew()
    {
        ExtendFindSameVar(1, 1, 5);
        QCOMPARE(ExtendFindSameVar(1, 1, 6), 1);
        PLC_driver.extendVars.clear();
        QCOMPARE(ExtendFindSameVar(1, 1, 6), 0);
        QCOMPARE(ExtendFindSameVar(1, 1, 5), 1);
        QCOMPARE(cacheRecords(), QStringList({"1/1/6=00000000", "1/1/5=00000000"}));
    }

    void anyNumberMakesAKey()
    {
        const int low = std::numeric_limits<int>::min();
        const int high = std::numeric_limits<int>::max();
        QCOMPARE(ExtendFindSameVar(low, low, low), 0);
        QCOMPARE(ExtendFindSameVar(high, high, high), 1);
        QCOMPARE(ExtendFindSameVar(-1, -1, -1), 2);
        QCOMPARE(ExtendFindSameVar(low, low, low), 0);
        QCOMPARE(ExtendFindSameVar(high, high, high), 1);
        QCOMPARE(PLC_driver.extendVars.size(), 3);
    }

    void recordsStayInTheOrderOfTheirCreation()
    {
        for (int i = 0; i < 500; ++i)
            QCOMPARE(ExtendFindSameVar(1, 1, (i * 37) % 500), i);
        for (int i = 499; i >= 0; --i)
            QCOMPARE(ExtendFindSameVar(1, 1, (i * 37) % 500), i);
        QCOMPARE(PLC_driver.extendVars.size(), 500);
        for (int i = 0; i < 500; ++i)
            QCOMPARE(PLC_driver.extendVars.at(i).address, (i * 37) % 500);
    }

    void ofTwoRecordsWithOneKeyTheFirstIsFound()
    {
        PLC_driver.extendVars << EXTENDVAR{1, 1, 5, bytes("01")} << EXTENDVAR{1, 1, 7, bytes("02")}
                              << EXTENDVAR{1, 1, 7, bytes("03")};
        for (int i = 0; i < 3; ++i)
            QCOMPARE(ExtendFindSameVar(1, 1, 7), 1);
        QCOMPARE(PLC_driver.extendVars.size(), 3);
    }

    void aRecordPutInFrontIsFoundInsteadOfItsTwin()
    {
        QCOMPARE(ExtendFindSameVar(1, 1, 5), 0);
        QCOMPARE(ExtendFindSameVar(1, 1, 7), 1);
        PLC_driver.extendVars.prepend(EXTENDVAR{1, 1, 7, bytes("03")});
        QCOMPARE(ExtendFindSameVar(1, 1, 5), 1);
        QCOMPARE(ExtendFindSameVar(1, 1, 7), 0);
        QCOMPARE(ExtendFindSameVar(1, 1, 7), 0);
    }

    void theLookupTakesNoLock()
    {
        const AllLocksHeld held;
        QCOMPARE(ExtendFindSameVar(1, 1, 1), 0);
        QCOMPARE(ExtendFindSameVar(1, 1, 1), 0);
    }

    void theImageAreasAreZeroAndStayAside()
    {
        QCOMPARE(sizeof PLC_driver.imageArea1, size_t(131072));
        QCOMPARE(sizeof PLC_driver.imageArea2, size_t(131072));
        QCOMPARE(sizeof PLC_driver.imageArea3, size_t(131072));
        ExtendFindSameVar(1, 1, 1);
        QVERIFY(isZero(PLC_driver.imageArea1));
        QVERIFY(isZero(PLC_driver.imageArea2));
        QVERIFY(isZero(PLC_driver.imageArea3));
    }
};

QTEST_APPLESS_MAIN(TestValueCache)
#include "tst_value_cache.moc"
