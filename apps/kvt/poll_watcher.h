// Watches a host that polls, for kvt poll.
#ifndef KVT_APPS_KVT_POLL_WATCHER_H
#define KVT_APPS_KVT_POLL_WATCHER_H

#include "apps/kvt/alarm_texts.h"
#include "apps/kvt/common/repeated_news.h"
#include "apps/kvt/line_findings.h"
#include "apps/kvt/scan_counter.h"
#include "apps/kvt/tag_results.h"
#include "host/host_events.h"

#include <QSet>

#include <functional>
#include <mutex>

namespace kvt
{

/// Keeps what the display needs and quits the event loop when enough scans are done or the line
/// cannot be opened at all.
class PollWatcher : public HostEvents
{
public:
    /// Ends after `scans` scans; 0: never. Prints each change of an alarm, and what happens to
    /// line and stations if `verbose`.
    /// `alarms` are those of the tags and outlive the object.
    PollWatcher(const QVector<Tag> &tags, const AlarmTexts &alarms, int scans, bool verbose,
                bool isTcp);

    /// To be called, on the polling thread, when the last scan is over; set it before the start.
    std::function<void()> lastScanDone;

    // Any thread.
    QVector<TagResult> results() const { return results_.results(); }
    int scans() const;
    QString lineError() const; ///< why the line is down; empty while it is not
    bool isUp() const;
    QSet<int> stationsOff() const; ///< those that are polled less often because they fail
    bool wasUp() const;            ///< the line could be opened

    void stationSwitched(int station, bool on) override;
    void lineChanged(bool up, const QString &reason) override;
    void attemptEnded(const Attempt &attempt) override;
    void stationDoubtful(int station) override;
    void outOfStep() override;
    void alarmChanged(const AlarmEvent &event) override;
    void classPaceChanged(const ClassPace &pace) override;
    void proofEnded() override;

private:
    QString withRival(bool up, const QString &reason);
    void endIfDone();

    TagResults results_;
    const AlarmTexts &alarms_;
    int lastScan_;
    bool verbose_;
    bool isTcp_;
    RivalWatch rival_; // polling thread
    RepeatedNews outOfStep_;
    AttemptEnd lastEnd_ = AttemptEnd::Replied; // of the latest attempt; polling thread
    int lastResult_ = 0;

    mutable std::mutex mutex_; // the members below
    ScanCounter counter_;
    QSet<int> stationsOff_;
    bool isProved_ = true; // no reading waits for a proof
    QString lineError_;
    bool wasUp_ = false;
};

} // namespace kvt

#endif
