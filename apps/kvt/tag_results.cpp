#include "apps/kvt/tag_results.h"

#include "apps/kvt/outcome_text.h"

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

QStringList TagResults::texts() const
{
    QStringList texts;
    const std::lock_guard<std::mutex> lock(mutex_);
    for (int tag = 0; tag < tags_; ++tag) {
        const Result &result = results_.at(index_.cellOf(tag));
        texts.append(result.code == 0 ? QString() : outcomeText(result.end, result.code));
    }
    return texts;
}

} // namespace kvt
