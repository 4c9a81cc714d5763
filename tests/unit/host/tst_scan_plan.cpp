// Predictions, against figures worked out by hand.
#include "host/scan_plan.h"

#include <QtTest>

using namespace kvt;

namespace
{

Tag makeTag(const char *name, Area area, const char *address, int station)
{
    Tag tag;
    tag.name = QLatin1String(name);
    tag.area = area;
    tag.address = QLatin1String(address);
    tag.station = station;
    tag.form = area == Area::D ? ValueType::U16 : ValueType::U8;
    return tag;
}

// One request each of 14, 16 and 152 bytes; two tags share the block, and two the word.
QVector<Tag> oneOfEach()
{
    return {makeTag("a", Area::X, "1.2.0", 1), makeTag("b", Area::D, "5.2.1", 1),
            makeTag("c", Area::C, "7.0.1.4", 1), makeTag("d", Area::C, "7.0.1.69", 1),
            makeTag("e", Area::D, "5.2.1", 1)};
}

// A byte takes 1 ms, the PLC 2 ms; the host waits up to 50 ms + 20 ms + the bytes of the reply.
PlanSettings slowLine()
{
    PlanSettings settings;
    settings.engine.characterTime_ns = milliseconds(1);
    settings.turnaround_ns = milliseconds(2);
    settings.engine.checkpointShare = 0;
    return settings;
}

} // namespace

class TestScanPlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void allWordsOfAValueButTheLastAreReadTwice()
    {
        Tag pair = makeTag("pair", Area::D, "5.2.0", 1);
        pair.form = ValueType::U32;
        Tag four = makeTag("four", Area::D, "6.2.0", 1);
        four.form = ValueType::F64;
        Tag accepted = makeTag("accepted", Area::D, "7.2.0", 1);
        accepted.form = ValueType::U32;
        accepted.acceptsTorn = true;
        QCOMPARE(planScan({pair}, PlanSettings()).reads, 3);
        QCOMPARE(planScan({four}, PlanSettings()).reads, 7);
        QCOMPARE(planScan({accepted}, PlanSettings()).reads, 2);
    }

    void aScanIsTheSumOfItsRequests()
    {
        const ScanPlan plan = planScan(oneOfEach(), slowLine());
        QCOMPARE(plan.reads, 3);
        QCOMPARE(plan.bytes, qint64(14 + 16 + 152));
        QCOMPARE(plan.scan_ns, milliseconds(182 + 3 * 2));
        QCOMPARE(plan.longestRead_ns, milliseconds(154));
        QCOMPARE(plan.stations.size(), 1);
        QCOMPARE(plan.stations.first().share_ns, plan.scan_ns);
    }

    // Of 1 s the word of 18 ms takes 1.8 %, of 2 s the block of 154 ms 7.7 %.
    void withTimeToSpareIntervalsAreKept()
    {
        QVector<Tag> tags = oneOfEach();
        for (const int tag : {1, 4})
            tags[tag].watch[WatchColumn::Interval] = QStringLiteral("1s");
        for (const int tag : {2, 3})
            tags[tag].watch[WatchColumn::Interval] = QStringLiteral("2s");
        const ScanPlan plan = planScan(tags, slowLine());
        QCOMPARE(plan.reads, 3);
        QVERIFY(!plan.classes.isOverloaded());
        QVERIFY(qAbs(plan.classes.load - 0.095) < 1e-9);
        QCOMPARE(plan.classes.classes.size(), 2);
        QCOMPARE(plan.classes.classes.at(0).expected_ns, seconds(1));
        QVERIFY(qAbs(plan.classes.classes.at(0).share - 0.018) < 1e-9);
        QCOMPARE(plan.classes.classes.at(1).reads, 1);
        QCOMPARE(plan.classes.classes.at(1).expected_ns, seconds(2));
        // The byte of 16 ms has what they leave.
        QCOMPARE(plan.scan_ns, qint64(17679558));
    }

    // In a second 10 words of 18 ms and 10 blocks of 154 ms: 1.72 times too much.
    void withTooMuchToReadAllIntervalsBecomeLonger()
    {
        QVector<Tag> tags = oneOfEach();
        tags.removeFirst();
        for (Tag &tag : tags)
            tag.watch[WatchColumn::Interval] = QStringLiteral("100ms");
        const ScanPlan plan = planScan(tags, slowLine());
        QVERIFY(plan.classes.isOverloaded());
        QVERIFY(qAbs(plan.classes.load - 1.72) < 1e-9);
        QCOMPARE(plan.classes.classes.at(0).expected_ns, milliseconds(172));
        QVERIFY(qAbs(plan.classes.classes.at(0).share - 1) < 1e-9);
        QCOMPARE(plan.scan_ns, qint64(0));
    }

    // Of six requests one is the byte of 16 ms: 20 others a second leave room for 4 of it.
    void aBusyLineServesTheOthersBehindEveryFive()
    {
        QVector<Tag> tags = oneOfEach();
        for (int tag = 1; tag < 5; ++tag)
            tags[tag].watch[WatchColumn::Interval] = QStringLiteral("100ms");
        const ScanPlan plan = planScan(tags, slowLine());
        QVERIFY(qAbs(plan.classes.stretch - (1.72 + 4 * 0.016)) < 1e-9);
        QCOMPARE(plan.classes.classes.at(0).expected_ns, microseconds(178400));
        QCOMPARE(plan.scan_ns, microseconds(446000)); // 2.5 times as long
    }

    void overheadAndGapsCountOnceAnExchange()
    {
        PlanSettings settings = slowLine();
        settings.overhead_ns = microseconds(300);
        settings.engine.defaultTiming.gapAfterReply_ns = milliseconds(4);
        const ScanPlan plan = planScan(oneOfEach(), settings);
        QCOMPARE(plan.scan_ns, microseconds(188000 + 3 * 4300));
        QCOMPARE(plan.write_ns, microseconds(20000 + 4300));
    }

    void aWriteWaitsForTheLongestReadAtMost()
    {
        const ScanPlan plan = planScan(oneOfEach(), slowLine());
        QCOMPARE(plan.write_ns, milliseconds(12 + 6 + 2));
        QCOMPARE(plan.writeAlone_ns, milliseconds(154 + 20));
        const ScanPlan bits = planScan({makeTag("a", Area::X, "1.2.0", 1)}, slowLine());
        QCOMPARE(bits.write_ns, milliseconds(10 + 6 + 2));
        const ScanPlan blocks = planScan({makeTag("c", Area::C, "7.0.1.4", 1)}, slowLine());
        QCOMPARE(blocks.write_ns, qint64(0));
        QCOMPARE(blocks.writeBusy_ns, qint64(0));
    }

    void behindOtherWritesEveryFiveLetTheReadsIn_data()
    {
        QTest::addColumn<int>("ahead");
        QTest::addColumn<qint64>("busy_ms");
        QTest::newRow("none") << 0 << qint64(2 * 20 + 6 * 154);
        QTest::newRow("four") << 4 << qint64(6 * 20 + 6 * 154);
        QTest::newRow("five") << 5 << qint64(7 * 20 + 12 * 154);
        QTest::newRow("nine") << 9 << qint64(11 * 20 + 12 * 154);
        QTest::newRow("ten") << 10 << qint64(12 * 20 + 18 * 154);
    }

    void behindOtherWritesEveryFiveLetTheReadsIn()
    {
        QFETCH(int, ahead);
        QFETCH(qint64, busy_ms);
        PlanSettings settings = slowLine();
        settings.writesAhead = ahead;
        QCOMPARE(planScan(oneOfEach(), settings).writeBusy_ns, milliseconds(busy_ms));
    }

    void pausesTakeTheirShare()
    {
        PlanSettings settings = slowLine();
        settings.engine.checkpointShare = 0.01;
        const ScanPlan plan = planScan(oneOfEach(), settings);
        QCOMPARE(plan.scan_ns, microseconds(188000 + 1880));
        // A pause lasts a quarter longer than the turnaround, and a millisecond: one may be under
        // way.
        QCOMPARE(plan.writeAlone_ns, microseconds(154000 + 20000 + 3500));
        // Two writes and six reads: one pause for every five.
        QCOMPARE(plan.writeBusy_ns, microseconds(2 * 20000 + 6 * 154000 + 2 * 3500));
    }

    void aDeadStationCostsItsTimeOutsAndSilences()
    {
        QVector<Tag> tags = oneOfEach();
        tags.append(makeTag("f", Area::D, "5.2.1", 2));
        const ScanPlan plan = planScan(tags, slowLine());
        QCOMPARE(plan.stations.size(), 2);
        const StationPlan first = plan.stations.at(0);
        const qint64 attempt_ms = 8 + 2 * (50 + 144 + 20);
        QCOMPARE(first.station, 1);
        QCOMPARE(first.reads, 3);
        QCOMPARE(first.deathProbe_ns, milliseconds(attempt_ms));
        QCOMPARE(first.deathOnce_ns, milliseconds(3 * 3 * attempt_ms));
        QCOMPARE(first.deathUnsupervised_ns, milliseconds(3 * 3 * attempt_ms - 188));
        const StationPlan second = plan.stations.at(1);
        QCOMPARE(second.station, 2);
        QCOMPARE(second.reads, 1);
        QCOMPARE(second.deathProbe_ns, milliseconds(8 + 2 * (50 + 8 + 20)));
    }

    void withoutTagsThereIsNothing()
    {
        const ScanPlan plan = planScan({}, slowLine());
        QCOMPARE(plan.reads, 0);
        QCOMPARE(plan.scan_ns, qint64(0));
        QVERIFY(plan.stations.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestScanPlan)
#include "tst_scan_plan.moc"
