// Counts how often all tags have been read.
#ifndef KVT_APPS_KVT_SCAN_COUNTER_H
#define KVT_APPS_KVT_SCAN_COUNTER_H

#include "host/class_plan.h"
#include "host/exchange_observer.h"

namespace kvt
{

/// A scan is over when every request of the tags has had its turn, or one has it more often than
/// its interval lets it because the others belong to stations that are switched off. One thread.
class ScanCounter
{
public:
    explicit ScanCounter(const QVector<Tag> &tags);

    /// An attempt has ended.
    void attemptEnded(const Attempt &attempt);

    int scans() const { return scans_; }

private:
    void endScan();

    int turnsOf(const ReadKey &key) const;

    ClassPlan classes_;
    QHash<ReadKey, int> seen_; // how often
    int requests_;
    int scans_ = 0;
};

} // namespace kvt

#endif
