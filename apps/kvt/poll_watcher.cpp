#include "apps/kvt/poll_watcher.h"

#include "apps/kvt/console.h"
#include "apps/kvt/outcome_text.h"
#include "apps/kvt/run_end.h"
#include "host/poller.h"

namespace kvt
{

PollWatcher::PollWatcher(const QVector<Tag> &tags, const AlarmTexts &alarms, int scans,
                         bool verbose, bool isTcp)
    : results_(tags), alarms_(alarms), lastScan_(scans), verbose_(verbose), isTcp_(isTcp),
      counter_(tags)
{
}

int PollWatcher::scans() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return counter_.scans();
}

QString PollWatcher::lineError() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return lineError_;
}

bool PollWatcher::isUp() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return wasUp_ && lineError_.isEmpty();
}

bool PollWatcher::wasUp() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return wasUp_;
}

QSet<int> PollWatcher::stationsOff() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return stationsOff_;
}

void PollWatcher::stationSwitched(int station, bool on)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (on)
            stationsOff_.remove(station);
        else
            stationsOff_.insert(station);
    }
    if (!verbose_)
        return;
    printEvent(on ? QStringLiteral("station %1 works again").arg(station)
                  : QStringLiteral("station %1 %2 and is polled less often")
                        .arg(station)
                        .arg(stationTrouble(lastEnd_, lastResult_)));
}

// The reason, with what follows from it.
QString PollWatcher::withRival(bool up, const QString &reason)
{
    if (up)
        rival_.opened(monotonicNow_ns());
    else if (wasUp() && rival_.closed(monotonicNow_ns()) && isTcp_)
        return reason + QStringLiteral(", again and again soon after the connection: somebody "
                                       "else is probably connected to it");
    return reason;
}

void PollWatcher::lineChanged(bool up, const QString &bareReason)
{
    const QString reason = withRival(up, bareReason);
    bool again = false;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        again = wasUp_;
        wasUp_ = wasUp_ || up;
        lineError_ = up ? QString() : reason;
    }
    if (!up && !again)
        quitEventLoop();
    else if (again && verbose_)
        printEvent(up ? QStringLiteral("the line is up again")
                      : QStringLiteral("the line is down: %1").arg(reason));
}

void PollWatcher::attemptEnded(const Attempt &attempt)
{
    results_.attemptEnded(attempt);
    lastEnd_ = attempt.end;
    lastResult_ = attempt.resultCode;
    const std::lock_guard<std::mutex> lock(mutex_);
    counter_.attemptEnded(attempt);
    isProved_ = isProved_ && !(attempt.isSuccess() && attempt.unproven);
    endIfDone();
}

void PollWatcher::proofEnded()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    isProved_ = true;
    endIfDone();
}

// The readings of the last scan count once they are proved.
void PollWatcher::endIfDone()
{
    if (lastScan_ == 0 || counter_.scans() < lastScan_ || !isProved_)
        return;
    quitEventLoop();
    if (lastScanDone)
        lastScanDone();
}

void PollWatcher::stationDoubtful(int station)
{
    if (verbose_)
        printEvent(
            QStringLiteral("station %1: replies do not begin with ACK and its number, or hold "
                           "no digits; their values are doubtful")
                .arg(station));
}

void PollWatcher::alarmChanged(const AlarmEvent &event)
{
    printEvent(alarms_.eventText(event));
}

void PollWatcher::classPaceChanged(const ClassPace &pace)
{
    if (verbose_)
        printEvent(pace.text());
}

void PollWatcher::outOfStep()
{
    const int times = outOfStep_.happened(monotonicNow_ns());
    if (!verbose_ || times == 0)
        return;
    const QString count =
        times > 1 ? QStringLiteral(" (%1 times since this was told last)").arg(times) : QString();
    printEvent(QStringLiteral("bytes came that nobody had asked for; values since the last check "
                              "are suspect until they are read again") +
               count);
}

} // namespace kvt
