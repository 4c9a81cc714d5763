#include "apps/kvt/common/repeated_news.h"

#include <utility>

namespace kvt
{

namespace
{

constexpr qint64 PAUSE_ns = Q_INT64_C(60000000000);

} // namespace

int RepeatedNews::happened(qint64 now_ns)
{
    ++times_;
    if (wasTold_ && now_ns - toldAt_ns_ < PAUSE_ns)
        return 0;
    wasTold_ = true;
    toldAt_ns_ = now_ns;
    return std::exchange(times_, 0);
}

} // namespace kvt
