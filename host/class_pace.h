// How often the requests of a scan class are really read.
#ifndef KVT_HOST_CLASS_PACE_H
#define KVT_HOST_CLASS_PACE_H

#include <QString>

namespace kvt
{

/// Measures one class and tells when it is late. It is once its readings come at more than 1.1
/// times its interval on the average of a while, until that is below 1.05 times; a change by a
/// quarter is told in between. Does no locking; nothing is allocated.
class ClassPace
{
public:
    ClassPace() = default;
    /// `entries` is the number of its requests.
    ClassPace(qint64 interval_ns, int entries);

    /// One of the requests was answered at `now_ns`, `since_ns` after its last answer. Returns true
    /// when there is news: `isLate` or `latest_ns` is to be told.
    bool read(qint64 since_ns, qint64 now_ns);

    qint64 interval_ns() const { return interval_ns_; }
    int entries() const { return entries_; }
    bool isLate() const { return isLate_; }

    /// What was measured in the last while; 0 before there was one.
    qint64 latest_ns() const { return latest_ns_; }

    /// Of all readings since the start: their number, the mean time from one to the next of the
    /// same request, and the longest; 0 while there is none.
    quint64 count() const { return count_; }
    qint64 mean_ns() const;
    qint64 longest_ns() const { return longest_ns_; }

    /// Returns "100 ms class: is 140 ms", or "100 ms class: is on time".
    QString text() const;

private:
    bool judge();

    qint64 interval_ns_ = 0;
    int entries_ = 0;
    quint64 count_ = 0;
    double sum_ns_ = 0;
    qint64 longest_ns_ = 0;
    qint64 latest_ns_ = 0;
    qint64 told_ns_ = 0; // what was told last while late
    bool isLate_ = false;
    int whileCount_ = 0; // of the while that is not over
    double whileSum_ns_ = 0;
    qint64 whileBegan_ns_ = 0;
};

} // namespace kvt

#endif
