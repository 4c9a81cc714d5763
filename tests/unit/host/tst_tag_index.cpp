// Tags, cells and the requests that read them.
#include "host/tag_index.h"

#include <QtTest>

using namespace kvt;

namespace
{

Tag tag(const char *name, Area area, const char *address, int station)
{
    Tag made;
    made.name = QLatin1String(name);
    made.area = area;
    made.address = QLatin1String(address);
    made.station = station;
    made.form = area == Area::D ? ValueType::U16 : ValueType::U8;
    return made;
}

const QVector<Tag> TAGS = {
    tag("a", Area::D, "1.2.1", 1),     tag("b", Area::X, "1.2.1", 1),
    tag("a2", Area::D, "1.2.1", 1),    tag("c", Area::C, "7.0.1.4", 2),
    tag("c2", Area::C, "7.0.1.69", 2), tag("d", Area::D, "1.2.1", 2),
};

} // namespace

class TestTagIndex : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tagsOfOneAddressShareACell()
    {
        const TagIndex index(TAGS);
        QCOMPARE(index.cellOf(0), index.cellOf(2));
        QCOMPARE(index.cells().at(index.cellOf(0)).tags, QVector<int>({0, 2}));
        QCOMPARE(index.cells().size(), 5);
    }

    void areasAndStationsKeepCellsApart()
    {
        const TagIndex index(TAGS);
        QVERIFY(index.cellOf(0) != index.cellOf(1));
        QVERIFY(index.cellOf(0) != index.cellOf(5));
        const TagCell &cell = index.cells().at(index.cellOf(5));
        QCOMPARE(cell.station, 2);
        QCOMPARE(cell.area, 1);
        QCOMPARE(cell.address, 32 + 4 + 1);
        QCOMPARE(cell.addressText, QStringLiteral("1.2.1"));
    }

    void elementsOfABlockShareARequest()
    {
        const TagIndex index(TAGS);
        const ReadKey block{2, 2, 80};
        QCOMPARE(index.readKeyOf(index.cellOf(3)), block);
        QCOMPARE(index.readKeyOf(index.cellOf(4)), block);
        QCOMPARE(index.cellsRead(block), QVector<int>({index.cellOf(3), index.cellOf(4)}));
    }

    void aWordHasARequestOfItsOwn()
    {
        const TagIndex index(TAGS);
        QCOMPARE(index.cellsRead({1, 1, 37}), QVector<int>({index.cellOf(0)}));
        QCOMPARE(index.cellsRead({1, 0, 37}), QVector<int>({index.cellOf(1)}));
    }

    void stationsAreListedOnceAndRising()
    {
        const TagIndex index(TAGS);
        QCOMPARE(index.stations(), QVector<int>({1, 2}));
        QCOMPARE(index.cellsOfStation(1).size(), 2);
        QCOMPARE(index.cellsOfStation(2).size(), 3);
        QVERIFY(index.cellsOfStation(3).isEmpty());
    }

    void aValueOfSeveralWordsTakesTheirCells()
    {
        Tag pair = tag("pair", Area::D, "1.15.1", 1);
        pair.form = ValueType::U32;
        const TagIndex index({tag("word", Area::D, "2.0.0", 1), pair});
        QCOMPARE(index.cells().size(), 2);
        QCOMPARE(index.cellsOf(1), QVector<int>({1, 0}));
        QCOMPARE(index.cells().at(1).addressText, QStringLiteral("1.15.1"));
        QCOMPARE(index.cells().at(0).tags, QVector<int>({0}));
        QCOMPARE(index.cells().at(0).assembled, QVector<int>({1}));
        QVERIFY(index.isAssembled(1) && index.takesSeveralRequests(1));
        QVERIFY(!index.isAssembled(0) && !index.takesSeveralRequests(0));
    }

    void theBytesOfABlockTakeOneRequest()
    {
        Tag pair = tag("pair", Area::C, "7.0.1.4", 2);
        pair.form = ValueType::U16;
        const TagIndex index({pair});
        QCOMPARE(index.cellsOf(0).size(), 2);
        QVERIFY(index.isAssembled(0) && !index.takesSeveralRequests(0));
    }

    void nothingIsFoundForARequestOfNoTag()
    {
        const TagIndex index(TAGS);
        QVERIFY(index.cellsRead({1, 1, 38}).isEmpty());
        QVERIFY(TagIndex({}).stations().isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestTagIndex)
#include "tst_tag_index.moc"
