// How the latest reading of each tag ended.
#ifndef KVT_APPS_KVT_TAG_RESULTS_H
#define KVT_APPS_KVT_TAG_RESULTS_H

#include "host/exchange_observer.h"
#include "host/tag_index.h"

#include <QStringList>

#include <mutex>

namespace kvt
{

/// Follows the attempts of a host. Any thread.
class TagResults
{
public:
    explicit TagResults(const QVector<Tag> &tags);

    /// An attempt has ended.
    void attemptEnded(const Attempt &attempt);

    /// The outcome for each tag, in words; empty while there is none.
    QStringList texts() const;

private:
    struct Result {
        AttemptEnd end = AttemptEnd::NoReply;
        int code = 0; // 0: none yet
    };

    TagIndex index_;
    mutable std::mutex mutex_;
    QVector<Result> results_; // by cell
    int tags_;
};

} // namespace kvt

#endif
