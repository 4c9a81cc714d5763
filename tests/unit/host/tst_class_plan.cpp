// Which requests are read at intervals.
#include "host/class_plan.h"
#include "tests/support/session_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

QVector<Tag> tagsAt(const QVector<QPair<const char *, const char *>> &places)
{
    QVector<Tag> tags;
    for (const auto &place : places) {
        tags.append(benchTag(place.first));
        tags.last().watch[WatchColumn::Interval] = QLatin1String(place.second);
    }
    return tags;
}

ClassPlan planOf(const QVector<Tag> &tags)
{
    return ClassPlan(tags, TagIndex(tags));
}

} // namespace

class TestClassPlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutIntervalsThereAreNoClasses()
    {
        const ClassPlan plan = planOf(tagsAt({{"D1/5.2.1", ""}, {"C1/7.0.1.0", ""}}));
        QVERIFY(plan.entries().isEmpty());
        QVERIFY(plan.classes().isEmpty());
        QCOMPARE(plan.entryOf({1, 1, 165}), -1);
    }

    void tagsOfOneIntervalFormAClass()
    {
        const ClassPlan plan = planOf(tagsAt(
            {{"D1/5.2.1", "5s"}, {"D1/5.3.1", "100ms"}, {"D1/5.4.1", ""}, {"D2/5.2.1", "5000ms"}}));
        QCOMPARE(plan.classes().size(), 2);
        QCOMPARE(plan.classes().at(0).interval_ns, milliseconds(100));
        QCOMPARE(plan.classes().at(0).entries, QVector<int>{1});
        QCOMPARE(plan.classes().at(1).interval_ns, seconds(5));
        QCOMPARE(plan.classes().at(1).entries, (QVector<int>{0, 2}));
        QCOMPARE(plan.entries().at(2).key.station, 2);
        QCOMPARE(plan.entries().at(2).cell, 3);
        QCOMPARE(plan.entries().at(2).readClass, 1);
        QCOMPARE(plan.entryOf(plan.entries().at(2).key), 2);
    }

    void aBlockIsOneRequestOfTheShortestInterval()
    {
        const ClassPlan plan =
            planOf(tagsAt({{"C1/7.0.1.0", "5s"}, {"C1/7.0.1.69", "1s"}, {"C1/7.0.1.2", "1min"}}));
        QCOMPARE(plan.entries().size(), 1);
        QCOMPARE(plan.classes().size(), 1);
        QCOMPARE(plan.classes().at(0).interval_ns, seconds(1));
    }

    void aSharedRequestIsReadAsOftenAsTheLineAllowsIfOneOfItsTagsIs()
    {
        const ClassPlan plan = planOf(tagsAt(
            {{"C1/7.0.1.0", "5s"}, {"C1/7.0.1.69", ""}, {"D1/5.2.1", "1s"}, {"D1/5.2.1", ""}}));
        QVERIFY(plan.entries().isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestClassPlan)
#include "tst_class_plan.moc"
