// A queue with a thread behind it, and a sink that is stuck, slow or broken.
#include "host/host_time.h"
#include "host/outlet.h"

#include <QtTest>

#include <condition_variable>
#include <csignal>
#include <mutex>
#include <thread>

using namespace kvt;

namespace
{

// Takes texts while its gate is open.
class GatedSink final : public Sink
{
public:
    QString write(const QByteArray &text) override
    {
        std::unique_lock<std::mutex> lock(mutex_);
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        takesSignals_ = sigismember(&blocked, SIGTERM) == 0;
        ++waiting_;
        changed_.notify_all();
        changed_.wait(lock, [this] { return open_; });
        --waiting_;
        if (text == "broken")
            return QStringLiteral("it broke");
        taken_ += text;
        return QString();
    }

    void openGate()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }

    void waitForWriter()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return waiting_ > 0; });
    }

    bool takesSignals() const { return takesSignals_; }
    QByteArray taken()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return taken_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = false;
    bool takesSignals_ = false;
    int waiting_ = 0;
    QByteArray taken_;
};

} // namespace

class TestOutlet : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { sink_ = std::make_shared<GatedSink>(); }

    void textsArriveInOrder();
    void aStuckSinkHoldsNobodyUp();
    void whoWaitsIsLetInWhenThereIsRoom();
    void aBrokenSinkIsTold();

private:
    std::shared_ptr<GatedSink> sink_;
};

void TestOutlet::textsArriveInOrder()
{
    sink_->openGate();
    Outlet outlet(sink_, 1000);
    QByteArray all;
    for (int i = 0; i < 1000; ++i) {
        const QByteArray text = QByteArray::number(i) + ' ';
        QVERIFY(outlet.add(text, Outlet::WhenFull::Wait));
        all += text;
    }
    QVERIFY(outlet.drain(NEVER));
    QVERIFY(!outlet.isBusy());
    QCOMPARE(sink_->taken(), all);
    QCOMPARE(outlet.dropped(), qint64(0));
    QVERIFY(!sink_->takesSignals());
}

void TestOutlet::aStuckSinkHoldsNobodyUp()
{
    auto outlet = std::make_unique<Outlet>(sink_, 10);
    QVERIFY(outlet->add("0", Outlet::WhenFull::Drop));
    sink_->waitForWriter();
    // What is being written is no longer queued; one text more than the limit is.
    QVERIFY(outlet->add("123456789", Outlet::WhenFull::Drop));
    QVERIFY(outlet->add("abcdefghi", Outlet::WhenFull::Drop));
    QVERIFY(!outlet->add("x", Outlet::WhenFull::Drop));
    QVERIFY(!outlet->add("y", Outlet::WhenFull::Drop));
    QCOMPARE(outlet->dropped(), qint64(2));
    QVERIFY(outlet->isBusy());
    QVERIFY(!outlet->drain(0));
    QVERIFY(!outlet->drain(milliseconds(1)));
    sink_->openGate();
    QVERIFY(outlet->drain(NEVER));
    QCOMPARE(sink_->taken(), QByteArray("0123456789abcdefghi"));
    QVERIFY(outlet->add("z", Outlet::WhenFull::Drop));
    QVERIFY(outlet->drain(NEVER));
    QVERIFY(sink_->taken().endsWith('z'));
    // One that goes while its thread is stuck leaves it behind.
    sink_ = std::make_shared<GatedSink>();
    outlet = std::make_unique<Outlet>(sink_, 10);
    QVERIFY(outlet->add("0", Outlet::WhenFull::Drop));
    sink_->waitForWriter();
    outlet.reset();
    sink_->openGate();
}

void TestOutlet::whoWaitsIsLetInWhenThereIsRoom()
{
    Outlet outlet(sink_, 1);
    QVERIFY(outlet.add("a", Outlet::WhenFull::Drop));
    sink_->waitForWriter();
    QVERIFY(outlet.add("b", Outlet::WhenFull::Drop));
    std::thread other([&outlet] { outlet.add("c", Outlet::WhenFull::Wait); });
    sink_->openGate();
    other.join();
    QVERIFY(outlet.drain(NEVER));
    QCOMPARE(sink_->taken(), QByteArray("abc"));
    QCOMPARE(outlet.dropped(), qint64(0));
}

void TestOutlet::aBrokenSinkIsTold()
{
    sink_->openGate();
    Outlet outlet(sink_, 1);
    QVERIFY(outlet.add("a", Outlet::WhenFull::Wait));
    QVERIFY(outlet.add("broken", Outlet::WhenFull::Wait));
    QVERIFY(outlet.drain(NEVER));
    QCOMPARE(outlet.error(), QStringLiteral("it broke"));
    QVERIFY(!outlet.add("b", Outlet::WhenFull::Wait));
    QVERIFY(!outlet.add("c", Outlet::WhenFull::Drop));
    QCOMPARE(outlet.dropped(), qint64(2));
    QVERIFY(!outlet.isBusy());
    QCOMPARE(sink_->taken(), QByteArray("a"));
}

QTEST_APPLESS_MAIN(TestOutlet)
#include "tst_outlet.moc"
