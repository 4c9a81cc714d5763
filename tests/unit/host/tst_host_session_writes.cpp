// Every fate of a write.
#include "tests/support/frames.h"
#include "tests/support/session_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

const QByteArray READ_ONE = request("010528");
const QByteArray WRITE_ONE("\x05"
                           "0105291234\r");
const QByteArray VALUE = QByteArray::fromHex("3412");

const QVector<WriteState> ACKNOWLEDGED = {WriteState::Queued, WriteState::Sent,
                                          WriteState::Acknowledged};

void verifyEnd(const SessionBench &bench, int id, WriteState state, WriteReason reason)
{
    const WriteReport last = bench.events.events().lastOf(id);
    QCOMPARE(last.id, id);
    QCOMPARE(writeStateName(last.state), writeStateName(state));
    QCOMPARE(writeReasonText(last.reason), writeReasonText(reason));
    int finals = 0;
    for (const WriteReport &report : bench.events.events().writes)
        finals += report.id == id && report.isFinal() ? 1 : 0;
    QCOMPARE(finals, 1);
}

} // namespace

class TestHostSessionWrites : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QCOMPARE(mismatches_, quint64(0)); }

    void aWriteIsAcknowledged();
    void aByteIsWrittenToAreaX();
    void aWriteIsRefusedByItsStation();
    void aWriteTimesOut();
    void anUnusableAcknowledgementCountsAsATimeout();
    void aWriteToAStationThatIsOffIsRefused();
    void aWriteDuringAProbeIsSent();
    void whatCannotBeWrittenIsRefused();
    void aNewerValueReplacesAQueuedOne();
    void anotherFailurePurgesAWrite();
    void aFailureAtAnotherStationPurgesNothing();
    void writesBeyondTheQueueAreRefused();
    void aWriteSurvivesTheLossOfTheLine();
    void stoppingEndsEveryWrite();
    void aReadingIsHeldBackWhileAWriteIsPending();
    void aRefusedValueIsNeverShown();
    void everyWriteIsCountedOnceAtItsEnd();

private:
    quint64 mismatches_ = 0;
};

void TestHostSessionWrites::aWriteIsAcknowledged()
{
    SessionBench bench({"D1/5.2.1"});
    bench.start();
    const int id = bench.session->write(0, VALUE);
    QVERIFY(id > 0);
    QCOMPARE(bench.exchange(), READ_ONE);
    QCOMPARE(bench.exchange(), WRITE_ONE);
    QCOMPARE(bench.events.events().statesOf(id), ACKNOWLEDGED);
    QCOMPARE(bench.events.events().lastOf(id).tag, 0);
    QCOMPARE(bench.exchange(), READ_ONE);
    mismatches_ = bench.session->statistics().queueMismatches;
}

void TestHostSessionWrites::aByteIsWrittenToAreaX()
{
    SessionBench bench({"X1/5.2.0"});
    bench.start();
    const int id = bench.session->write(0, QByteArray::fromHex("A5"));
    bench.exchange("00");
    QCOMPARE(bench.exchange(), QByteArray("\x05"
                                          "010521A5\r"));
    QCOMPARE(bench.events.events().statesOf(id), ACKNOWLEDGED);
}

void TestHostSessionWrites::aWriteIsRefusedByItsStation()
{
    SessionBench bench({"D1/5.2.1"});
    bench.start();
    const int id = bench.session->write(0, VALUE);
    bench.exchange();
    QCOMPARE(bench.send(), WRITE_ONE);
    bench.receive("\x15"
                  "01\r");
    bench.passDeadline();
    verifyEnd(bench, id, WriteState::Refused, WriteReason::RefusedByStation);
}

void TestHostSessionWrites::aWriteTimesOut()
{
    SessionBench bench({"D1/5.2.1"});
    bench.settings.retryLimit = 1;
    bench.start();
    const int id = bench.session->write(0, VALUE);
    bench.exchange();
    QCOMPARE(bench.failure(), WRITE_ONE);
    QVERIFY(!bench.events.events().hasEnded(id));
    QCOMPARE(bench.failure(), WRITE_ONE);
    verifyEnd(bench, id, WriteState::TimedOut, WriteReason::NoReply);
    QCOMPARE(bench.send(), READ_ONE);
}

void TestHostSessionWrites::anUnusableAcknowledgementCountsAsATimeout()
{
    SessionBench bench({"D1/5.2.1"});
    bench.start();
    const int id = bench.session->write(0, VALUE);
    bench.exchange();
    bench.send();
    bench.receive("\x06"
                  "01\r");
    verifyEnd(bench, id, WriteState::TimedOut, WriteReason::BadReply);
}

