// What a session makes of replies that are doubtful, unproven or found out of step.
#include "tests/support/session_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

const QByteArray VALUE("\x34\x12", 2);

const QByteArray FOREIGN_REPLY("\x06"
                               "021234\r");

// Brings up a line with pauses and has the first reply come, which waits for a proof.
void beginUnproven(SessionBench *bench)
{
    bench->settings.engine.checkpointShare = 0.01;
    bench->start();
    bench->exchange();
}

// Ends that pause in silence, and has a write acknowledged. Returns its id.
int acknowledgeWrite(SessionBench *bench)
{
    const int id = bench->session->write(0, VALUE);
    bench->passDeadline();
    bench->exchange();
    return id;
}

} // namespace

class TestHostSessionProof : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aReadingIsShownOnceItIsProved()
    {
        SessionBench bench({"D1/5.2.1"});
        beginUnproven(&bench);
        QCOMPARE(bench.value(0).quality, Quality::NeverRead);
        const qint64 readAt_ns = bench.now_ns;
        bench.passDeadline();
        QCOMPARE(bench.value(0).quality, Quality::Good);
        QCOMPARE(bench.value(0).readAt_ns, readAt_ns);
        QCOMPARE(bench.value(0).provedUntil_ns, readAt_ns);
    }

    void readingsSinceTheLastProofAreWithdrawn()
    {
        SessionBench bench({"D1/5.2.1", "D1/5.3.1", "D1/5.4.1"});
        beginUnproven(&bench);
        bench.passDeadline();
        bench.exchange();
        QCOMPARE(bench.value(1).quality, Quality::Good);
        QByteArray leaving;
        QVERIFY(bench.session->engine().takeRequest(&leaving));
        bench.receive("?");
        bench.session->engine().sent(bench.now_ns);
        QCOMPARE(bench.value(0).quality, Quality::Good); // proved before
        QCOMPARE(bench.value(1).quality, Quality::Suspect);
        QCOMPARE(bench.events.events().suspects, QVector<int>{1});
        QCOMPARE(bench.session->statistics().timesOutOfStep, quint64(1));
    }

    void noLaterProofIsOneOfAWithdrawnReading()
    {
        SessionBench bench({"D1/5.2.1", "D1/5.3.1", "D1/5.4.1"});
        beginUnproven(&bench);
        bench.passDeadline();
        bench.exchange();
        bench.session->engine().askForProof();
        bench.exchange();
        bench.receive("?");
        QCOMPARE(bench.value(1).quality, Quality::Suspect);
        bench.passDeadline();
        bench.exchange();
        bench.passDeadline();
        QVERIFY(bench.value(0).isProved());
        QVERIFY(bench.value(1).readAt_ns < bench.value(1).provedUntil_ns);
        QVERIFY(!bench.value(1).isProved());
    }

    void noLaterProofIsOneOfAReadingBeforeTheLineWasLost()
    {
        SessionBench bench({"D1/5.2.1", "D1/5.3.1", "D1/5.4.1"});
        beginUnproven(&bench);
        bench.passDeadline();
        bench.exchange();
        QCOMPARE(bench.value(1).quality, Quality::Good);
        bench.session->engine().lineDown(bench.now_ns);
        QCOMPARE(bench.value(1).quality, Quality::Suspect);
        bench.session->engine().lineUp(bench.now_ns);
        bench.passDeadline();
        bench.exchange();
        bench.passDeadline();
        QVERIFY(bench.value(0).isProved());
        QCOMPARE(bench.value(1).quality, Quality::Suspect);
        QVERIFY(bench.value(1).readAt_ns < bench.value(1).provedUntil_ns);
        QVERIFY(!bench.value(1).isProved());
        QVERIFY(bench.value(2).isProved());
    }

    void aWriteIsAcknowledgedOnceItIsProved()
    {
        SessionBench bench({"D1/5.2.1"});
        beginUnproven(&bench);
        const int id = acknowledgeWrite(&bench);
        QVERIFY(!bench.events.events().hasEnded(id));
        bench.passDeadline();
        QCOMPARE(bench.events.events().lastOf(id).state, WriteState::Acknowledged);
        QCOMPARE(bench.events.events().lastOf(id).timesSent, 1);
    }

    void aWriteWhoseAcknowledgementMayBeAnothersIsUncertain()
    {
        SessionBench bench({"D1/5.2.1"});
        beginUnproven(&bench);
        const int id = acknowledgeWrite(&bench);
        bench.receive("?");
        QCOMPARE(bench.events.events().lastOf(id).state, WriteState::Uncertain);
        QCOMPARE(bench.events.events().lastOf(id).reason, WriteReason::NotProved);
    }

    void stoppingSettlesWhatIsUnproven()
    {
        SessionBench bench({"D1/5.2.1"});
        beginUnproven(&bench);
        const int id = bench.session->write(0, VALUE);
        const int read = bench.session->readOnce(0);
        bench.passDeadline();
        bench.exchange();
        bench.session->stop();
        QCOMPARE(bench.events.events().lastOf(id).state, WriteState::Uncertain);
        QCOMPARE(bench.events.events().lastOf(id).reason, WriteReason::HostStopped);
        QCOMPARE(bench.events.events().onceReads.size(), 1);
        QCOMPARE(bench.events.events().onceReads[0].id, read);
        QVERIFY(!bench.events.events().onceReads[0].good);
    }

    void aLostLineSettlesWhatIsUnproven()
    {
        SessionBench bench({"D1/5.2.1"});
        beginUnproven(&bench);
        const int id = acknowledgeWrite(&bench);
        bench.session->engine().lineDown(bench.now_ns);
        QCOMPARE(bench.events.events().lastOf(id).state, WriteState::Uncertain);
    }

    void aWriteMeanwhileMakesAnUnprovenReadingWorthless()
    {
        SessionBench bench({"D1/5.2.1"});
        beginUnproven(&bench);
        const int id = bench.session->write(0, VALUE);
        QVERIFY(id > 0);
        bench.passDeadline();
        QCOMPARE(bench.value(0).quality, Quality::NeverRead);
    }

    void aDoubtfulReplyMakesADoubtfulValue()
    {
        SessionBench bench({"D1/5.2.1"});
        bench.start();
        for (int i = 0; i < 3; ++i) {
            bench.send();
            bench.receive(FOREIGN_REPLY);
            QCOMPARE(bench.value(0).quality, Quality::Doubtful);
        }
        QCOMPARE(bench.events.events().doubtfulStations, QVector<int>{1});
        bench.exchange();
        QCOMPARE(bench.value(0).quality, Quality::Good);
        // From now on the station is held to it.
        bench.send();
        bench.receive(FOREIGN_REPLY);
        QCOMPARE(bench.value(0).quality, Quality::Failed);
        const Statistics statistics = bench.session->statistics();
        QCOMPARE(statistics.total.doubtfulReplies, quint64(4));
        QCOMPARE(statistics.total.doubtfulTaken, quint64(3));
    }

    void aDoubtfulAcknowledgementLeavesTheWriteUncertain()
    {
        SessionBench bench({"D1/5.2.1"});
        bench.start();
        const int id = bench.session->write(0, VALUE);
        bench.send();
        bench.receive(FOREIGN_REPLY);
        bench.send();
        bench.receive("\x06"
                      "0212\r");
        QCOMPARE(bench.events.events().lastOf(id).state, WriteState::Uncertain);
        QCOMPARE(bench.events.events().lastOf(id).reason, WriteReason::DoubtfulReply);
    }

    void aCommandIsSentOnce()
    {
        SessionBench bench({"D1/18.1.0"});
        bench.settings.retryLimit = 2;
        bench.settings.readCyclically = false;
        bench.start();
        const int id = bench.session->write(0, VALUE);
        bench.session->engine().deadlineReached(bench.now_ns);
        QCOMPARE(bench.send().size(), 8);
        bench.passDeadline();
        QCOMPARE(bench.events.events().lastOf(id).state, WriteState::TimedOut);
        QCOMPARE(bench.events.events().lastOf(id).timesSent, 1);
    }

    void aCommandThatWasSentTwiceIsUncertain()
    {
        SessionBench bench({"D1/18.1.0"});
        bench.settings.commandRetryLimit = 1;
        bench.settings.readCyclically = false;
        bench.start();
        const int id = bench.session->write(0, VALUE);
        bench.session->engine().deadlineReached(bench.now_ns);
        bench.send();
        bench.passDeadline();
        bench.passDeadline();
        bench.send();
        bench.receive("\x06"
                      "0112\r");
        QCOMPARE(bench.events.events().lastOf(id).state, WriteState::Uncertain);
        QCOMPARE(bench.events.events().lastOf(id).reason, WriteReason::SentTwice);
        QCOMPARE(bench.events.events().lastOf(id).timesSent, 2);
    }
};

QTEST_APPLESS_MAIN(TestHostSessionProof)
#include "tst_host_session_proof.moc"
