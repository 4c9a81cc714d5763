#include "apps/kvt/tag_results.h"

namespace kvt
{

TagResults::TagResults(const QVector<Tag> &tags)
    : index_(tags), results_(index_.cells().size()), tags_(tags.size())
{
}

void TagResults::attemptEnded(const Attempt &attempt)
{
    const Request &request = *attempt.request;
    if (!attempt.isFinal() || request.kind == RequestKind::Write)
        return;
    const QVector<int> cells = index_.cellsRead({request.station, request.area, request.address});
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const int cell : cells)
        results_[cell] = {attempt.end, attempt.resultCode};
}

/// Of several words the first that has not succeeded.
TagResult TagResults::resultOf(int tag) const
{
    for (const int cell : index_.cellsOf(tag))
        if (!isSuccessCode(results_.at(cell).code))
            return results_.at(cell);
    return results_.at(index_.cellOf(tag));
}

QVector<TagResult> TagResults::results() const
{
    QVector<TagResult> results;
    const std::lock_guard<std::mutex> lock(mutex_);
    for (int tag = 0; tag < tags_; ++tag)
        results.append(resultOf(tag));
    return results;
}

} // namespace kvt
