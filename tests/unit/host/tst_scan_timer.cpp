// How long a round of the cyclic reads takes.
#include "host/host_time.h"
#include "host/scan_timer.h"

#include <QtTest>

using namespace kvt;

namespace
{

ReadKey entry(int station)
{
    return {station, 1, 10};
}

} // namespace

class TestScanTimer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aScanEndsWhenItsFirstEntryComesAgain()
    {
        ScanTimer timer;
        qint64 now_ns = 0;
        for (int i = 0; i < 7; ++i) {
            timer.cyclicReadEnded(entry(i % 3), 3, now_ns);
            now_ns += milliseconds(10);
        }
        QCOMPARE(timer.times().count(), quint64(2));
        QCOMPARE(timer.times().least_ns(), milliseconds(30));
        QCOMPARE(timer.times().greatest_ns(), milliseconds(30));
    }

    void theOnlyEntryIsAScanOfItsOwn()
    {
        ScanTimer timer;
        timer.cyclicReadEnded(entry(1), 1, 0);
        timer.cyclicReadEnded(entry(1), 1, milliseconds(7));
        QCOMPARE(timer.times().count(), quint64(1));
        QCOMPARE(timer.times().greatest_ns(), milliseconds(7));
    }

    void aStationThatIsOffDoesNotStopTheMeasuring()
    {
        ScanTimer timer;
        qint64 now_ns = 0;
        timer.cyclicReadEnded(entry(0), 3, now_ns);
        // Station 0 is off from here on.
        for (int i = 0; i < 20; ++i) {
            now_ns += milliseconds(10);
            timer.cyclicReadEnded(entry(1 + i % 2), 3, now_ns);
        }
        QVERIFY(timer.times().count() >= 7);
        QCOMPARE(timer.times().least_ns(), milliseconds(20));
        QCOMPARE(timer.times().greatest_ns(), milliseconds(20));
    }

    void anInterruptedScanDoesNotCount()
    {
        ScanTimer timer;
        timer.cyclicReadEnded(entry(0), 2, 0);
        timer.interrupted();
        timer.cyclicReadEnded(entry(0), 2, seconds(60));
        QCOMPARE(timer.times().count(), quint64(0));
        timer.cyclicReadEnded(entry(1), 2, seconds(61));
        timer.cyclicReadEnded(entry(0), 2, seconds(62));
        QCOMPARE(timer.times().greatest_ns(), seconds(2));
    }
};

QTEST_APPLESS_MAIN(TestScanTimer)
#include "tst_scan_timer.moc"
