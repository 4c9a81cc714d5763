// Which request of the scan classes is read next.
#include "host/class_scheduler.h"
#include "tests/support/session_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

struct ClassOf {
    const char *interval;
    int requests;
    int station = 1;
};

QVector<Tag> tagsOf(const QVector<ClassOf> &classes)
{
    QVector<Tag> tags;
    for (const ClassOf &one : classes) {
        for (int i = 0; i < one.requests; ++i) {
            Tag tag;
            tag.name = QString::number(tags.size());
            tag.station = one.station;
            tag.address =
                QStringLiteral("%1.%2.1").arg(32 + tags.size() / 16).arg(tags.size() % 16);
            tag.watch[WatchColumn::Interval] = QLatin1String(one.interval);
            tags.append(tag);
        }
    }
    return tags;
}

/// A line that does nothing else: each reading takes so long.
class Line
{
public:
    Line(const QVector<ClassOf> &classes, qint64 reading_ns)
        : plan(tagsOf(classes), TagIndex(tagsOf(classes))), scheduler(plan, 0),
          reading_ns_(reading_ns), reads(plan.entries().size())
    {
    }

    void runUntil(qint64 end_ns)
    {
        while (now_ns < end_ns) {
            const int entry = scheduler.take(now_ns);
            if (entry < 0) {
                now_ns = qMin(end_ns, scheduler.due_ns());
                continue;
            }
            starts_ns.append(now_ns);
            entries.append(entry);
            ++reads[entry];
            now_ns += reading_ns_;
            scheduler.ended(entry);
        }
    }

    /// Mean time from one reading of a request of a class to its next, over `duration_ns`.
    double interval_ms(int readClass, qint64 duration_ns) const
    {
        int count = 0;
        for (const int entry : plan.classes().at(readClass).entries)
            count += reads.at(entry);
        return static_cast<double>(duration_ns) / 1e6 *
               plan.classes().at(readClass).entries.size() / count;
    }

    void forget() { reads.fill(0); }

    ClassPlan plan;
    ClassScheduler scheduler;
    qint64 now_ns = 0;
    qint64 reading_ns_;
    QVector<int> reads; // of each entry
    QVector<qint64> starts_ns;
    QVector<int> entries;
};

} // namespace