void TestHostSessionWrites::aWriteToAStationThatIsOffIsRefused()
{
    SessionBench bench({"D1/5.2.1", "D2/5.2.1"});
    bench.start();
    bench.failure();
    bench.exchange();
    bench.failure();
    const int id = bench.session->write(0, VALUE);
    bench.exchange();
    verifyEnd(bench, id, WriteState::Refused, WriteReason::StationOff);
    QVERIFY(!bench.value(0).writePending);
}

void TestHostSessionWrites::aWriteDuringAProbeIsSent()
{
    SessionBench bench({"D1/5.2.1", "D2/5.2.1"});
    bench.start();
    bench.failure();
    bench.exchange();
    bench.failure();
    bench.now_ns += seconds(1);
    const int id = bench.session->write(0, VALUE);
    bench.exchange();
    QCOMPARE(bench.exchange(), WRITE_ONE);
    QCOMPARE(bench.events.events().statesOf(id), ACKNOWLEDGED);
    QVERIFY(bench.events.events().switches.last().on);
}

void TestHostSessionWrites::whatCannotBeWrittenIsRefused()
{
    SessionBench bench({"D1/5.2.1", "C1/7.0.1.4"});
    bench.start();
    const QVector<int> ids = {bench.session->write(1, VALUE), bench.session->write(-1, VALUE),
                              bench.session->write(2, VALUE),
                              bench.session->write(0, QByteArray())};
    bench.exchange();
    for (const int id : ids)
        verifyEnd(bench, id, WriteState::Refused, WriteReason::NotWritable);
    QVERIFY(!bench.value(0).writePending);
    QVERIFY(!bench.value(1).writePending);
}

void TestHostSessionWrites::aNewerValueReplacesAQueuedOne()
{
    SessionBench bench({"D1/5.2.1", "D1/5.3.1"});
    bench.start();
    const int first = bench.session->write(0, VALUE);
    const int old = bench.session->write(1, QByteArray::fromHex("0100"));
    const int newer = bench.session->write(1, QByteArray::fromHex("0200"));
    bench.exchange();
    verifyEnd(bench, old, WriteState::Dropped, WriteReason::Replaced);
    bench.exchange();
    QCOMPARE(bench.exchange(), QByteArray("\x05"
                                          "0105390002\r"));
    verifyEnd(bench, first, WriteState::Acknowledged, WriteReason::None);
    verifyEnd(bench, newer, WriteState::Acknowledged, WriteReason::None);
    QVERIFY(!bench.value(1).writePending);
    mismatches_ = bench.session->statistics().queueMismatches;
}

void TestHostSessionWrites::anotherFailurePurgesAWrite()
{
    SessionBench bench({"D1/5.2.1", "D1/5.3.1"});
    bench.start();
    const int first = bench.session->write(0, VALUE);
    const int second = bench.session->write(1, VALUE);
    bench.exchange();
    bench.failure();
    verifyEnd(bench, first, WriteState::TimedOut, WriteReason::NoReply);
    verifyEnd(bench, second, WriteState::Dropped, WriteReason::PurgedByFailure);
    // The driver has forgotten it as well.
    QCOMPARE(bench.send().size(), 8);
    const int third = bench.session->write(0, VALUE);
    bench.receive("\x06"
                  "011234\r");
    QCOMPARE(bench.exchange(), WRITE_ONE);
    verifyEnd(bench, third, WriteState::Acknowledged, WriteReason::None);
    mismatches_ = bench.session->statistics().queueMismatches;
}

void TestHostSessionWrites::aFailureAtAnotherStationPurgesNothing()
{
    SessionBench bench({"D1/5.2.1", "D2/5.2.1"});
    bench.start();
    const int one = bench.session->write(0, VALUE);
    const int two = bench.session->write(1, VALUE);
    bench.exchange();
    bench.failure();
    verifyEnd(bench, one, WriteState::TimedOut, WriteReason::NoReply);
    bench.exchange();
    verifyEnd(bench, two, WriteState::Acknowledged, WriteReason::None);
}

void TestHostSessionWrites::writesBeyondTheQueueAreRefused()
{
    SessionBench bench({});
    for (int i = 0; i < 1026; ++i) {
        const QByteArray name =
            QStringLiteral("D1/%1.%2.%3").arg(32 + i / 32).arg(i / 2 % 16).arg(i % 2).toLatin1();
        bench.tags.append(benchTag(name.constData()));
    }
    bench.start();
    QVector<int> ids;
    for (int tag = 0; tag < bench.tags.size(); ++tag)
        ids.append(bench.session->write(tag, VALUE));
    bench.exchange();
    verifyEnd(bench, ids[1024], WriteState::Refused, WriteReason::QueueFull);
    verifyEnd(bench, ids[1025], WriteState::Refused, WriteReason::QueueFull);
    // A newer value still takes the place of a queued one.
    const int newer = bench.session->write(1000, VALUE);
    bench.exchange();
    verifyEnd(bench, ids[1000], WriteState::Dropped, WriteReason::Replaced);
    for (int i = 0; i < 2000; ++i)
        bench.exchange();
    verifyEnd(bench, ids[1023], WriteState::Acknowledged, WriteReason::None);
    verifyEnd(bench, newer, WriteState::Acknowledged, WriteReason::None);
    mismatches_ = bench.session->statistics().queueMismatches;
}

