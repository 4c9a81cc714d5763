// The mirror of the driver's queue of writes.
#include "host/write_tracker.h"

#include <QVector>
#include <QtTest>

using namespace kvt;

namespace
{

struct Target {
    int station;
    int address;
};

class Bench
{
public:
    Bench() : tracker([this](const WriteReport &report) { reports.append(report); }) {}

    /// With writes to these in the queue, their ids counting from 1, and nothing reported of it.
    explicit Bench(std::initializer_list<Target> targets) : Bench()
    {
        int id = 0;
        for (const Target &target : targets)
            queue(++id, target.station, target.address);
        reports.clear();
    }

    void queue(int id, int station, int address)
    {
        tracker.queued({id, 100 + id, station, 1, address});
    }

    /// "id state reason" of each report, and forgets them.
    QStringList taken()
    {
        QStringList texts;
        for (const WriteReport &report : reports) {
            texts.append(QStringLiteral("%1 %2 %3")
                             .arg(report.id)
                             .arg(writeStateName(report.state), writeReasonText(report.reason))
                             .trimmed());
        }
        reports.clear();
        return texts;
    }

    QVector<WriteReport> reports;
    WriteTracker tracker;
};

} // namespace

class TestWriteTracker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aWriteIsQueuedSentAndRetired()
    {
        Bench bench;
        bench.queue(1, 1, 10);
        bench.tracker.sent(1);
        QCOMPARE(bench.tracker.retired(1), 101);
        QCOMPARE(bench.taken(),
                 QStringList({QStringLiteral("1 queued"), QStringLiteral("1 sent")}));
        QCOMPARE(bench.tracker.count(), 0);
    }

    void aReportNamesItsTag()
    {
        Bench bench;
        bench.queue(5, 1, 10);
        QCOMPARE(bench.reports[0].tag, 105);
        QVERIFY(!bench.reports[0].isFinal());
    }

    void aNewerValueReplacesAQueuedOne()
    {
        Bench bench({{1, 10}, {1, 11}, {1, 12}});
        bench.queue(4, 1, 11);
        QCOMPARE(bench.taken(),
                 QStringList({QStringLiteral("2 dropped a newer value took its place"),
                              QStringLiteral("4 queued")}));
        QCOMPARE(bench.tracker.count(), 3);
        bench.tracker.retired(1);
        bench.taken();
        bench.tracker.sent(4);
        QCOMPARE(bench.taken(), QStringList({QStringLiteral("4 sent")}));
    }

    void theFirstInTheQueueIsNeverReplaced()
    {
        Bench bench;
        bench.queue(1, 1, 10);
        bench.queue(2, 1, 10);
        QCOMPARE(bench.taken(),
                 QStringList({QStringLiteral("1 queued"), QStringLiteral("2 queued")}));
        bench.queue(3, 1, 10);
        QCOMPARE(bench.taken(),
                 QStringList({QStringLiteral("2 dropped a newer value took its place"),
                              QStringLiteral("3 queued")}));
        QCOMPARE(bench.tracker.count(), 2);
    }

    void anotherTargetIsNotReplaced()
    {
        Bench bench;
        bench.queue(1, 1, 9);
        bench.tracker.queued({2, 0, 1, 1, 10});
        bench.tracker.queued({3, 0, 2, 1, 10});
        bench.tracker.queued({4, 0, 1, 0, 10});
        bench.tracker.queued({5, 0, 1, 1, 11});
        QCOMPARE(bench.tracker.count(), 5);
    }

    void aFullQueueOverflowsUnlessAWriteIsReplaced()
    {
        Bench bench;
        for (int i = 0; i < 1023; ++i)
            bench.queue(i + 1, 1, i);
        QVERIFY(!bench.tracker.wouldOverflow({5000, 0, 1, 1, 5000}));
        bench.queue(1024, 1, 1023);
        QVERIFY(bench.tracker.wouldOverflow({5000, 0, 1, 1, 5000}));
        QVERIFY(bench.tracker.wouldOverflow({5000, 0, 1, 1, 0}));
        QVERIFY(!bench.tracker.wouldOverflow({5000, 0, 1, 1, 1}));
    }

    void theWritesBeforeTheOneSentWereDropped()
    {
        Bench bench({{1, 10}, {1, 11}, {2, 10}});
        bench.tracker.sent(3);
        QCOMPARE(bench.taken(),
                 QStringList({QStringLiteral("1 dropped the station is switched off"),
                              QStringLiteral("2 dropped the station is switched off"),
                              QStringLiteral("3 sent")}));
    }

    void aFrameOfNoWriteInTheQueueDropsThemAll()
    {
        Bench bench({{1, 10}});
        bench.tracker.sent(9);
        QCOMPARE(bench.taken(),
                 QStringList({QStringLiteral("1 dropped the station is switched off")}));
        bench.queue(2, 1, 10);
        bench.taken();
        bench.tracker.stopped();
        QCOMPARE(bench.taken(), QStringList({QStringLiteral("2 dropped the host was stopped")}));
    }

    void aFailurePurgesItsStationOnly()
    {
        Bench bench({{1, 10}, {2, 10}, {1, 11}});
        bench.tracker.stationFailed(1);
        QCOMPARE(bench.taken(),
                 QStringList({QStringLiteral("1 dropped another request to the station failed"),
                              QStringLiteral("3 dropped another request to the station failed")}));
        QCOMPARE(bench.tracker.count(), 1);
        bench.tracker.stationFailed(3);
        QVERIFY(bench.taken().isEmpty());
    }

    void whatIsNotTheFirstCannotRetire()
    {
        Bench bench;
        QCOMPARE(bench.tracker.retired(1), -1);
        bench.queue(1, 1, 10);
        bench.queue(2, 1, 11);
        bench.taken();
        QCOMPARE(bench.tracker.retired(2), -1);
        QVERIFY(bench.taken().isEmpty());
        QCOMPARE(bench.tracker.count(), 2);
    }

    void stoppingEndsEveryWrite()
    {
        Bench bench;
        bench.queue(1, 1, 10);
        bench.queue(2, 1, 11);
        bench.tracker.sent(1);
        bench.taken();
        bench.tracker.stopped();
        QCOMPARE(bench.taken(), QStringList({QStringLiteral("1 timed out the host was stopped"),
                                             QStringLiteral("2 dropped the host was stopped")}));
        bench.tracker.stopped();
        QVERIFY(bench.taken().isEmpty());
    }

    void everyStateAndReasonHasAText()
    {
        for (int state = 0; state <= int(WriteState::PartlyWritten); ++state)
            QVERIFY(!writeStateName(WriteState(state)).isEmpty());
        QVERIFY(writeReasonText(WriteReason::None).isEmpty());
        for (int reason = 1; reason <= int(WriteReason::NotRead); ++reason)
            QVERIFY(!writeReasonText(WriteReason(reason)).isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestWriteTracker)
#include "tst_write_tracker.moc"
