// What is said about a request that has ended.
#ifndef KVT_APPS_KVT_REQUEST_REPORT_H
#define KVT_APPS_KVT_REQUEST_REPORT_H

#include "apps/kvt/enquiry.h"

#include <QJsonObject>

namespace kvt
{

/// Returns what was asked for and how it ended, without any value.
QJsonObject outcomeToJson(const Tag &tag, const RequestOutcome &outcome);

/// Returns the message for a request that has failed.
QString failureText(const Tag &tag, const RequestOutcome &outcome);

} // namespace kvt

#endif
