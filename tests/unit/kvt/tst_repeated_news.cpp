// What happens again and again is told at once, then once a minute.
#include "apps/kvt/common/repeated_news.h"

#include <QtTest>

using namespace kvt;

namespace
{

constexpr qint64 SECOND_ns = 1000000000;

} // namespace

class TestRepeatedNews : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstTimeIsToldAtOnce()
    {
        QCOMPARE(RepeatedNews().happened(0), 1);
        QCOMPARE(RepeatedNews().happened(5 * SECOND_ns), 1);
    }

    void theNextIsToldAMinuteLaterWithTheirNumber()
    {
        RepeatedNews news;
        QCOMPARE(news.happened(0), 1);
        QCOMPARE(news.happened(1), 0);
        QCOMPARE(news.happened(60 * SECOND_ns - 1), 0);
        QCOMPARE(news.happened(60 * SECOND_ns), 3);
        QCOMPARE(news.happened(61 * SECOND_ns), 0);
        QCOMPARE(news.happened(120 * SECOND_ns), 2);
    }

    void whatIsRareIsToldEachTime()
    {
        RepeatedNews news;
        QCOMPARE(news.happened(0), 1);
        QCOMPARE(news.happened(100 * SECOND_ns), 1);
        QCOMPARE(news.happened(200 * SECOND_ns), 1);
    }
};

QTEST_GUILESS_MAIN(TestRepeatedNews)
#include "tst_repeated_news.moc"
