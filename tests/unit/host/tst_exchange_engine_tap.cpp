// What the tap of a line is told, and in which order.
#include "host/line_tap.h"

#include "tests/support/engine_bench.h"

#include <QtTest>

using namespace kvt;

namespace
{

class TapLog final : public LineTap
{
public:
    void bytesSent(const QByteArray &bytes) override { lines.append("sent " + bytes.toHex()); }
    void bytesReceived(const char *bytes, int count) override
    {
        lines.append("received " + QByteArray(bytes, count).toHex());
    }
    void bytesDropped(DroppedBytes, int count) override
    {
        lines.append("dropped " + QByteArray::number(count));
    }
    void attemptEnded(const Attempt &attempt) override
    {
        lines.append("ended " + QByteArray::number(attempt.resultCode));
    }
    void lineChanged(bool up) override { lines.append(up ? "up" : "down"); }

    QList<QByteArray> take() { return std::exchange(lines, {}); }

    QList<QByteArray> lines;
};

} // namespace

class TestExchangeEngineTap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anExchangeIsToldInItsOrder()
    {
        TapLog tap;
        EngineBench bench(TWO_WORDS);
        bench.settings.tap = &tap;
        bench.bringUp();
        QCOMPARE(tap.take(), QList<QByteArray>({"up"}));
        bench.exchange(10, REPLY.left(3));
        bench.receive(1, REPLY.mid(3));
        QCOMPARE(tap.take(), QList<QByteArray>({"sent " + FIRST_REQUEST.toHex(),
                                                "received " + REPLY.left(3).toHex(),
                                                "received " + REPLY.mid(3).toHex(), "ended 1"}));
        bench.engine->lineDown(bench.now_ns);
        bench.receive(1, "x");
        QCOMPARE(tap.take(), QList<QByteArray>({"down", "received 78"}));
    }

    void onlyWhatWasDroppedIsTold()
    {
        TapLog tap;
        EngineBench bench(TWO_WORDS);
        bench.settings.tap = &tap;
        bench.bringUp();
        tap.take();
        bench.take();
        bench.receive(1, "x");
        QCOMPARE(tap.take(), QList<QByteArray>({"received 78", "dropped 1"}));
        bench.engine->sent(bench.now_ns);
        QCOMPARE(tap.take(), QList<QByteArray>({"sent " + FIRST_REQUEST.toHex(), "ended 0"}));
    }

    void anEchoIsToldAsSuch()
    {
        TapLog tap;
        EngineBench bench(TWO_WORDS);
        bench.settings.tap = &tap;
        bench.bringUp();
        bench.send();
        tap.take();
        bench.receive(9, FIRST_REQUEST + REPLY);
        QCOMPARE(tap.take(), QList<QByteArray>({"received " + (FIRST_REQUEST + REPLY).toHex(),
                                                "dropped 8", "ended 1"}));
    }
};

QTEST_APPLESS_MAIN(TestExchangeEngineTap)
#include "tst_exchange_engine_tap.moc"
