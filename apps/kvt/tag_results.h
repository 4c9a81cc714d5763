// How the latest reading of each tag ended.
#ifndef KVT_APPS_KVT_TAG_RESULTS_H
#define KVT_APPS_KVT_TAG_RESULTS_H

#include "host/exchange_observer.h"
#include "host/tag_index.h"

#include <QVector>

#include <mutex>

namespace kvt
{

/// How a tag's latest reading ended.
struct TagResult {
    AttemptEnd end = AttemptEnd::NoReply;
    int code = 0; ///< the driver's result code; 0: there is none yet
};

/// Follows the attempts of a host. Any thread.
class TagResults
{
public:
    explicit TagResults(const QVector<Tag> &tags);

    /// An attempt has ended.
    void attemptEnded(const Attempt &attempt);

    /// The result of each tag.
    QVector<TagResult> results() const;

private:
    TagResult resultOf(int tag) const;

    TagIndex index_;
    mutable std::mutex mutex_;
    QVector<TagResult> results_; // by cell
    int tags_;
};

} // namespace kvt

#endif
