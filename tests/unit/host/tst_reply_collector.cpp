// Where a reply ends.
#include "host/reply_collector.h"

#include "tests/support/frames.h"

#include <QtTest>

using namespace kvt;

namespace
{

Request requestOf(int expectedLength)
{
    Request made;
    made.frame = request("010528");
    made.expectedLength = expectedLength;
    return made;
}

int add(ReplyCollector *collector, const QByteArray &bytes)
{
    return collector->add(bytes.constData(), bytes.size());
}

int skip(ReplyCollector *collector, const QByteArray &bytes)
{
    return collector->skipEcho(bytes.constData(), bytes.size());
}

} // namespace

class TestReplyCollector : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itEndsAtTheExpectedLength()
    {
        ReplyCollector collector;
        collector.start(requestOf(6), false);
        QCOMPARE(add(&collector, "12345"), 5);
        QVERIFY(!collector.isComplete());
        QCOMPARE(add(&collector, "6"), 1);
        QVERIFY(collector.isComplete());
        QCOMPARE(collector.bytes(), QByteArray("123456"));
    }

    void itEndsAtCarriageReturn()
    {
        ReplyCollector collector;
        collector.start(requestOf(6), false);
        QCOMPARE(add(&collector, "12\r4"), 3);
        QVERIFY(collector.isComplete());
        QCOMPARE(collector.bytes(), QByteArray("12\r"));
    }

    void itEndsAtACarriageReturnThatComesAlone()
    {
        ReplyCollector collector;
        collector.start(requestOf(6), false);
        QCOMPARE(add(&collector, "12"), 2);
        QCOMPARE(add(&collector, "\r"), 1);
        QVERIFY(collector.isComplete());
    }

    void aReplyOfNoLengthIsCompleteAtOnce()
    {
        ReplyCollector collector;
        collector.start(requestOf(0), false);
        QCOMPARE(add(&collector, "1"), 0);
        QVERIFY(collector.isComplete());
    }

    void whatRunsOverIsTakenUpToItsCarriageReturn()
    {
        ReplyCollector collector;
        collector.start(requestOf(6), false);
        QCOMPARE(add(&collector, "123456789"), 6);
        QVERIFY(!collector.addOverrun("78", 2));
        QVERIFY(collector.addOverrun("9\r1", 3));
        QCOMPARE(collector.bytes(), QByteArray("123456789\r"));
        QVERIFY(!collector.addOverrun("\r", 1));
        QCOMPARE(collector.bytes(), QByteArray("123456789\r"));
        collector.start(requestOf(6), false);
        const QByteArray endless(2 * LONGEST_REPLY, '1');
        for (int i = 0; i < 2; ++i)
            QVERIFY(!collector.addOverrun(endless.constData(), endless.size()));
        QCOMPARE(collector.bytes().size(), LONGEST_REPLY);
    }

    void itTakesNothingBeyondItsEnd()
    {
        ReplyCollector collector;
        collector.start(requestOf(3), false);
        QCOMPARE(add(&collector, "12345"), 3);
        QVERIFY(collector.isComplete());
        QCOMPARE(add(&collector, "6"), 0);
        QCOMPARE(collector.bytes(), QByteArray("123"));
    }

    void itNeedsTheWholeLengthInRemoteMode()
    {
        ReplyCollector collector;
        collector.start(requestOf(6), true);
        QCOMPARE(add(&collector, "1\r\r4"), 4);
        QVERIFY(!collector.isComplete());
        QCOMPARE(add(&collector, "5\r"), 2);
        QVERIFY(collector.isComplete());
    }

    void anyLengthHasALimit()
    {
        ReplyCollector collector;
        collector.start(requestOf(-1), false);
        QCOMPARE(add(&collector, QByteArray(LONGEST_REPLY + 9, 'x')), LONGEST_REPLY);
        QVERIFY(collector.isComplete());
    }

    void anEchoIsTakenWholeOrInPart()
    {
        ReplyCollector collector;
        collector.start(requestOf(8), false);
        QCOMPARE(skip(&collector, "\x05"
                                  "0105"),
                 5);
        QCOMPARE(skip(&collector, "28\r\x06"), 3);
        QCOMPARE(skip(&collector, "\x05"), 0);
    }

    void anEchoIsNotTakenFromBeyondWhatHasCome()
    {
        ReplyCollector collector;
        const Request request = requestOf(8);
        collector.start(request, false);
        QCOMPARE(collector.skipEcho(request.frame.constData(), 3), 3);
        QCOMPARE(collector.skipEcho(request.frame.constData() + 3, 2), 2);
    }

    void nothingIsAnEchoAfterAnotherByte()
    {
        ReplyCollector collector;
        collector.start(requestOf(8), false);
        QCOMPARE(skip(&collector, "\x06"), 0);
        QCOMPARE(skip(&collector, "\x05"
                                  "01"),
                 0);
    }

    void startingForgetsEverything()
    {
        ReplyCollector collector;
        collector.start(requestOf(8), false);
        skip(&collector, "x");
        add(&collector, "12\r");
        collector.start(requestOf(8), false);
        QVERIFY(!collector.isComplete());
        QVERIFY(collector.bytes().isEmpty());
        QCOMPARE(skip(&collector, "\x05"), 1);
    }
};

QTEST_APPLESS_MAIN(TestReplyCollector)
#include "tst_reply_collector.moc"
