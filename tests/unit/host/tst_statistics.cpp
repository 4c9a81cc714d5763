// What is counted, and how it is reported.
#include "host/host_time.h"
#include "host/statistics_json.h"

#include <QJsonArray>
#include <QtTest>

using namespace kvt;

namespace
{

Attempt attemptAt(const Request &request, int resultCode, int number = 1)
{
    Attempt attempt;
    attempt.request = &request;
    attempt.end = AttemptEnd::Replied;
    attempt.resultCode = resultCode;
    attempt.number = number;
    attempt.receivedBytes = 8;
    attempt.sentAt_ns = milliseconds(100);
    attempt.endedAt_ns = milliseconds(110);
    return attempt;
}

Request wordRead(int station)
{
    Request request;
    request.station = station;
    request.frame = QByteArray(8, 'x');
    return request;
}

} // namespace

class TestStatistics : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aResultCodeHasItsClass_data();
    void aResultCodeHasItsClass();
    void anExchangeEndsWithItsLastAttempt();
    void countsAreKeptPerStationAndInAll();
    void aFailureIsCountedByItsLastAttempt();
    void onlyGoodRepliesHaveAReplyTime();
    void aReplyToALaterAttemptHasNoReplyTime();
    void droppedBytesAreCountedByKind();
    void writesAreCountedByState();
    void utilisationIsTimeOnTheWireOverTimeElapsed();
    void onlyALineThatWasUpCanFail();
    void theReportNamesEveryFigure();
    void theReportLeavesOutAUtilisationThatIsNotKnown();
};

void TestStatistics::aResultCodeHasItsClass_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("outcome");
    const auto row = [](int code, Outcome outcome) {
        QTest::addRow("%d", code) << code << int(outcome);
    };
    row(1, Outcome::Success);
    row(100, Outcome::SuccessNotStored);
    row(11, Outcome::LocalBadReply);
    row(22, Outcome::LocalBadReply);
    row(23, Outcome::Unknown);
    row(10, Outcome::Unknown);
    row(41, Outcome::LocalNoReply);
    row(52, Outcome::LocalNoReply);
    row(71, Outcome::LocalWrongLength);
    row(82, Outcome::LocalWrongLength);
    row(111, Outcome::RemoteBadReply);
    row(122, Outcome::RemoteBadReply);
    row(141, Outcome::RemoteNoReply);
    row(152, Outcome::RemoteNoReply);
    row(171, Outcome::RemoteWrongLength);
    row(182, Outcome::RemoteWrongLength);
    row(183, Outcome::Unknown);
    row(200, Outcome::Unknown);
    row(-1, Outcome::Unknown);
}

void TestStatistics::aResultCodeHasItsClass()
{
    QFETCH(int, code);
    QFETCH(int, outcome);
    QCOMPARE(int(outcomeOf(code)), outcome);
}

void TestStatistics::anExchangeEndsWithItsLastAttempt()
{
    Statistics statistics;
    const Request request = wordRead(3);
    statistics.attemptEnded(attemptAt(request, 0, 1));
    QCOMPARE(statistics.total.exchanges, quint64(0));
    statistics.attemptEnded(attemptAt(request, 1, 2));
    QCOMPARE(statistics.total.exchanges, quint64(1));
    QCOMPARE(statistics.total.attempts, quint64(2));
    QCOMPARE(statistics.total.retries, quint64(1));
    QCOMPARE(statistics.total.recoveries, quint64(1));
    statistics.attemptEnded(attemptAt(request, 41, 1));
    QCOMPARE(statistics.total.exchanges, quint64(2));
    QCOMPARE(statistics.total.recoveries, quint64(1));
    QCOMPARE(statistics.total.outcomes.at(size_t(Outcome::Success)), quint64(1));
    QCOMPARE(statistics.total.outcomes.at(size_t(Outcome::LocalNoReply)), quint64(1));
    QCOMPARE(statistics.total.attemptEnds.at(size_t(AttemptEnd::Replied)), quint64(3));
}

