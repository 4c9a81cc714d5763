// Values and stations of a host session.
#include "tests/support/frames.h"
#include "tests/support/session_bench.h"

#include <QtTest>

#include <limits>

using namespace kvt;

namespace
{

const QByteArray READ_ONE = request("010528");
const QByteArray READ_TWO = request("020528");

} // namespace

class TestHostSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aReadingReachesItsTag();
    void everyTagOfACellIsRead();
    void aBlockReachesAllItsTags();
    void theSecondAddressPartOfBlocksIsSent();
    void blocksOfDifferentSecondPartsCannotBePolledTogether();
    void aReadingGrowsStale();
    void aTagCanGrowStaleSooner();
    void aFailureMarksItsTags();
    void eachRequestHasItsOwnRetries();
    void aFailingStationIsSwitchedOffAndReportedOnce();
    void theOthersArePolledAsBefore();
    void aProbeHasASingleAttempt();
    void aSuccessfulProbeBringsTheStationBack();
    void aOnceReadGoesAheadOfItsTurn();
    void aOnceReadOfAStationThatIsOffEndsAtOnce();
    void aFailureEndsTheOnceReadsOfItsStation();
    void aOnceReadOfNoTagEndsAtOnce();
    void idsGoOnBehindTheLastAndBeginAgain();
    void aOnceReadEndsWhenTheHostStops();
    void theDriverIsAskedForNothingWithoutTags();
    void lineChangesAreReportedWithTheirReason();
};

void TestHostSession::aReadingReachesItsTag()
{
    SessionBench bench({"D1/5.2.1", "X2/5.2.1"});
    bench.start();
    QCOMPARE(bench.value(0).quality, Quality::NeverRead);
    QCOMPARE(bench.exchange("12AB"), READ_ONE);
    QCOMPARE(bench.value(0).raw, quint64(0x12AB));
    QCOMPARE(bench.value(0).quality, Quality::Good);
    QCOMPARE(bench.value(0).readAt_ns, bench.now_ns);
    QCOMPARE(bench.value(1).quality, Quality::NeverRead);
    QCOMPARE(bench.exchange("C3"), READ_TWO);
    QCOMPARE(bench.value(1).raw, quint64(0xC3));
    const RecordedEvents events = bench.events.events();
    QCOMPARE(events.readings.size(), 2);
    QCOMPARE(events.readings[1].tag, 1);
    QCOMPARE(events.readings[1].raw, quint64(0xC3));
    QCOMPARE(events.readings[1].at_ns, bench.now_ns);
}

void TestHostSession::everyTagOfACellIsRead()
{
    SessionBench bench({"D1/5.2.1", "D1/5.2.1", "D1/5.3.1"});
    bench.start();
    bench.exchange("0007");
    QCOMPARE(bench.value(0).raw, quint64(7));
    QCOMPARE(bench.value(1).raw, quint64(7));
    QCOMPARE(bench.value(2).quality, Quality::NeverRead);
    QCOMPARE(bench.events.events().readings.size(), 2);
}

void TestHostSession::aBlockReachesAllItsTags()
{
    SessionBench bench({"C1/7.0.1.0", "C1/7.0.1.69", "C1/7.0.1.2"});
    bench.start();
    QByteArray digits(140, '0');
    digits.replace(0, 2, "1F");
    digits.replace(4, 2, "2E");
    digits.replace(138, 2, "3D");
    bench.exchange(digits);
    QCOMPARE(bench.value(0).raw, quint64(0x1F));
    QCOMPARE(bench.value(1).raw, quint64(0x3D));
    QCOMPARE(bench.value(2).raw, quint64(0x2E));
}

void TestHostSession::theSecondAddressPartOfBlocksIsSent()
{
    SessionBench bench({"C1/7.9.0.0"});
    bench.start();
    QCOMPARE(bench.send(), QByteArray("\x05"
                                      "010790\r"));
}

void TestHostSession::blocksOfDifferentSecondPartsCannotBePolledTogether()
{
    const QVector<Tag> same = {benchTag("C1/7.3.0.0"), benchTag("C2/8.3.1.5"),
                               benchTag("D1/7.4.0")};
    QVERIFY(HostSession::obstacles(same).isEmpty());
    const QVector<Tag> different = {benchTag("C1/7.3.0.0"), benchTag("C2/8.4.1.5")};
    const QStringList obstacles = HostSession::obstacles(different);
    QCOMPARE(obstacles.size(), 1);
    QVERIFY(obstacles[0].contains(QLatin1String("C1/7.3.0.0")));
    QVERIFY(obstacles[0].contains(QLatin1String("C2/8.4.1.5")));
}

void TestHostSession::aReadingGrowsStale()
{
    SessionBench bench({"D1/5.2.1"});
    bench.start();
    bench.exchange();
    QCOMPARE(bench.session->values(bench.now_ns + seconds(5)).at(0).quality, Quality::Good);
    QCOMPARE(bench.session->values(bench.now_ns + seconds(5) + 1).at(0).quality, Quality::Stale);
}

