// Counts in words.
#ifndef KVT_APPS_KVT_COMMON_COUNTED_H
#define KVT_APPS_KVT_COMMON_COUNTED_H

#include <QString>

namespace kvt
{

/// Returns a number with the words that go with it: "1 byte", "0 bytes".
QString counted(qint64 number, const char *one, const char *several);

} // namespace kvt

#endif
