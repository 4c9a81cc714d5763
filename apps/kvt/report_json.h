// What JSON says of a tag and of a request, the same in every command.
#ifndef KVT_APPS_KVT_REPORT_JSON_H
#define KVT_APPS_KVT_REPORT_JSON_H

#include "apps/kvt/enquiry.h"
#include "apps/kvt/tag_results.h"
#include "host/value_table.h"

#include <QJsonObject>

namespace kvt
{

/// Returns a polled tag: what names it, how far its value can be trusted at
/// `now_ns`, and how its latest reading ended. The value itself is ValueTexts' to add.
QJsonObject polledTagToJson(const Tag &tag, const TagValue &value, const TagResult &result,
                            qint64 now_ns);

/// Returns a request for a tag, of any kind: what was asked for and how it ended.
QJsonObject requestToJson(const Tag &tag, const RequestOutcome &outcome);

/// The same for a read, with the value if there is one.
QJsonObject readToJson(const Tag &tag, const RequestOutcome &outcome);

/// The same for a write. `value` is what was to be written; a command has none.
QJsonObject writeToJson(const Tag &tag, const TagValue &value, const RequestOutcome &outcome);

/// Returns how many requests were asked, and how they ended. `complete` is false if Ctrl-C or the
/// line cut the command short.
QJsonObject requestSummary(const QVector<RequestOutcome> &outcomes, bool complete);

} // namespace kvt

#endif
