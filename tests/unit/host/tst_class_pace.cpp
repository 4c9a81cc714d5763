// How late a class is, and when that is told.
#include "host/class_pace.h"
#include "host/host_time.h"

#include <QtTest>

using namespace kvt;

namespace
{

/// A class of one request of 100 ms with its clock.
struct Bench {
    ClassPace pace{milliseconds(100), 1};
    qint64 now_ns = 0;

    /// Returns how often there is news while the class is read at an interval for ten seconds.
    int newsAt(qint64 interval_ms)
    {
        int news = 0;
        for (const qint64 end_ns = now_ns + seconds(10); now_ns < end_ns;) {
            now_ns += milliseconds(interval_ms);
            news += pace.read(milliseconds(interval_ms), now_ns) ? 1 : 0;
        }
        return news;
    }
};

} // namespace

class TestClassPace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aClassOnTimeIsNoNews()
    {
        Bench bench;
        QCOMPARE(bench.newsAt(100), 0);
        QCOMPARE(bench.newsAt(109), 0);
        QVERIFY(!bench.pace.isLate());
        QCOMPARE(bench.pace.text(), QString("100 ms class: is on time"));
    }

    void aLateClassIsToldOnce()
    {
        Bench bench;
        QCOMPARE(bench.newsAt(140), 1);
        QVERIFY(bench.pace.isLate());
        QCOMPARE(bench.pace.text(), QString("100 ms class: is 140 ms"));
        QCOMPARE(bench.newsAt(150), 0);
        QCOMPARE(bench.newsAt(108), 0);
        QVERIFY(bench.pace.isLate());
        QCOMPARE(bench.newsAt(180), 1); // worse by more than a quarter
        QCOMPARE(bench.newsAt(100), 1);
        QVERIFY(!bench.pace.isLate());
        QCOMPARE(bench.newsAt(108), 0); // not late again
        QVERIFY(!bench.pace.isLate());
    }

    void longTimesAreToldInSeconds()
    {
        Bench bench;
        bench.newsAt(2346);
        QCOMPARE(bench.pace.text(), QString("100 ms class: is 2.35 s"));
    }

    // One reading behind an interruption makes no late class of one that is on time.
    void aWhileIsAsLongAsItsClass()
    {
        ClassPace pace(seconds(10), 3);
        qint64 now_ns = 0;
        for (int round = 0; round < 9; ++round) {
            for (int entry = 0; entry < 3; ++entry) {
                now_ns += milliseconds(3334);
                QVERIFY(!pace.read(round == 4 && entry == 0 ? seconds(11) : seconds(10), now_ns));
            }
        }
        QCOMPARE(pace.count(), quint64(27));
        QCOMPARE(pace.longest_ns(), seconds(11));
        QCOMPARE(pace.mean_ns(), (26 * seconds(10) + seconds(11)) / 27);
    }
};

QTEST_APPLESS_MAIN(TestClassPace)
#include "tst_class_pace.moc"
