#include "host/class_pace.h"

#include "host/host_time.h"
#include "tags/duration_text.h"

#include <algorithm>
#include <cmath>

namespace kvt
{

namespace
{

constexpr double LATE = 1.1;
constexpr double ON_TIME = 1.05;
constexpr double WORTH_TELLING = 0.25;
constexpr qint64 SHORTEST_WHILE_ns = seconds(1);

} // namespace

ClassPace::ClassPace(qint64 interval_ns, int entries) : interval_ns_(interval_ns), entries_(entries)
{
}

bool ClassPace::read(qint64 since_ns, qint64 now_ns)
{
    ++count_;
    sum_ns_ += static_cast<double>(since_ns);
    longest_ns_ = std::max(longest_ns_, since_ns);
    if (whileCount_ == 0)
        whileBegan_ns_ = now_ns;
    ++whileCount_;
    whileSum_ns_ += static_cast<double>(since_ns);
    const bool isOver = whileCount_ >= entries_ &&
                        now_ns - whileBegan_ns_ >= std::max(interval_ns_, SHORTEST_WHILE_ns);
    return isOver && judge();
}

/// The while is over.
bool ClassPace::judge()
{
    latest_ns_ = static_cast<qint64>(whileSum_ns_ / whileCount_);
    whileCount_ = 0;
    whileSum_ns_ = 0;
    const double stretch = static_cast<double>(latest_ns_) / static_cast<double>(interval_ns_);
    const bool wasLate = isLate_;
    isLate_ = stretch > (wasLate ? ON_TIME : LATE);
    const bool isOther = isLate_ && std::abs(static_cast<double>(latest_ns_ - told_ns_)) >
                                        WORTH_TELLING * static_cast<double>(told_ns_);
    if (isLate_ == wasLate && !isOther)
        return false;
    told_ns_ = latest_ns_;
    return true;
}

qint64 ClassPace::mean_ns() const
{
    return count_ == 0 ? 0 : static_cast<qint64>(sum_ns_ / static_cast<double>(count_));
}

QString ClassPace::text() const
{
    const qint64 unit_ns = latest_ns_ < seconds(1) ? milliseconds(1) : milliseconds(10);
    const qint64 rounded_ns = (latest_ns_ + unit_ns / 2) / unit_ns * unit_ns;
    return QStringLiteral("%1 class: is %2")
        .arg(durationText(interval_ns_),
             isLate_ ? durationText(rounded_ns) : QStringLiteral("on time"));
}

} // namespace kvt