void TestHostSession::aTagCanGrowStaleSooner()
{
    SessionBench bench({"D1/5.2.1", "D1/5.3.1"});
    bench.settings.staleAfterOf_ns.insert(QStringLiteral("D1/5.3.1"), milliseconds(500));
    bench.start();
    bench.exchange();
    bench.exchange();
    const QVector<TagValue> values = bench.session->values(bench.now_ns + seconds(1));
    QCOMPARE(values[0].quality, Quality::Good);
    QCOMPARE(values[1].quality, Quality::Stale);
}

void TestHostSession::aFailureMarksItsTags()
{
    SessionBench bench({"D1/5.2.1", "D2/5.2.1"});
    bench.start();
    bench.exchange("0001");
    bench.exchange("0002");
    bench.failure();
    QCOMPARE(bench.value(0).quality, Quality::Failed);
    QCOMPARE(bench.value(0).raw, quint64(1));
    QCOMPARE(bench.value(1).quality, Quality::Good);
}

// The driver counts on after a success; without the host's doing the second request would have
// one attempt less.
void TestHostSession::eachRequestHasItsOwnRetries()
{
    SessionBench bench({"D1/5.2.1", "D2/5.2.1"});
    bench.settings.retryLimit = 1;
    bench.start();
    QCOMPARE(bench.failure(), READ_ONE);
    QCOMPARE(bench.exchange(), READ_ONE);
    bench.passDeadline();
    QCOMPARE(bench.failure(), READ_TWO);
    QCOMPARE(bench.exchange(), READ_TWO);
    const Statistics statistics = bench.session->statistics();
    QCOMPARE(statistics.total.recoveries, quint64(2));
    QCOMPARE(statistics.total.outcomes.at(size_t(Outcome::Success)), quint64(2));
}

void TestHostSession::aFailingStationIsSwitchedOffAndReportedOnce()
{
    SessionBench bench({"D1/5.2.1", "D1/5.3.1", "D2/5.2.1"});
    bench.start();
    bench.exchange("0001");
    bench.exchange("0002");
    bench.exchange("0003");
    bench.failure();
    QVERIFY(bench.events.events().switches.isEmpty());
    bench.failure();
    QCOMPARE(bench.events.events().switches.size(), 1);
    QCOMPARE(bench.events.events().switches[0].station, 1);
    QVERIFY(!bench.events.events().switches[0].on);
    QCOMPARE(bench.value(0).quality, Quality::Failed);
    QCOMPARE(bench.value(1).quality, Quality::Failed);
    QCOMPARE(bench.value(2).quality, Quality::Good);
    // A failed probe is no change.
    bench.now_ns += seconds(2);
    bench.exchange();
    bench.failure();
    bench.exchange();
    QCOMPARE(bench.events.events().switches.size(), 1);
    QCOMPARE(bench.session->statistics().total.stateChanges, quint64(1));
}

void TestHostSession::theOthersArePolledAsBefore()
{
    SessionBench bench({"D1/5.2.1", "D2/5.2.1"});
    bench.start();
    bench.failure();
    bench.exchange();
    bench.failure();
    for (int i = 0; i < 10; ++i)
        QCOMPARE(bench.exchange(), READ_TWO);
    const Statistics statistics = bench.session->statistics();
    QCOMPARE(statistics.stations[1].exchanges, quint64(2));
    QCOMPARE(statistics.stations[2].exchanges, quint64(11));
}

void TestHostSession::aProbeHasASingleAttempt()
{
    SessionBench bench({"D1/5.2.1", "D2/5.2.1"});
    bench.settings.retryLimit = 2;
    bench.start();
    for (int failed = 0; failed < 2; ++failed) {
        for (int attempt = 0; attempt < 3; ++attempt)
            QCOMPARE(bench.failure(), READ_ONE);
        QCOMPARE(bench.exchange(), READ_TWO);
    }
    bench.now_ns += seconds(1);
    QCOMPARE(bench.exchange(), READ_TWO);
    QCOMPARE(bench.failure(), READ_ONE);
    QCOMPARE(bench.exchange(), READ_TWO);
    QCOMPARE(bench.exchange(), READ_TWO);
    QCOMPARE(bench.session->statistics().stations[1].attempts, quint64(7));
}

void TestHostSession::aSuccessfulProbeBringsTheStationBack()
{
    SessionBench bench({"D1/5.2.1", "D2/5.2.1"});
    bench.start();
    bench.failure();
    bench.exchange();
    bench.failure();
    bench.now_ns += seconds(1);
    QCOMPARE(bench.exchange(), READ_TWO);
    QCOMPARE(bench.exchange("0042"), READ_ONE);
    QCOMPARE(bench.value(0).raw, quint64(0x42));
    QCOMPARE(bench.value(0).quality, Quality::Good);
    QCOMPARE(bench.events.events().switches.size(), 2);
    QVERIFY(bench.events.events().switches[1].on);
    QCOMPARE(bench.exchange(), READ_TWO);
    QCOMPARE(bench.exchange(), READ_ONE);
}

