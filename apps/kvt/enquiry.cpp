#include "apps/kvt/enquiry.h"

#include "apps/kvt/console.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/line_findings.h"

#include <limits>

namespace kvt
{

Enquiry::Enquiry(const LineOptions &options, const QVector<Tag> &tags)
    : options_(options), tags_(tags)
{
}

Enquiry::~Enquiry()
{
    if (link_.poller() == nullptr)
        return;
    link_.poller()->stop();
    EchoReport().look(link_.poller()->statistics().total);
}

int Enquiry::open()
{
    if (!link_.load(options_))
        return EXIT_USAGE;
    PollerSettings settings = pollerSettings(options_);
    settings.session.readCyclically = false;
    // Each request here is asked for by hand, and a station that is off would not get it.
    settings.session.supervisor.failuresToSwitchOff = std::numeric_limits<int>::max();
    link_.connect(options_, settings, tags_, this);
    link_.poller()->start();
    return waitUntil([this] { return lineIsUp_; }) ? EXIT_GOOD : reportStop();
}

bool Enquiry::read(int tag, RequestOutcome *outcome)
{
    begin();
    link_.poller()->readOnce(tag);
    const bool ended = finish(outcome);
    outcome->value = link_.poller()->values().at(tag);
    return ended;
}

bool Enquiry::write(int tag, const QByteArray &bytes, RequestOutcome *outcome)
{
    begin();
    link_.poller()->write(tag, bytes);
    return finish(outcome);
}

int Enquiry::reportStop() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!lineError_.isEmpty()) {
        printError(QStringLiteral("%1: %2").arg(lineName(options_), lineError_));
        return EXIT_NO_LINE;
    }
    printError(QStringLiteral("interrupted"));
    return EXIT_NO_ANSWER;
}

void Enquiry::begin()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    ended_ = false;
    outcome_ = RequestOutcome();
}

bool Enquiry::finish(RequestOutcome *outcome)
{
    const bool ended = waitUntil([this] { return ended_; });
    // What has become of a write that was cut short is known once nothing can leave any more.
    if (!ended)
        link_.poller()->stop();
    const std::lock_guard<std::mutex> lock(mutex_);
    *outcome = outcome_;
    outcome->interrupted = !ended && !outcome_.good;
    outcome->lineLost = outcome->interrupted && !lineError_.isEmpty();
    return !outcome->interrupted;
}

// The polling thread wakes the loop up after each change, be it before the loop runs.
template <typename Condition>
bool Enquiry::waitUntil(Condition condition)
{
    for (;;) {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (condition())
                return true;
            if (!lineError_.isEmpty() || StopSignal::wasRequested())
                return false;
        }
        loop_.exec();
    }
}

void Enquiry::wakeUp()
{
    QMetaObject::invokeMethod(&loop_, &QEventLoop::quit, Qt::QueuedConnection);
}

void Enquiry::writeChanged(const WriteReport &report)
{
    if (!report.isFinal())
        return;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        outcome_.write = report;
        outcome_.good = report.state == WriteState::Acknowledged;
        ended_ = true;
    }
    wakeUp();
}

void Enquiry::onceReadEnded(int, int, bool good)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        outcome_.good = good && !(options_.strict && outcome_.doubtful);
        ended_ = true;
    }
    wakeUp();
}

void Enquiry::lineChanged(bool up, const QString &reason)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        lineIsUp_ = up;
        // It is not waited for: who asks for one value wants to know now.
        if (!up)
            lineError_ = reason;
    }
    wakeUp();
}

void Enquiry::attemptEnded(const Attempt &attempt)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    outcome_.asked = true;
    outcome_.end = attempt.end;
    outcome_.resultCode = attempt.resultCode;
    outcome_.attempts = attempt.number;
    outcome_.timesSent = attempt.timesSent;
    outcome_.doubtful = attempt.doubtful;
    outcome_.endedAt = QDateTime::currentDateTime();
    outcome_.replyTime_ns = attempt.endedAt_ns - attempt.sentAt_ns;
}

} // namespace kvt
