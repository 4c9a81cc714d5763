#include "host/poller.h"

#include <algorithm>
#include <chrono>
#include <poll.h>
#include <utility>

namespace kvt
{

namespace
{

SessionSettings settingsFor(SessionSettings settings, const Line &line)
{
    settings.engine.characterTime_ns = line.characterTime_ns();
    return settings;
}

// Waits until a descriptor is ready or the time has come; NEVER waits for descriptors alone.
void waitUntil(qint64 deadline_ns, pollfd *descriptors, nfds_t count)
{
    if (deadline_ns == NEVER) {
        ppoll(descriptors, count, nullptr, nullptr);
        return;
    }
    const qint64 left_ns = std::max<qint64>(deadline_ns - monotonicNow_ns(), 0);
    timespec left = {};
    left.tv_sec = left_ns / seconds(1);
    left.tv_nsec = left_ns % seconds(1);
    ppoll(descriptors, count, &left, nullptr);
}

} // namespace

qint64 monotonicNow_ns()
{
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

Poller::Poller(const DriverApi &api, const PollerSettings &settings, const QVector<Tag> &tags,
               std::unique_ptr<Line> line, HostEvents *events)
    : settings_(settings), line_(std::move(line)),
      session_(api, settingsFor(settings.session, *line_), tags, events),
      reopenPause_ns_(settings.firstReopen_ns)
{
}

Poller::~Poller()
{
    stop();
}

void Poller::start()
{
    thread_ = std::thread([this] { run(); });
}

void Poller::endRequests()
{
    stopping_ = true;
    wakeUp_.ring();
}

void Poller::stop()
{
    if (!thread_.joinable())
        return;
    endRequests();
    thread_.join();
}

int Poller::write(int tag, const QByteArray &bytes)
{
    const int id = session_.write(tag, bytes);
    wakeUp_.ring();
    return id;
}

int Poller::readOnce(int tag)
{
    const int id = session_.readOnce(tag);
    wakeUp_.ring();
    return id;
}

bool Poller::acknowledgeAlarm(int tag)
{
    const bool hasAlarm = session_.acknowledgeAlarm(tag, monotonicNow_ns());
    wakeUp_.ring(); // the event does not wait for the next request
    return hasAlarm;
}

QVector<TagValue> Poller::values() const
{
    return session_.values(monotonicNow_ns());
}

void Poller::run()
{
    while (!stopping_)
        serve(waitForLine());
    session_.stop();
    line_->close();
}

// Returns whether something has happened on the line.
bool Poller::waitForLine()
{
    pollfd descriptors[2] = {};
    descriptors[0].fd = wakeUp_.descriptor();
    descriptors[0].events = POLLIN;
    descriptors[1].fd = line_->descriptor();
    descriptors[1].events =
        lineState_ == LineState::Opening ? line_->openingEvents() : static_cast<short>(POLLIN);
    waitUntil(nextDeadline_ns(), descriptors, lineState_ == LineState::Closed ? 1 : 2);
    if (descriptors[0].revents != 0)
        wakeUp_.clear();
    return descriptors[1].revents != 0;
}

qint64 Poller::nextDeadline_ns()
{
    return lineState_ == LineState::Open ? session_.engine().deadline_ns() : lineDeadline_ns_;
}

void Poller::serve(bool lineReady)
{
    switch (lineState_) {
    case LineState::Closed:
        if (monotonicNow_ns() >= lineDeadline_ns_)
            open();
        break;
    case LineState::Opening:
        serveOpening(lineReady);
        break;
    case LineState::Open:
        serveOpenLine(lineReady);
        break;
    }
}

void Poller::serveOpening(bool lineReady)
{
    if (lineReady)
        followOpening(&Line::finishOpening);
    else if (monotonicNow_ns() >= lineDeadline_ns_)
        followOpening(&Line::giveUpOpening);
}

void Poller::serveOpenLine(bool lineReady)
{
    char bytes[4096];
    const int count = lineReady ? line_->read(bytes, sizeof bytes) : 0;
    if (count < 0) {
        closeLine(QStringLiteral("the other end is gone"));
        return;
    }
    const qint64 now_ns = monotonicNow_ns();
    if (count > 0) {
        session_.engine().received(now_ns, bytes, count);
        reopenPause_ns_ = settings_.firstReopen_ns;
    }
    // A request that is due leaves before anything else is looked at.
    if (!sendRequests())
        return;
    session_.engine().deadlineReached(now_ns);
    sendRequests();
}

// Returns false when the line broke.
bool Poller::sendRequests()
{
    QByteArray request;
    while (!stopping_ && session_.engine().takeRequest(&request)) {
        const qint64 start_ns = monotonicNow_ns();
        if (!line_->write(request)) {
            closeLine(systemError());
            return false;
        }
        const EngineSettings &engine = session_.engine().settings();
        const qint64 duration_ns = engine.paced ? request.size() * engine.characterTime_ns : 0;
        session_.engine().sent(start_ns + duration_ns);
    }
    return true;
}

void Poller::open()
{
    followOpening(&Line::open);
}

// Takes a step of the opening, and does what follows from it.
void Poller::followOpening(Opening (Line::*step)(QString *))
{
    QString error;
    switch ((line_.get()->*step)(&error)) {
    case Opening::Done:
        opened();
        break;
    case Opening::Pending:
        lineState_ = LineState::Opening;
        lineDeadline_ns_ = monotonicNow_ns() + settings_.connectTimeout_ns;
        break;
    case Opening::Failed:
        closeLine(error);
        break;
    }
}

void Poller::opened()
{
    lineState_ = LineState::Open;
    downReported_ = false;
    lineIsPaced_ = line_->isPaced();
    session_.engine().setPaced(lineIsPaced_);
    session_.engine().lineUp(monotonicNow_ns());
}

void Poller::closeLine(const QString &reason)
{
    line_->close();
    lineState_ = LineState::Closed;
    const qint64 now_ns = monotonicNow_ns();
    // Only bytes make the pause short again: a peer that accepts and hangs up at once is no use.
    lineDeadline_ns_ = now_ns + reopenPause_ns_;
    reopenPause_ns_ = std::min(2 * reopenPause_ns_, settings_.longestReopen_ns);
    if (downReported_)
        return;
    downReported_ = true;
    session_.setLineReason(reason);
    session_.engine().lineDown(now_ns);
}

} // namespace kvt
