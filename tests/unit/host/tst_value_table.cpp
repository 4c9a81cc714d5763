// Values, their quality and their age.
#include "host/value_table.h"

#include <QtTest>

using namespace kvt;

namespace
{

const qint64 LIMIT_NS = seconds(5);

} // namespace

class TestValueTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aCellHasNeverBeenReadAtFirst();
    void aReadingIsGoodUntilItGrowsOld();
    void aFailureKeepsTheValue();
    void aCellThatWasNeverReadHasNoValueToFail();
    void aReadingAfterAFailureIsGood();
    void aReadingIsHeldBackWhileAWriteIsPending();
    void everyPendingWriteHoldsReadingsBack();
    void aDoubtfulReadingIsSaidToBeSo();
    void readingsThatAreNotProvedCanBeWithdrawn();
    void aWithdrawnReadingStaysSuspectUntilTheNext();
    void writesAreCounted();
};

void TestValueTable::aCellHasNeverBeenReadAtFirst()
{
    const ValueTable table(3);
    QCOMPARE(table.count(), 3);
    QCOMPARE(table.value(2, seconds(100), LIMIT_NS).quality, Quality::NeverRead);
}

void TestValueTable::aReadingIsGoodUntilItGrowsOld()
{
    ValueTable table(1);
    QVERIFY(table.read(0, {0x1234, seconds(10), false}));
    const TagValue young = table.value(0, seconds(15), LIMIT_NS);
    QCOMPARE(young.raw, quint64(0x1234));
    QCOMPARE(young.quality, Quality::Good);
    QCOMPARE(young.readAt_ns, seconds(10));
    const TagValue old = table.value(0, seconds(15) + 1, LIMIT_NS);
    QCOMPARE(old.raw, quint64(0x1234));
    QCOMPARE(old.quality, Quality::Stale);
}

void TestValueTable::aFailureKeepsTheValue()
{
    ValueTable table(2);
    table.read(0, {7, seconds(10), false});
    table.read(1, {8, seconds(10), false});
    table.readFailed(0);
    QCOMPARE(table.value(0, seconds(11), LIMIT_NS).quality, Quality::Failed);
    QCOMPARE(table.value(0, seconds(99), LIMIT_NS).quality, Quality::Failed);
    QCOMPARE(table.value(0, seconds(11), LIMIT_NS).raw, quint64(7));
    QCOMPARE(table.value(0, seconds(11), LIMIT_NS).readAt_ns, seconds(10));
    QCOMPARE(table.value(1, seconds(11), LIMIT_NS).quality, Quality::Good);
}

void TestValueTable::aCellThatWasNeverReadHasNoValueToFail()
{
    ValueTable table(1);
    table.readFailed(0);
    QCOMPARE(table.value(0, 0, LIMIT_NS).quality, Quality::NeverRead);
}

void TestValueTable::aReadingAfterAFailureIsGood()
{
    ValueTable table(1);
    table.read(0, {7, seconds(1), false});
    table.readFailed(0);
    table.read(0, {9, seconds(2), false});
    QCOMPARE(table.value(0, seconds(2), LIMIT_NS).quality, Quality::Good);
    QCOMPARE(table.value(0, seconds(2), LIMIT_NS).raw, quint64(9));
}

void TestValueTable::aReadingIsHeldBackWhileAWriteIsPending()
{
    ValueTable table(1);
    table.read(0, {7, seconds(1), false});
    table.writeRequested(0);
    QVERIFY(table.isWritePending(0));
    QVERIFY(!table.read(0, {8, seconds(2), false}));
    QCOMPARE(table.value(0, seconds(2), LIMIT_NS).raw, quint64(7));
    QCOMPARE(table.value(0, seconds(2), LIMIT_NS).readAt_ns, seconds(1));
    table.writeEnded(0);
    QVERIFY(!table.isWritePending(0));
    QVERIFY(table.read(0, {9, seconds(3), false}));
}

void TestValueTable::everyPendingWriteHoldsReadingsBack()
{
    ValueTable table(1);
    table.writeRequested(0);
    table.writeRequested(0);
    table.writeEnded(0);
    QVERIFY(!table.read(0, {8, 0, false}));
    table.writeEnded(0);
    QVERIFY(table.read(0, {8, 0, false}));
}

void TestValueTable::aDoubtfulReadingIsSaidToBeSo()
{
    ValueTable table(1);
    table.read(0, {7, seconds(1), true});
    QCOMPARE(table.value(0, seconds(1), LIMIT_NS).quality, Quality::Doubtful);
    QCOMPARE(table.value(0, seconds(7), LIMIT_NS).quality, Quality::Stale);
    table.read(0, {7, seconds(8), false});
    QCOMPARE(table.value(0, seconds(8), LIMIT_NS).quality, Quality::Good);
}

void TestValueTable::readingsThatAreNotProvedCanBeWithdrawn()
{
    ValueTable table(5);
    table.read(0, {7, seconds(1), false});
    table.read(1, {7, seconds(2), false});
    table.read(2, {7, seconds(2) + 1, false});
    table.read(3, {7, seconds(3), true});
    QCOMPARE(table.withdraw(seconds(2)), QVector<int>({2, 3}));
    QCOMPARE(table.value(0, seconds(3), LIMIT_NS).quality, Quality::Good);
    QCOMPARE(table.value(1, seconds(3), LIMIT_NS).quality, Quality::Good);
    QCOMPARE(table.value(2, seconds(3), LIMIT_NS).quality, Quality::Suspect);
    QCOMPARE(table.value(3, seconds(3), LIMIT_NS).quality, Quality::Suspect);
    QCOMPARE(table.value(4, seconds(3), LIMIT_NS).quality, Quality::NeverRead);
    QVERIFY(table.withdraw(seconds(2)).isEmpty());
}

void TestValueTable::aWithdrawnReadingStaysSuspectUntilTheNext()
{
    ValueTable table(1);
    table.read(0, {7, seconds(1), false});
    table.withdraw(0);
    QCOMPARE(table.value(0, seconds(99), LIMIT_NS).quality, Quality::Suspect);
    QCOMPARE(table.value(0, seconds(99), LIMIT_NS).raw, quint64(7));
    table.read(0, {8, seconds(100), false});
    QCOMPARE(table.value(0, seconds(100), LIMIT_NS).quality, Quality::Good);
}

void TestValueTable::writesAreCounted()
{
    ValueTable table(2);
    table.writeRequested(1);
    table.writeEnded(1);
    table.writeRequested(1);
    QCOMPARE(table.writesTo(0), quint32(0));
    QCOMPARE(table.writesTo(1), quint32(2));
}

QTEST_APPLESS_MAIN(TestValueTable)
#include "tst_value_table.moc"