void TestHostSession::aOnceReadGoesAheadOfItsTurn()
{
    SessionBench bench({"D1/5.2.1", "D1/5.3.1", "C2/7.0.1.4"});
    bench.start();
    const int id = bench.session->readOnce(2);
    QVERIFY(id > 0);
    QCOMPARE(bench.exchange(), READ_ONE);
    QCOMPARE(bench.exchange(QByteArray(140, '5')), QByteArray("\x05"
                                                              "020708\r"));
    QCOMPARE(bench.value(2).raw, quint64(0x55));
    const RecordedEvents events = bench.events.events();
    QCOMPARE(events.onceReads.size(), 1);
    QCOMPARE(events.onceReads[0].id, id);
    QCOMPARE(events.onceReads[0].tag, 2);
    QVERIFY(events.onceReads[0].good);
}

void TestHostSession::aOnceReadOfAStationThatIsOffEndsAtOnce()
{
    SessionBench bench({"D1/5.2.1", "D2/5.2.1"});
    bench.start();
    bench.failure();
    bench.exchange();
    bench.failure();
    const int id = bench.session->readOnce(0);
    QCOMPARE(bench.exchange(), READ_TWO);
    QCOMPARE(bench.events.events().onceReads.size(), 1);
    QCOMPARE(bench.events.events().onceReads[0].id, id);
    QVERIFY(!bench.events.events().onceReads[0].good);
    QCOMPARE(bench.exchange(), READ_TWO);
}

void TestHostSession::aFailureEndsTheOnceReadsOfItsStation()
{
    SessionBench bench({"D1/5.2.1", "D1/5.3.1", "D2/5.2.1"});
    bench.start();
    const int first = bench.session->readOnce(0);
    const int second = bench.session->readOnce(1);
    const int other = bench.session->readOnce(2);
    bench.exchange();
    bench.failure();
    const RecordedEvents events = bench.events.events();
    QCOMPARE(events.onceReads.size(), 2);
    QCOMPARE(events.onceReads[0].id, first);
    QCOMPARE(events.onceReads[1].id, second);
    QVERIFY(!events.onceReads[0].good && !events.onceReads[1].good);
    QCOMPARE(bench.exchange(), READ_TWO);
    QCOMPARE(bench.events.events().onceReads.last().id, other);
    QVERIFY(bench.events.events().onceReads.last().good);
}

void TestHostSession::idsGoOnBehindTheLastAndBeginAgain()
{
    SessionBench bench({"D1/5.2.1"});
    bench.settings.lastRequestId = std::numeric_limits<int>::max() - 1;
    bench.start();
    QCOMPARE(bench.session->write(0, QByteArray::fromHex("AB12")), std::numeric_limits<int>::max());
    QCOMPARE(bench.session->readOnce(0), 1);
    QCOMPARE(bench.session->write(0, QByteArray::fromHex("AB12")), 2);
}

void TestHostSession::aOnceReadOfNoTagEndsAtOnce()
{
    SessionBench bench({"D1/5.2.1"});
    bench.start();
    for (const int tag : {-1, 1}) {
        const int id = bench.session->readOnce(tag);
        bench.exchange();
        QCOMPARE(bench.events.events().onceReads.last().id, id);
        QVERIFY(!bench.events.events().onceReads.last().good);
    }
}

void TestHostSession::aOnceReadEndsWhenTheHostStops()
{
    SessionBench bench({"D1/5.2.1"});
    bench.start();
    const int queued = bench.session->readOnce(0);
    bench.exchange();
    const int posted = bench.session->readOnce(0);
    bench.session->stop();
    QVector<int> ended;
    for (const RecordedEvents::OnceRead &read : bench.events.events().onceReads) {
        QVERIFY(!read.good);
        ended.append(read.id);
    }
    QCOMPARE(ended, QVector<int>({posted, queued}));
}

void TestHostSession::theDriverIsAskedForNothingWithoutTags()
{
    SessionBench bench({});
    bench.start();
    QCOMPARE(bench.send(), QByteArray());
    QVERIFY(bench.session->values(0).isEmpty());
}

void TestHostSession::lineChangesAreReportedWithTheirReason()
{
    SessionBench bench({"D1/5.2.1"});
    bench.start();
    bench.session->setLineReason(QStringLiteral("pulled"));
    bench.session->engine().lineDown(bench.now_ns);
    QCOMPARE(bench.events.events().lineStates, QVector<bool>({true, false}));
    QCOMPARE(bench.events.events().lineReasons,
             QVector<QString>({QString(), QStringLiteral("pulled")}));
    QCOMPARE(bench.session->statistics().lineFailures, quint64(1));
}

QTEST_APPLESS_MAIN(TestHostSession)
#include "tst_host_session.moc"
