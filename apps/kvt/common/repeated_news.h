// How often something that happens again and again is told.
#ifndef KVT_APPS_KVT_COMMON_REPEATED_NEWS_H
#define KVT_APPS_KVT_COMMON_REPEATED_NEWS_H

#include <QtGlobal>

namespace kvt
{

/// What happens again and again, on a disturbed line for a whole night, is told at once and then
/// once a minute, so that it does not bury what else happens.
class RepeatedNews
{
public:
    /// It has happened. Returns how often since it was told last if it is to be told now, else 0.
    int happened(qint64 now_ns);

private:
    qint64 toldAt_ns_ = 0;
    bool wasTold_ = false;
    int times_ = 0;
};

} // namespace kvt

#endif
