// The steps that a rebuild of the read list is made of, each by itself.
#include "varlist/read_list.h"

#include "tests/support/driver_test.h"
#include "tests/support/record_text.h"

#include <QtTest>

namespace
{

RW_VAR entryAt(int address, const char *name = "")
{
    RW_VAR var;
    var.address = address;
    var.name = QLatin1String(name);
    return var;
}

/// "address:name" of each entry.
QStringList addressed(const QList<RW_VAR> &list)
{
    QStringList all;
    for (const RW_VAR &var : list)
        all.append(QString("%1:%2").arg(var.address).arg(var.name));
    return all;
}

} // namespace
Q_DECLARE_METATYPE(QList<int>)

class TestReadListSteps : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void addedEntriesAreCopiedToTheEndUntested()
    {
        RW_VAR var = filledRecord();
        var.address = -5;
        const QString text = recordText(var);
        PLC_driver.comInfo = nullptr;
        const AllLocksHeld held;
        QCOMPARE(AddListReadVar(&var), 1);
        QCOMPARE(AddListReadVar(&var), 2);
        RW_VAR other = entryAt(3, "other");
        QCOMPARE(AddListReadVar(&other), 3);
        QCOMPARE(recordText(var), text);
        QCOMPARE(recordTexts(PLC_driver.readList),
                 QStringList({text, text, recordText(entryAt(3, "other"))}));
    }

    void addingNothingReturnsTheSize()
    {
        QCOMPARE(AddListReadVar(nullptr), 0);
        PLC_driver.readList << filledRecord();
        QCOMPARE(AddListReadVar(nullptr), 1);
        QCOMPARE(PLC_driver.readList.size(), 1);
    }

    void anEmptyGroupIsRefused()
    {
        QList<RW_VAR> group;
        PLC_driver.readList << entryAt(1);
        QCOMPARE(Add_AddListReadVar(&group), -1);
        QCOMPARE(PLC_driver.readList.size(), 1);
    }

    void aGroupIsAppendedWithoutRepeats_data()
    {
        QTest::addColumn<QList<int>>("addresses");
        QTest::addColumn<QStringList>("kept");
        QTest::newRow("5") << QList<int>{5} << QStringList{"5:0"};
        QTest::newRow("5 5 5") << QList<int>{5, 5, 5} << QStringList{"5:0"};
        QTest::newRow("0 0 1") << QList<int>{0, 0, 1} << QStringList{"0:0", "1:2"};
        QTest::newRow("1 1 2 2 9") << QList<int>{1, 1, 2, 2, 9} << QStringList{"1:0", "2:2", "9:4"};
        QTest::newRow("-1 -1 0") << QList<int>{-1, -1, 0} << QStringList{"0:2"};
        QTest::newRow("-1") << QList<int>{-1} << QStringList{};
        QTest::newRow("-5 -1 -1 3")
            << QList<int>{-5, -1, -1, 3} << QStringList{"-5:0", "-1:1", "3:3"};
        QTest::newRow("unsorted 1 2 1") << QList<int>{1, 2, 1} << QStringList{"1:0", "2:1", "1:2"};
    }
    void aGroupIsAppendedWithoutRepeats()
    {
        QFETCH(QList<int>, addresses);
        QFETCH(QStringList, kept);
        QList<RW_VAR> group;
        for (int i = 0; i < addresses.size(); ++i)
            group.append(entryAt(addresses.at(i), QByteArray::number(i).constData()));
        const QStringList groupBefore = recordTexts(group);
        PLC_driver.readList << entryAt(5, "old");

        const AllLocksHeld held;
        QCOMPARE(Add_AddListReadVar(&group), 1);
        QCOMPARE(addressed(PLC_driver.readList), QStringList("5:old") + kept);
        QCOMPARE(recordTexts(group), groupBefore);
    }

    void sortingRisesAndKeepsTheOrderOfEqualAddresses_data()
    {
        QTest::addColumn<QList<int>>("addresses");
        QTest::addColumn<QStringList>("sorted");
        QTest::newRow("") << QList<int>{} << QStringList{};
        QTest::newRow("7") << QList<int>{7} << QStringList{"7:0"};
        QTest::newRow("2 1") << QList<int>{2, 1} << QStringList{"1:1", "2:0"};
        QTest::newRow("1 2") << QList<int>{1, 2} << QStringList{"1:0", "2:1"};
        QTest::newRow("3 1 2 1 3 1") << QList<int>{3, 1, 2, 1, 3, 1}
                                     << QStringList{"1:1", "1:3", "1:5", "2:2", "3:0", "3:4"};
        QTest::newRow("signed") << QList<int>{0, 2147483647, -2147483647 - 1, -1}
                                << QStringList{"-2147483648:2", "-1:3", "0:0", "2147483647:1"};
    }
    void sortingRisesAndKeepsTheOrderOfEqualAddresses()
    {
        QFETCH(QList<int>, addresses);
        QFETCH(QStringList, sorted);
        QList<RW_VAR> list;
        for (int i = 0; i < addresses.size(); ++i)
            list.append(entryAt(addresses.at(i), QByteArray::number(i).constData()));
        const AllLocksHeld held;
        Bubble_Sort(&list);
        QCOMPARE(addressed(list), sorted);
    }

    void theGroupingHooksTouchNothing()
    {
        RW_VAR var = filledRecord();
        QList<RW_VAR> list = {filledRecord(), entryAt(1)};
        const QStringList before = recordTexts(list);
        const AllLocksHeld held;
        QCOMPARE(WhetherGroup(5, 9, &var, &list), 5);
        QCOMPARE(WhetherGroup(-3, 0, nullptr, nullptr), -3);
        QCOMPARE(BitVarReCreat(&list, 0, 1), 0);
        QCOMPARE(BitVarReCreat(nullptr, -1, 99), 0);
        QCOMPARE(WordVarReCreat(&list, 0, 1), 0);
        QCOMPARE(WordVarReCreat(nullptr, -1, 99), 0);
        QCOMPARE(recordTexts(list), before);
        QCOMPARE(recordText(var), recordText(filledRecord()));
        QCOMPARE(PLC_driver.readList.size(), 0);
    }
};

QTEST_APPLESS_MAIN(TestReadListSteps)
#include "tst_read_list_steps.moc"
