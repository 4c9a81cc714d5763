// The words of a trace: what its recorder writes and its reader knows.
#ifndef KVT_HOST_TRACE_FORMAT_H
#define KVT_HOST_TRACE_FORMAT_H

#include "driver/records.h"

#include <QByteArray>
#include <QString>

namespace kvt
{

/// Names of the records of a trace, the first word behind the time stamp.
namespace trace
{
constexpr char HEAD[] = "kvt-trace 1";
constexpr char INFO[] = "info";
constexpr char LOCAL[] = "local";
constexpr char VARIABLE[] = "var";
constexpr char LIST[] = "list";
constexpr char STATION[] = "station";
constexpr char WRITE[] = "write";
constexpr char ONCE[] = "once";
constexpr char NOTHING[] = "nothing";
constexpr char ASK[] = "ask";
constexpr char SENT[] = "tx";
constexpr char RECEIVED[] = "rx";
constexpr char DROPPED[] = "drop";
constexpr char JUDGED[] = "judge";
constexpr char VALUE[] = "value";
constexpr char ENDED[] = "end";
constexpr char LINE[] = "line";
constexpr char CONTINUED[] = "continued";
constexpr char LOST[] = "lost";
constexpr char NO_BYTES[] = "-";
} // namespace trace

/// Hexadecimal digits, upper case, two for each byte; "-" for none.
QByteArray traceHex(const QByteArray &bytes);

/// A text as one word: percent-encoded where it must be; "-" when empty.
QByteArray traceText(const QString &text);

/// Words of ComInfo that a host sets and the driver reads, in the trace by their names.
struct TraceInfoWord {
    const char *name;
    qint32 ComInfo::*word;
};
constexpr TraceInfoWord TRACE_INFO_WORDS[] = {
    {"defaultStation", &ComInfo::defaultStation}, {"retryLimit", &ComInfo::retryLimit},
    {"retryCount", &ComInfo::retryCount},         {"purgeByStation", &ComInfo::purgeByStation},
    {"remoteMode", &ComInfo::remoteMode},         {"localPlcNo", &ComInfo::localPlcNo},
    {"hostWriteMode", &ComInfo::hostWriteMode},   {"portTag", &ComInfo::portTag},
};

} // namespace kvt

#endif