void TestStatistics::countsAreKeptPerStationAndInAll()
{
    Statistics statistics;
    const Request three = wordRead(3);
    const Request four = wordRead(4);
    statistics.attemptEnded(attemptAt(three, 1));
    statistics.attemptEnded(attemptAt(four, 1));
    statistics.attemptEnded(attemptAt(four, 1));
    statistics.stationSwitched(4);
    QCOMPARE(statistics.stations[3].exchanges, quint64(1));
    QCOMPARE(statistics.stations[4].exchanges, quint64(2));
    QCOMPARE(statistics.total.exchanges, quint64(3));
    QCOMPARE(statistics.stations[3].stateChanges, quint64(0));
    QCOMPARE(statistics.stations[4].stateChanges, quint64(1));
    QCOMPARE(statistics.total.stateChanges, quint64(1));
}

void TestStatistics::aFailureIsCountedByItsLastAttempt()
{
    Statistics statistics;
    const Request request = wordRead(3);
    Attempt refused = attemptAt(request, 0, 1);
    refused.end = AttemptEnd::Refused;
    statistics.attemptEnded(refused);
    statistics.attemptEnded(attemptAt(request, 1, 2));
    QCOMPARE(statistics.total.failuresAt(AttemptEnd::Refused), quint64(0));
    refused.resultCode = 71;
    statistics.attemptEnded(refused);
    Attempt disturbed = attemptAt(request, 41);
    disturbed.end = AttemptEnd::Disturbed;
    statistics.attemptEnded(disturbed);
    for (const StationStatistics &counts : {statistics.total, statistics.stations[3]}) {
        QCOMPARE(counts.failuresAt(AttemptEnd::Refused), quint64(1));
        QCOMPARE(counts.failuresAt(AttemptEnd::Disturbed), quint64(1));
        QCOMPARE(counts.failuresAt(AttemptEnd::NoReply), quint64(0));
        QCOMPARE(counts.failuresAt(AttemptEnd::Replied), quint64(0));
        QCOMPARE(counts.outcomes.at(size_t(Outcome::LocalWrongLength)), quint64(1));
        QCOMPARE(counts.outcomes.at(size_t(Outcome::LocalNoReply)), quint64(1));
    }
    const auto &refusals = statistics.total.failures.at(size_t(AttemptEnd::Refused));
    QCOMPARE(refusals.at(size_t(Outcome::LocalWrongLength)), quint64(1));
}

void TestStatistics::onlyGoodRepliesHaveAReplyTime()
{
    Statistics statistics;
    const Request request = wordRead(3);
    statistics.attemptEnded(attemptAt(request, 0));
    statistics.attemptEnded(attemptAt(request, 71));
    QCOMPARE(statistics.total.replyTime.count(), quint64(0));
    statistics.attemptEnded(attemptAt(request, 100));
    QCOMPARE(statistics.total.replyTime.count(), quint64(1));
    QCOMPARE(statistics.total.replyTime.greatest_ns(), milliseconds(10));
}

// It may be the late answer to an earlier one.
void TestStatistics::aReplyToALaterAttemptHasNoReplyTime()
{
    Statistics statistics;
    const Request request = wordRead(3);
    statistics.attemptEnded(attemptAt(request, 0, 1));
    statistics.attemptEnded(attemptAt(request, 1, 2));
    QCOMPARE(statistics.total.recoveries, quint64(1));
    QCOMPARE(statistics.total.replyTime.count(), quint64(0));
    QCOMPARE(statistics.stations[3].replyTime.count(), quint64(0));
}

void TestStatistics::droppedBytesAreCountedByKind()
{
    Statistics statistics;
    statistics.bytesDropped(DroppedBytes::Stale, 3, 5);
    statistics.bytesDropped(DroppedBytes::Late, 3, 7);
    statistics.bytesDropped(DroppedBytes::Echo, 3, 8);
    statistics.bytesDropped(DroppedBytes::Stale, -1, 2);
    QCOMPARE(statistics.stations[3].staleBytes, quint64(5));
    QCOMPARE(statistics.stations[3].lateBytes, quint64(7));
    QCOMPARE(statistics.stations[3].echoBytes, quint64(8));
    QCOMPARE(statistics.total.staleBytes, quint64(7));
    QVERIFY(!statistics.stations.contains(-1));
    // An echo takes no time of its own.
    QCOMPARE(statistics.wireBytes, quint64(14));
}

void TestStatistics::writesAreCountedByState()
{
    Statistics statistics;
    statistics.writeChanged({1, 0, WriteState::Queued, WriteReason::None});
    statistics.writeChanged({1, 0, WriteState::Dropped, WriteReason::Replaced});
    QCOMPARE(statistics.writes.at(size_t(WriteState::Queued)), quint64(1));
    QCOMPARE(statistics.writes.at(size_t(WriteState::Dropped)), quint64(1));
    QCOMPARE(statistics.writes.at(size_t(WriteState::Acknowledged)), quint64(0));
}

