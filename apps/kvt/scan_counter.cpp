#include "apps/kvt/scan_counter.h"

#include <QSet>

namespace kvt
{

ScanCounter::ScanCounter(const QVector<Tag> &tags) : classes_(tags, TagIndex(tags))
{
    const TagIndex index(tags);
    QSet<ReadKey> requests;
    for (int cell = 0; cell < index.cells().size(); ++cell)
        requests.insert(index.readKeyOf(cell));
    requests_ = requests.size();
}

void ScanCounter::attemptEnded(const Attempt &attempt)
{
    const Request &request = *attempt.request;
    const bool isCounted =
        request.kind == RequestKind::CyclicRead || request.kind == RequestKind::ClassRead;
    if (!attempt.isFinal() || !isCounted)
        return;
    const ReadKey key{request.station, request.area, request.address};
    if (seen_.value(key) == turnsOf(key))
        endScan();
    ++seen_[key];
    if (seen_.size() == requests_)
        endScan();
}

/// Returns how often a request can have its turn while those of the longest interval have it once.
int ScanCounter::turnsOf(const ReadKey &key) const
{
    const int entry = classes_.entryOf(key);
    if (entry < 0)
        return 1;
    const int readClass = classes_.entries().at(entry).readClass;
    const qint64 turns =
        classes_.classes().last().interval_ns / classes_.classes().at(readClass).interval_ns + 1;
    return static_cast<int>(turns);
}

void ScanCounter::endScan()
{
    seen_.clear();
    ++scans_;
}

} // namespace kvt
