// Counts how often all tags have been read.
#ifndef KVT_APPS_KVT_SCAN_COUNTER_H
#define KVT_APPS_KVT_SCAN_COUNTER_H

#include "host/exchange_observer.h"
#include "host/tag_index.h"

#include <QSet>

namespace kvt
{

/// A scan is over when every request of the tags has had its turn, or one has it again because the
/// others belong to stations that are switched off. One thread.
class ScanCounter
{
public:
    explicit ScanCounter(const TagIndex &index);

    /// An attempt has ended.
    void attemptEnded(const Attempt &attempt);

    int scans() const { return scans_; }

private:
    void endScan();

    QSet<ReadKey> seen_;
    int requests_;
    int scans_ = 0;
};

} // namespace kvt

#endif
