// Time-outs and silences that follow from line and station.
#include "host/engine_settings.h"

#include <QtTest>

using namespace kvt;

class TestEngineSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTimeoutIsTurnaroundLengthAndLatency()
    {
        EngineSettings settings;
        settings.characterTime_ns = microseconds(1042);
        settings.latency_ns = milliseconds(20);
        settings.defaultTiming.turnaround_ns = milliseconds(50);
        QCOMPARE(settings.replyTimeout_ns(1, 8), microseconds(50000 + 8336 + 20000));
        QCOMPARE(settings.replyTimeout_ns(1, 144), microseconds(50000 + 150048 + 20000));
        QCOMPARE(settings.replyTimeout_ns(1, -1), milliseconds(70));
        QCOMPARE(settings.replyTimeout_ns(1, 0), milliseconds(70));
    }

    void aTimeoutThatIsSetIsTakenAsItIs()
    {
        EngineSettings settings;
        settings.characterTime_ns = milliseconds(1);
        settings.defaultTiming.replyTimeout_ns = milliseconds(33);
        QCOMPARE(settings.replyTimeout_ns(1, 144), milliseconds(33));
    }

    void theSilenceEqualsTheTimeoutUnlessSet()
    {
        EngineSettings settings;
        settings.characterTime_ns = milliseconds(1);
        QCOMPARE(settings.quietTime_ns(1, 8), settings.replyTimeout_ns(1, 8));
        settings.defaultTiming.quietTime_ns = milliseconds(5);
        QCOMPARE(settings.quietTime_ns(1, 8), milliseconds(5));
    }

    void aStationsOwnTimingGoesBeforeTheDefault()
    {
        EngineSettings settings;
        settings.latency_ns = 0;
        StationTiming slow;
        slow.turnaround_ns = milliseconds(900);
        settings.stations.insert(7, slow);
        QCOMPARE(settings.replyTimeout_ns(7, 0), milliseconds(900));
        QCOMPARE(settings.replyTimeout_ns(8, 0), milliseconds(50));
        QCOMPARE(settings.replyTimeout_ns(-1, 0), milliseconds(50));
    }

    void aGapInAReplyAllowsForLatencyAndSpeed()
    {
        EngineSettings settings;
        settings.characterTime_ns = milliseconds(1);
        settings.latency_ns = milliseconds(16);
        QCOMPARE(settings.characterGap_ns(), milliseconds(20));
    }
};

QTEST_APPLESS_MAIN(TestEngineSettings)
#include "tst_engine_settings.moc"
