// Tags with an interval in a host session.
#include "tests/support/frames.h"
#include "tests/support/session_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

const QByteArray READ_ONE = request("010528");
const QByteArray READ_TWO = request("020528");
const QByteArray READ_SIX = request("010628");

/// Keeps what is told of classes.
class PaceRecorder final : public HostEvents
{
public:
    void classPaceChanged(const ClassPace &pace) override { texts.append(pace.text()); }
    QStringList texts;
};

void setInterval(SessionBench *bench, int tag, const char *interval)
{
    bench->tags[tag].watch[WatchColumn::Interval] = QLatin1String(interval);
}

/// Passes deadlines until a request is due or the time has come; sends the request.
QByteArray nextBefore(SessionBench *bench, qint64 end_ns)
{
    QByteArray request = bench->send();
    while (request.isEmpty() && bench->session->engine().deadline_ns() <= end_ns) {
        bench->passDeadline();
        request = bench->send();
    }
    if (request.isEmpty())
        bench->now_ns = end_ns;
    return request;
}

} // namespace

class TestHostSessionClasses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTagIsReadAtItsInterval()
    {
        SessionBench bench({"D1/5.2.1"});
        setInterval(&bench, 0, "1s");
        bench.start();
        QCOMPARE(bench.exchange("0007"), READ_ONE);
        QCOMPARE(bench.value(0).raw, quint16(7));
        QCOMPARE(bench.value(0).quality, Quality::Good);
        for (int i = 1; i < 5; ++i) {
            // To the nanosecond, though the driver is asked every 10 ms only.
            QCOMPARE(nextBefore(&bench, i * seconds(1)), READ_ONE);
            QCOMPARE(bench.now_ns, i * seconds(1));
            bench.receive("\x06"
                          "010008\r");
        }
        QCOMPARE(bench.value(0).raw, quint16(8));
        QCOMPARE(bench.events.events().readings.size(), 5);
        QVERIFY(bench.events.events().onceReads.isEmpty());
    }

    void tagsWithoutIntervalHaveTheRestOfTheLine()
    {
        SessionBench bench({"D1/5.2.1", "D1/6.2.1"});
        setInterval(&bench, 0, "50ms");
        bench.start();
        QByteArrayList requests;
        for (int i = 0; i < 11; ++i)
            requests.append(bench.exchange()); // each takes 10 ms
        // The first two come together: the line is listened to for 50 ms before anything is asked.
        QCOMPARE(requests.count(READ_ONE), 4);
        QCOMPARE(requests.count(READ_SIX), 7);
        QCOMPARE(requests.at(0), READ_ONE);
        QCOMPARE(requests.at(1), READ_ONE);
        QCOMPARE(requests.at(5), READ_ONE);
        QCOMPARE(requests.at(10), READ_ONE);
    }

    void anApplicationsReadWaitsForOneOfThemAtMost()
    {
        SessionBench bench({"D1/5.2.1", "D1/6.2.1", "D2/5.2.1"});
        for (int tag = 0; tag < 2; ++tag)
            setInterval(&bench, tag, "10ms");
        bench.start();
        const QByteArray first = bench.send();
        const int id = bench.session->readOnce(2);
        bench.receive("\x06"
                      "010008\r");
        QCOMPARE(bench.exchange(), READ_TWO);
        const RecordedEvents events = bench.events.events();
        QCOMPARE(events.onceReads.size(), 1);
        QCOMPARE(events.onceReads.at(0).id, id);
        QVERIFY(events.onceReads.at(0).good);
        QCOMPARE(first, READ_ONE);
        QCOMPARE(bench.exchange(), READ_SIX);
    }

    void anApplicationThatAlwaysReadsLeavesThemTheirTurn()
    {
        SessionBench bench({"D1/5.2.1", "D2/5.2.1"});
        setInterval(&bench, 0, "10ms");
        bench.start();
        int read = 0;
        for (int i = 0; i < 40; ++i) {
            bench.session->readOnce(1);
            bench.session->readOnce(1);
            read += bench.exchange() == READ_ONE ? 1 : 0;
            if (i > 20)
                break;
        }
        QVERIFY(read > 2);
    }

    void writesGoAhead()
    {
        SessionBench bench({"D1/5.2.1", "D1/6.2.1"});
        for (int tag = 0; tag < 2; ++tag)
            setInterval(&bench, tag, "10ms");
        bench.start();
        bench.send();
        bench.session->write(0, QByteArray("\x12\x34"));
        bench.receive("\x06"
                      "010008\r");
        QCOMPARE(bench.exchange().size(), 12);
    }

    void aStationThatFailsIsSwitchedOffAndProbed()
    {
        SessionBench bench({"D1/5.2.1", "D2/5.2.1"});
        for (int tag = 0; tag < 2; ++tag)
            setInterval(&bench, tag, "200ms");
        bench.start();
        // The first station answers, the second does not.
        while (bench.events.events().switches.isEmpty() && bench.now_ns < seconds(10)) {
            const QByteArray request = nextBefore(&bench, bench.now_ns + seconds(1));
            if (request == READ_ONE)
                bench.receive("\x06"
                              "010008\r");
        }
        QCOMPARE(bench.events.events().switches.size(), 1);
        QCOMPARE(bench.value(1).quality, Quality::NeverRead);
        const qint64 off_ns = bench.now_ns;
        int reads = 0;
        QByteArray request;
        do {
            request = nextBefore(&bench, bench.now_ns + seconds(1));
            reads += request == READ_ONE ? 1 : 0;
            if (request == READ_ONE)
                bench.receive("\x06"
                              "010008\r");
        } while (request != READ_TWO && bench.now_ns < off_ns + seconds(5));
        QCOMPARE(request, READ_TWO); // a probe, a second later
        QVERIFY(qAbs(bench.now_ns - off_ns - seconds(1)) < milliseconds(200));
        QVERIFY(reads >= 4);
        bench.receive("\x06"
                      "020009\r");
        QCOMPARE(bench.events.events().switches.size(), 2);
        QVERIFY(bench.events.events().switches.at(1).on);
        QCOMPARE(bench.value(1).raw, quint16(9));
        QCOMPARE(nextBefore(&bench, bench.now_ns + milliseconds(210)), READ_ONE);
        bench.receive("\x06"
                      "010008\r");
        QCOMPARE(nextBefore(&bench, bench.now_ns + milliseconds(210)), READ_TWO);
    }

    void allAreReadAnewWhenTheLineComesBack()
    {
        SessionBench bench({"D1/5.2.1"});
        setInterval(&bench, 0, "1min");
        bench.start();
        bench.exchange();
        bench.session->engine().lineDown(bench.now_ns);
        bench.now_ns += seconds(2);
        bench.session->engine().lineUp(bench.now_ns);
        QCOMPARE(nextBefore(&bench, bench.now_ns + seconds(1)), READ_ONE);
    }

    void aTagReadSeldomGrowsStaleLater()
    {
        SessionBench bench({"D1/5.2.1", "D1/6.2.1"});
        setInterval(&bench, 0, "10s");
        setInterval(&bench, 1, "1s");
        bench.start();
        bench.exchange();
        bench.exchange();
        const qint64 now_ns = bench.now_ns;
        QCOMPARE(bench.session->values(now_ns + seconds(4)).at(1).quality, Quality::Good);
        QCOMPARE(bench.session->values(now_ns + seconds(6)).at(1).quality, Quality::Stale);
        QCOMPARE(bench.session->values(now_ns + seconds(29)).at(0).quality, Quality::Good);
        QCOMPARE(bench.session->values(now_ns + seconds(31)).at(0).quality, Quality::Stale);
    }

    void aHostThatReadsNothingOfItsOwnAccordReadsNoClassEither()
    {
        SessionBench bench({"D1/5.2.1"});
        setInterval(&bench, 0, "10ms");
        bench.settings.readCyclically = false;
        bench.start();
        QCOMPARE(nextBefore(&bench, bench.now_ns + seconds(5)), QByteArray());
        bench.session->readOnce(0);
        QCOMPARE(nextBefore(&bench, bench.now_ns + seconds(5)), READ_ONE);
    }

    void aLateClassIsToldAndCounted()
    {
        SessionBench bench({"D1/5.2.1", "D1/6.2.1"});
        for (int tag = 0; tag < 2; ++tag)
            setInterval(&bench, tag, "10ms");
        PaceRecorder recorder;
        bench.session = std::make_unique<HostSession>(bench.library.api(), bench.settings,
                                                      bench.tags, &recorder);
        bench.session->engine().lineUp(0);
        bench.passDeadline();
        while (bench.now_ns < seconds(10))
            bench.exchange(); // 10 ms each, for two requests
        QCOMPARE(recorder.texts, QStringList(QStringLiteral("10 ms class: is 20 ms")));
        const Statistics statistics = bench.session->statistics();
        QCOMPARE(statistics.classes.size(), size_t(1));
        QCOMPARE(statistics.classes[0].entries(), 2);
        QVERIFY(statistics.classes[0].isLate());
        QCOMPARE(statistics.classes[0].mean_ns(), milliseconds(20));
        bench.session.reset();
    }
};

QTEST_APPLESS_MAIN(TestHostSessionClasses)
#include "tst_host_session_classes.moc"