void TestStatistics::utilisationIsTimeOnTheWireOverTimeElapsed()
{
    Statistics statistics;
    QCOMPARE(statistics.utilisation(seconds(1), milliseconds(1)), 0.0);
    statistics.lineChanged(true, seconds(10));
    QCOMPARE(statistics.utilisation(seconds(10), milliseconds(1)), 0.0);
    const Request request = wordRead(3);
    statistics.attemptEnded(attemptAt(request, 1));
    statistics.lineChanged(false, seconds(10));
    statistics.lineChanged(true, seconds(11));
    QCOMPARE(statistics.utilisation(seconds(10) + milliseconds(64), milliseconds(1)), 0.25);
}

void TestStatistics::onlyALineThatWasUpCanFail()
{
    Statistics statistics;
    statistics.lineChanged(false, 0);
    QCOMPARE(statistics.lineFailures, quint64(0));
    statistics.lineChanged(true, 1);
    statistics.lineChanged(false, 2);
    statistics.lineChanged(false, 3);
    QCOMPARE(statistics.lineFailures, quint64(1));
}

void TestStatistics::theReportNamesEveryFigure()
{
    Statistics statistics;
    statistics.lineChanged(true, 0);
    const Request request = wordRead(3);
    statistics.attemptEnded(attemptAt(request, 0, 1));
    statistics.attemptEnded(attemptAt(request, 1, 2));
    statistics.attemptEnded(attemptAt(request, 1));
    statistics.bytesDropped(DroppedBytes::Late, 3, 8);
    statistics.writeChanged({1, 0, WriteState::Acknowledged, WriteReason::None});
    statistics.scan.cyclicReadEnded({3, 1, 10}, 1, 0);
    statistics.scan.cyclicReadEnded({3, 1, 10}, 1, milliseconds(5));
    statistics.scan.cyclicReadEnded({3, 1, 10}, 1, milliseconds(12));

    const QJsonObject report = statisticsToJson(statistics, milliseconds(400), milliseconds(1));
    QCOMPARE(report[QLatin1String("elapsed_ms")].toDouble(), 400.0);
    QCOMPARE(report[QLatin1String("utilisation_percent")].toDouble(), 14.0);
    QCOMPARE(report[QLatin1String("wire_bytes")].toInt(), 56);
    QCOMPARE(report[QLatin1String("writes")][QLatin1String("acknowledged")].toInt(), 1);
    QCOMPARE(report[QLatin1String("scan_time")][QLatin1String("max_ms")].toDouble(), 7.0);
    QCOMPARE(report[QLatin1String("scan_time")][QLatin1String("jitter_ms")].toDouble(), 2.0);
    QJsonObject station = report[QLatin1String("stations")].toArray().first().toObject();
    QCOMPARE(station.take(QLatin1String("station")).toInt(), 3);
    QCOMPARE(QJsonValue(station), report[QLatin1String("total")]);
    QCOMPARE(station[QLatin1String("exchanges")].toInt(), 2);
    QCOMPARE(station[QLatin1String("attempts")].toInt(), 3);
    QCOMPARE(station[QLatin1String("recoveries")].toInt(), 1);
    QCOMPARE(station[QLatin1String("late_bytes")].toInt(), 8);
    QCOMPARE(station[QLatin1String("outcomes")].toObject()[QLatin1String("ok")].toInt(), 2);
    QCOMPARE(station[QLatin1String("failed")].toInt(), 0);
    QCOMPARE(station[QLatin1String("reply_time")].toObject()[QLatin1String("median_ms")].toDouble(),
             10.0);
}

void TestStatistics::theReportLeavesOutAUtilisationThatIsNotKnown()
{
    const QJsonObject report = statisticsToJson(Statistics(), seconds(5), 0);
    QVERIFY(!report.contains(QLatin1String("utilisation_percent")));
    QCOMPARE(report[QLatin1String("elapsed_ms")].toDouble(), 0.0);
    QVERIFY(report[QLatin1String("stations")].toArray().isEmpty());
}

QTEST_APPLESS_MAIN(TestStatistics)
#include "tst_statistics.moc"