void TestHostSessionWrites::aWriteSurvivesTheLossOfTheLine()
{
    SessionBench bench({"D1/5.2.1"});
    bench.start();
    const int id = bench.session->write(0, VALUE);
    bench.exchange();
    QCOMPARE(bench.send(), WRITE_ONE);
    bench.session->engine().lineDown(bench.now_ns);
    bench.now_ns += seconds(10);
    bench.session->engine().lineUp(bench.now_ns);
    bench.passDeadline();
    QCOMPARE(bench.exchange(), WRITE_ONE);
    QCOMPARE(bench.events.events().statesOf(id), ACKNOWLEDGED);
}

void TestHostSessionWrites::stoppingEndsEveryWrite()
{
    SessionBench bench({"D1/5.2.1", "D1/5.3.1"});
    bench.start();
    const int sent = bench.session->write(0, VALUE);
    const int queued = bench.session->write(1, VALUE);
    bench.exchange();
    bench.send();
    const int posted = bench.session->write(1, VALUE);
    bench.session->stop();
    verifyEnd(bench, sent, WriteState::TimedOut, WriteReason::HostStopped);
    verifyEnd(bench, queued, WriteState::Dropped, WriteReason::HostStopped);
    verifyEnd(bench, posted, WriteState::Dropped, WriteReason::HostStopped);
    QVERIFY(!bench.value(0).writePending);
    QVERIFY(!bench.value(1).writePending);
}

void TestHostSessionWrites::aReadingIsHeldBackWhileAWriteIsPending()
{
    SessionBench bench({"D1/5.2.1", "D1/5.3.1"});
    bench.start();
    bench.exchange("0001");
    bench.exchange("0002");
    // The request of this reading is on the line before the write is asked for.
    bench.send();
    bench.session->write(0, VALUE);
    QVERIFY(bench.value(0).writePending);
    const qint64 before_ns = bench.value(0).readAt_ns;
    bench.receive("\x06"
                  "010009\r");
    QCOMPARE(bench.value(0).raw, quint64(1));
    QCOMPARE(bench.value(0).readAt_ns, before_ns);
    QCOMPARE(bench.session->statistics().heldBackReadings, quint64(1));
    QCOMPARE(bench.exchange(), WRITE_ONE);
    QVERIFY(!bench.value(0).writePending);
    bench.exchange("0003");
    QCOMPARE(bench.value(1).raw, quint64(3));
    bench.exchange("1234");
    QCOMPARE(bench.value(0).raw, quint64(0x1234));
}

// The driver's cache holds a written value as soon as its frame is built.
void TestHostSessionWrites::aRefusedValueIsNeverShown()
{
    SessionBench bench({"D1/5.2.1"});
    bench.start();
    bench.exchange("0001");
    bench.send();
    bench.session->write(0, VALUE);
    bench.receive("\x06"
                  "010001\r");
    QCOMPARE(bench.send(), WRITE_ONE);
    QByteArray cached;
    bench.library.api().GetRegisterData(QString(), AREA_D, QStringLiteral("5.2.1"), 1, cached, 1);
    QCOMPARE(cached, VALUE);
    QCOMPARE(bench.value(0).raw, quint64(1));
    bench.receive("\x15"
                  "01\r");
    QCOMPARE(bench.value(0).raw, quint64(1));
    QCOMPARE(bench.value(0).quality, Quality::Good);
}

void TestHostSessionWrites::everyWriteIsCountedOnceAtItsEnd()
{
    SessionBench bench({"D1/5.2.1", "C1/7.0.1.4"});
    bench.start();
    bench.session->write(0, VALUE);
    bench.session->write(1, VALUE);
    bench.exchange();
    bench.exchange();
    const Statistics statistics = bench.session->statistics();
    QCOMPARE(statistics.writes.at(size_t(WriteState::Acknowledged)), quint64(1));
    QCOMPARE(statistics.writes.at(size_t(WriteState::Refused)), quint64(1));
    QCOMPARE(statistics.writes.at(size_t(WriteState::Sent)), quint64(1));
}

QTEST_APPLESS_MAIN(TestHostSessionWrites)
#include "tst_host_session_writes.moc"
