// Alarms of tags in a host session.
#include "tests/support/session_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

/// Keeps what is told of alarms.
class AlarmRecorder final : public HostEvents
{
public:
    void alarmChanged(const AlarmEvent &event) override
    {
        texts.append(
            QStringLiteral("%1 %2 %3")
                .arg(event.tag)
                .arg(alarmStateName(event.status.state), alarmLevelName(event.status.level)));
    }

    /// What was told since the last call.
    QString told()
    {
        const QString text = texts.join(QStringLiteral(", "));
        texts.clear();
        return text;
    }

    QStringList texts;
};

/// One value, by itself a word, scaled by 0.1, with a limit of 10.
class AlarmBench : public SessionBench
{
public:
    explicit AlarmBench(const char *onDelay = "", ValueType type = ValueType::U16)
        : SessionBench({})
    {
        Tag tag = benchTag("D1/5.2.1");
        tag.form = type;
        tag.meaning[MeaningColumn::Scale] = QStringLiteral("0.1");
        tag.watch[WatchColumn::Hi] = QStringLiteral("10");
        tag.watch[WatchColumn::OnDelay] = QLatin1String(onDelay);
        tags = {tag, benchTag("D1/6.2.1")};
        session = std::make_unique<HostSession>(library.api(), settings, tags, &recorder);
        session->engine().lineUp(now_ns);
        passDeadline();
    }
    ~AlarmBench() { session.reset(); }

    AlarmStatus status() const { return session->alarms().at(0).value(); }

    AlarmRecorder recorder;
};

} // namespace

class TestHostSessionAlarms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tagsWithoutAlarmHaveNone()
    {
        AlarmBench bench;
        QCOMPARE(bench.session->alarms().size(), 2);
        QVERIFY(bench.session->alarms().at(0).has_value());
        QVERIFY(!bench.session->alarms().at(1).has_value());
        QVERIFY(!bench.session->acknowledgeAlarm(1, bench.now_ns));
        QVERIFY(!bench.session->acknowledgeAlarm(7, bench.now_ns));
    }

    void anEngineeringValueRaisesAnAlarmOnce()
    {
        AlarmBench bench;
        bench.exchange("0064"); // 10.0
        QCOMPARE(bench.recorder.told(), QString());
        QCOMPARE(bench.status().state, AlarmState::Normal);
        bench.exchange();
        bench.exchange("0065"); // 10.1
        QCOMPARE(bench.recorder.told(), QString("0 unacknowledged hi"));
        bench.exchange();
        bench.exchange("0066");
        QCOMPARE(bench.recorder.told(), QString());
        QVERIFY(bench.session->acknowledgeAlarm(0, bench.now_ns));
        bench.exchange();
        QCOMPARE(bench.recorder.told(), QString("0 acknowledged hi"));
        bench.exchange("0001");
        QCOMPARE(bench.recorder.told(), QString("0 normal none"));
    }

    // It was beyond for as long as anybody knows.
    void anAlarmThatIsOverWithItsDelayIsToldAsWell()
    {
        AlarmBench bench("70ms");
        bench.exchange("0065");
        bench.exchange();
        QCOMPARE(bench.recorder.told(), QString());
        bench.now_ns += milliseconds(60);
        bench.exchange("0001");
        QCOMPARE(bench.recorder.told(), QString("0 unacknowledged hi, 0 returned none"));
    }

    void aValueThatIsNotGoodSuppressesIt()
    {
        AlarmBench bench;
        bench.exchange("0065");
        QCOMPARE(bench.recorder.told(), QString("0 unacknowledged hi"));
        bench.exchange();
        bench.now_ns += milliseconds(100);
        bench.failure();
        bench.exchange();
        QCOMPARE(bench.value(0).quality, Quality::Failed);
        QCOMPARE(bench.recorder.told(), QString("0 suppressed hi"));
        bench.exchange("0065");
        QCOMPARE(bench.recorder.told(), QString("0 unacknowledged hi"));
    }

    // Before the next request, whenever it was that all alarms were looked at last.
    void aTornValueSuppressesItAtOnce()
    {
        for (int before = 0; before < 12; ++before) {
            AlarmBench bench("", ValueType::U32);
            for (int i = 0; i < before || bench.value(0).quality != Quality::Good; ++i)
                bench.exchange("0001"); // 6553.7
            QCOMPARE(bench.recorder.told(), QString("0 unacknowledged hi"));
            for (int word = 2; bench.value(0).quality != Quality::Torn; ++word) {
                QCOMPARE(bench.recorder.told(), QString());
                bench.exchange(QByteArray::number(1000 + word)); // no two alike
            }
            QCOMPARE(bench.recorder.told(), QString("0 suppressed hi"));
            while (bench.value(0).quality != Quality::Good)
                bench.exchange("0001");
            QCOMPARE(bench.recorder.told(), QString("0 unacknowledged hi"));
        }
    }

    void aFailureSuppressesItAtOnce()
    {
        for (int before = 1; before < 12; ++before) {
            AlarmBench bench;
            for (int i = 0; i < before; ++i)
                bench.exchange("0065");
            QCOMPARE(bench.recorder.told(), QString("0 unacknowledged hi"));
            while (bench.value(0).quality != Quality::Failed)
                bench.failure();
            QCOMPARE(bench.recorder.told(), QString("0 suppressed hi"));
        }
    }

    void aLineThatIsDownSuppressesIt()
    {
        AlarmBench bench;
        bench.exchange("0001");
        bench.session->engine().lineDown(bench.now_ns);
        QCOMPARE(bench.recorder.told(), QString("0 suppressed none"));
        bench.session->engine().lineUp(bench.now_ns);
        bench.passDeadline();
        bench.exchange();
        bench.exchange("0001");
        QCOMPARE(bench.recorder.told(), QString("0 normal none"));
    }

    // The value is read no more often than before; the delay is over in between.
    void aDelayEndsWithoutANewValue()
    {
        AlarmBench bench("300ms");
        bench.exchange("0065");
        QCOMPARE(bench.recorder.told(), QString());
        bench.send(); // the other word; its station takes its time
        bench.now_ns += milliseconds(400);
        bench.receive("\x06"
                      "010001\r");
        QCOMPARE(bench.recorder.told(), QString("0 unacknowledged hi"));
    }

    void anAlarmCanBeShelved()
    {
        AlarmBench bench;
        bench.exchange("0065");
        bench.recorder.told();
        QVERIFY(bench.session->shelveAlarm(0, bench.now_ns + milliseconds(500), bench.now_ns));
        bench.exchange();
        QCOMPARE(bench.recorder.told(), QString("0 shelved hi"));
        bench.now_ns += milliseconds(500);
        bench.exchange("0065");
        QCOMPARE(bench.recorder.told(), QString("0 unacknowledged hi"));
        QVERIFY(bench.session->shelveAlarm(0, AlarmMachine::NO_DEADLINE, bench.now_ns));
        QVERIFY(bench.session->unshelveAlarm(0, bench.now_ns));
        QCOMPARE(bench.status().state, AlarmState::Unacknowledged);
    }

    // A reading that may be older than a write is told to nobody, and raises no alarm.
    void aReadingBehindAWriteIsHeldBack()
    {
        AlarmBench bench;
        bench.send();
        bench.session->write(0, QByteArray("\x01\x00", 2));
        bench.receive("\x06"
                      "010065\r");
        QCOMPARE(bench.recorder.told(), QString());
        QCOMPARE(bench.session->statistics().heldBackReadings, quint64(1));
    }
};

QTEST_APPLESS_MAIN(TestHostSessionAlarms)
#include "tst_host_session_alarms.moc"
