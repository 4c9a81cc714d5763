#include "apps/kvt/poll_watcher.h"

#include "apps/kvt/console.h"
#include "apps/kvt/outcome_text.h"

#include <QCoreApplication>

namespace kvt
{

namespace
{

void quitEventLoop()
{
    QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                              Qt::QueuedConnection);
}

} // namespace

PollWatcher::PollWatcher(const QVector<Tag> &tags, int scans, bool verbose)
    : results_(tags), lastScan_(scans), verbose_(verbose), counter_(TagIndex(tags))
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

void PollWatcher::lineChanged(bool up, const QString &reason)
{
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
    const int before = counter_.scans();
    counter_.attemptEnded(attempt);
    if (counter_.scans() != before && counter_.scans() == lastScan_)
        quitEventLoop();
}

} // namespace kvt