class TestClassScheduler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutEntriesNothingIsDue()
    {
        ClassScheduler scheduler(ClassPlan({}, TagIndex({})), 5);
        QCOMPARE(scheduler.take(seconds(100)), -1);
        QCOMPARE(scheduler.due_ns(), NEVER);
    }

    void aRequestIsTakenOnceUntilItHasEnded()
    {
        Line line({{"1s", 1}}, 0);
        QCOMPARE(line.scheduler.take(0), 0);
        QCOMPARE(line.scheduler.take(seconds(100)), -1);
        QCOMPARE(line.scheduler.due_ns(), NEVER);
        line.scheduler.ended(0);
        line.scheduler.ended(0); // once more changes nothing
        QCOMPARE(line.scheduler.due_ns(), seconds(1));
        QCOMPARE(line.scheduler.take(seconds(1) - 1), -1);
        QCOMPARE(line.scheduler.take(seconds(1)), 0);
        QCOMPARE(line.scheduler.take(seconds(5)), -1);
        line.scheduler.restart(seconds(5));
        QCOMPARE(line.scheduler.take(seconds(5)), -1);
        line.scheduler.ended(0);
        QCOMPARE(line.scheduler.take(seconds(5)), 0);
    }

    void atTheStartEachIsReadInTheOrderOfTheListFastOnesFirst()
    {
        Line line({{"10s", 2}, {"1s", 2}}, milliseconds(1));
        line.runUntil(milliseconds(4));
        QCOMPARE(line.entries, (QVector<int>{2, 3, 0, 1}));
    }

    // 50 % of the line: each comes at its time, give or take the reading that is under way.
    void withTimeToSpareEachKeepsItsRhythm()
    {
        Line line({{"100ms", 5}, {"1s", 20}, {"10s", 50}}, milliseconds(6));
        line.runUntil(seconds(20));
        line.forget();
        const qint64 began_ns = line.now_ns;
        line.runUntil(began_ns + seconds(200));
        QVERIFY(qAbs(line.interval_ms(0, seconds(200)) - 100) < 0.1);
        QVERIFY(qAbs(line.interval_ms(1, seconds(200)) - 1000) < 1);
        QVERIFY(qAbs(line.interval_ms(2, seconds(200)) - 10000) < 10);
    }

    void aRhythmDoesNotDrift()
    {
        Line line({{"100ms", 3}, {"1s", 20}}, milliseconds(7));
        line.runUntil(seconds(3600));
        QVector<qint64> starts_ns;
        for (int i = 0; i < line.entries.size(); ++i)
            if (line.entries.at(i) == 0)
                starts_ns.append(line.starts_ns.at(i));
        // In an hour 36,000 intervals; the first of them begin later.
        const qint64 first_ns = starts_ns.at(50);
        for (int i = 50; i < starts_ns.size(); ++i)
            QVERIFY(qAbs(starts_ns.at(i) - first_ns - (i - 50) * milliseconds(100)) <
                    milliseconds(100));
        QVERIFY(qAbs(starts_ns.size() - 36000) < 5);
    }

    void withTooMuchToReadAllBecomeSlowerByOneFactor_data()
    {
        QTest::addColumn<int>("reading_ms");
        QTest::newRow("1.04") << 8;
        QTest::newRow("1.3") << 10;
        QTest::newRow("2.6") << 20;
        QTest::newRow("13") << 100;
    }

    // Needs 50 + 50 + 30 readings a second.
    void withTooMuchToReadAllBecomeSlowerByOneFactor()
    {
        QFETCH(int, reading_ms);
        Line line({{"100ms", 5}, {"1s", 50}, {"10s", 300}}, milliseconds(reading_ms));
        line.runUntil(seconds(500));
        line.forget();
        line.runUntil(seconds(5500));
        const double factor = 130 * reading_ms / 1000.0;
        const double intervals_ms[] = {100, 1000, 10000};
        for (int i = 0; i < 3; ++i) {
            const double measured = line.interval_ms(i, seconds(5000)) / intervals_ms[i];
            QVERIFY2(qAbs(measured / factor - 1) < 0.01,
                     qPrintable(QStringLiteral("class %1: %2").arg(i).arg(measured)));
        }
    }

    // A large class that is due all at once would hold the others up for seconds.
    void aLargeClassMakesNoGapInASmallOne()
    {
        Line line({{"100ms", 1}, {"10s", 900}}, milliseconds(20));
        line.runUntil(seconds(200));
        qint64 last_ns = 0;
        qint64 longest_ns = 0;
        for (int i = 0; i < line.entries.size(); ++i) {
            if (line.entries.at(i) != 0)
                continue;
            longest_ns = qMax(longest_ns, line.starts_ns.at(i) - last_ns);
            last_ns = line.starts_ns.at(i);
        }
        // All intervals are twice as long.
        QVERIFY2(longest_ns < milliseconds(400), qPrintable(QString::number(longest_ns)));
    }

    void withinAClassAllAreReadAlike()
    {
        Line line({{"100ms", 7}, {"1s", 50}}, milliseconds(20));
        line.runUntil(seconds(1000));
        for (const ReadClass &one : line.plan.classes()) {
            int least = line.reads.at(one.entries.first());
            int most = least;
            for (const int entry : one.entries) {
                least = qMin(least, line.reads.at(entry));
                most = qMax(most, line.reads.at(entry));
            }
            QVERIFY2(most - least <= 1,
                     qPrintable(QStringLiteral("%1 to %2").arg(least).arg(most)));
        }
    }

    void behindAnInterruptionNothingIsMadeUpFor()
    {
        Line line({{"100ms", 5}, {"1s", 20}}, milliseconds(2));
        line.runUntil(seconds(10));
        line.now_ns += seconds(60);
        line.forget();
        line.runUntil(line.now_ns + seconds(2));
        for (int entry = 0; entry < 25; ++entry) {
            const int usual = line.plan.entries().at(entry).readClass == 0 ? 20 : 2;
            QVERIFY(line.reads.at(entry) >= usual && line.reads.at(entry) <= usual + 2);
        }
    }

    void aStationThatIsOffIsLeftOut()
    {
        Line line({{"1s", 2, 1}, {"1s", 2, 2}}, milliseconds(1));
        line.runUntil(milliseconds(500));
        line.scheduler.stationOff(2);
        line.forget();
        line.runUntil(milliseconds(10500));
        QCOMPARE(line.reads, (QVector<int>{10, 10, 0, 0}));
        line.scheduler.stationOn(2, line.now_ns);
        QCOMPARE(line.scheduler.due_ns() <= line.now_ns, true);
        line.forget();
        line.runUntil(line.now_ns + milliseconds(500));
        QCOMPARE(line.reads.at(2), 1);
        QCOMPARE(line.reads.at(3), 1);
    }

    void aStationCanGoOffWhileItIsAsked()
    {
        Line line({{"1s", 1, 1}, {"1s", 1, 2}}, milliseconds(1));
        QCOMPARE(line.scheduler.take(0), 0);
        line.scheduler.stationOff(1);
        line.scheduler.ended(0);
        QCOMPARE(line.scheduler.take(0), 1);
        line.scheduler.ended(1);
        QCOMPARE(line.scheduler.take(seconds(2)), 1);
        line.scheduler.ended(1);
        line.scheduler.stationOn(1, seconds(2));
        QCOMPARE(line.scheduler.take(seconds(2)), 0);
        line.scheduler.stationOff(1);
        line.scheduler.stationOn(1, seconds(2)); // asked at the latest when it has ended
        line.scheduler.ended(0);
        QCOMPARE(line.scheduler.take(seconds(2)), 0);
        QCOMPARE(line.scheduler.take(seconds(2)), 1);
        QCOMPARE(line.scheduler.take(seconds(2)), -1);
    }
};

QTEST_APPLESS_MAIN(TestClassScheduler)
#include "tst_class_scheduler.moc"
