// Every transition of a station.
#include "host/station_supervisor.h"

#include <QtTest>

using namespace kvt;

namespace
{

SupervisorSettings twoFailures()
{
    SupervisorSettings settings;
    settings.failuresToSwitchOff = 2;
    settings.firstPause_ns = seconds(1);
    settings.longestPause_ns = seconds(4);
    return settings;
}

} // namespace

class TestStationSupervisor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aStationIsOnAtFirst()
    {
        StationSupervisor supervisor(twoFailures(), {1});
        QCOMPARE(supervisor.state(1), StationState::On);
        QVERIFY(supervisor.takeDueProbes(seconds(1000)).isEmpty());
        QVERIFY(!supervisor.succeeded(1));
    }

    void failuresInARowSwitchItOff()
    {
        StationSupervisor supervisor(twoFailures(), {1, 2});
        QVERIFY(!supervisor.failed(1, 0));
        QCOMPARE(supervisor.state(1), StationState::On);
        QVERIFY(supervisor.failed(1, 0));
        QCOMPARE(supervisor.state(1), StationState::Off);
    }

    void aSuccessInBetweenStartsTheCountAnew()
    {
        StationSupervisor supervisor(twoFailures(), {1, 2});
        QVERIFY(!supervisor.failed(1, 0));
        QVERIFY(!supervisor.succeeded(1));
        QVERIFY(!supervisor.failed(1, 0));
        QVERIFY(supervisor.failed(1, 0));
    }

    void aProbeIsDueAfterThePause()
    {
        StationSupervisor supervisor(twoFailures(), {1, 2});
        supervisor.failed(1, seconds(10));
        supervisor.failed(1, seconds(10));
        QVERIFY(supervisor.takeDueProbes(seconds(11) - 1).isEmpty());
        QCOMPARE(supervisor.takeDueProbes(seconds(11)), QVector<int>({1}));
        QCOMPARE(supervisor.state(1), StationState::Probing);
        QVERIFY(supervisor.takeDueProbes(seconds(99)).isEmpty());
    }

    void aSuccessfulProbeSwitchesItOn()
    {
        StationSupervisor supervisor(twoFailures(), {1, 2});
        supervisor.failed(1, 0);
        supervisor.failed(1, 0);
        supervisor.takeDueProbes(seconds(1));
        QVERIFY(supervisor.succeeded(1));
        QCOMPARE(supervisor.state(1), StationState::On);
        QVERIFY(!supervisor.succeeded(1));
        QVERIFY(!supervisor.failed(1, seconds(2)));
    }

    void aFailedProbeSwitchesItOffAtOnce()
    {
        StationSupervisor supervisor(twoFailures(), {1, 2});
        supervisor.failed(1, 0);
        supervisor.failed(1, 0);
        supervisor.takeDueProbes(seconds(1));
        QVERIFY(supervisor.failed(1, seconds(2)));
        QCOMPARE(supervisor.state(1), StationState::Off);
    }

    void thePauseDoublesUpToItsLimit()
    {
        StationSupervisor supervisor(twoFailures(), {1, 2});
        supervisor.failed(1, 0);
        supervisor.failed(1, 0);
        qint64 now_ns = 0;
        for (const int pause_s : {1, 2, 4, 4, 4}) {
            QVERIFY(supervisor.takeDueProbes(now_ns + seconds(pause_s) - 1).isEmpty());
            now_ns += seconds(pause_s);
            QCOMPARE(supervisor.takeDueProbes(now_ns), QVector<int>({1}));
            supervisor.failed(1, now_ns);
        }
    }

    void thePauseIsShortAgainAfterASuccess()
    {
        StationSupervisor supervisor(twoFailures(), {1, 2});
        supervisor.failed(1, 0);
        supervisor.failed(1, 0);
        supervisor.takeDueProbes(seconds(1));
        supervisor.failed(1, seconds(1));
        supervisor.takeDueProbes(seconds(3));
        supervisor.succeeded(1);
        supervisor.failed(1, seconds(10));
        supervisor.failed(1, seconds(10));
        QCOMPARE(supervisor.takeDueProbes(seconds(11)), QVector<int>({1}));
    }

    void whatHappensWhileOffChangesNothing()
    {
        StationSupervisor supervisor(twoFailures(), {1, 2});
        supervisor.failed(1, 0);
        supervisor.failed(1, 0);
        QVERIFY(!supervisor.failed(1, seconds(5)));
        QVERIFY(!supervisor.succeeded(1));
        QCOMPARE(supervisor.state(1), StationState::Off);
        QCOMPARE(supervisor.takeDueProbes(seconds(1)), QVector<int>({1}));
    }

    void anUnknownStationIsLeftAlone()
    {
        StationSupervisor supervisor(twoFailures(), {1});
        QCOMPARE(supervisor.state(9), StationState::On);
        for (int i = 0; i < 5; ++i)
            QVERIFY(!supervisor.failed(9, 0));
        QVERIFY(!supervisor.succeeded(9));
    }

    void stationsDoNotAffectEachOther()
    {
        StationSupervisor supervisor(twoFailures(), {1, 2, 3});
        supervisor.failed(1, 0);
        supervisor.failed(2, 0);
        QVERIFY(supervisor.failed(1, seconds(2)));
        QVERIFY(!supervisor.succeeded(2));
        QVERIFY(!supervisor.failed(2, seconds(2)));
        QVERIFY(supervisor.failed(2, seconds(2)));
        QCOMPARE(supervisor.state(3), StationState::On);
        QCOMPARE(supervisor.takeDueProbes(seconds(3)), QVector<int>({1, 2}));
    }

    void withNoStationLeftAllAreProbedSoon()
    {
        StationSupervisor supervisor(twoFailures(), {1, 2});
        supervisor.failed(1, 0);
        supervisor.failed(1, 0);
        for (const int now_s : {1, 3, 7}) {
            supervisor.takeDueProbes(seconds(now_s));
            supervisor.failed(1, seconds(now_s));
        }
        // Station 1 would be probed again at 11 s, but now the other one goes as well.
        supervisor.failed(2, seconds(8));
        supervisor.failed(2, seconds(8));
        QCOMPARE(supervisor.takeDueProbes(seconds(9)), QVector<int>({1, 2}));
        supervisor.failed(1, seconds(9));
        supervisor.failed(2, seconds(9));
        QCOMPARE(supervisor.takeDueProbes(seconds(10)), QVector<int>({1, 2}));
    }
};

QTEST_APPLESS_MAIN(TestStationSupervisor)
#include "tst_station_supervisor.moc"
