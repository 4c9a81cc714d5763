#include "apps/kvt/scan_counter.h"

namespace kvt
{

ScanCounter::ScanCounter(const TagIndex &index)
{
    QSet<ReadKey> requests;
    for (int cell = 0; cell < index.cells().size(); ++cell)
        requests.insert(index.readKeyOf(cell));
    requests_ = requests.size();
}

void ScanCounter::attemptEnded(const Attempt &attempt)
{
    const Request &request = *attempt.request;
    if (!attempt.isFinal() || request.kind != RequestKind::CyclicRead)
        return;
    const ReadKey key{request.station, request.area, request.address};
    if (seen_.contains(key))
        endScan();
    seen_.insert(key);
    if (seen_.size() == requests_)
        endScan();
}

void ScanCounter::endScan()
{
    seen_.clear();
    ++scans_;
}

} // namespace kvt
