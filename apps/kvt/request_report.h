// What is said about a request that has ended.
#ifndef KVT_APPS_KVT_REQUEST_REPORT_H
#define KVT_APPS_KVT_REQUEST_REPORT_H

#include "apps/kvt/enquiry.h"

namespace kvt
{

/// Returns how a request ended in the words of `outcomeWord`, or "interrupted", "line lost" or "not
/// sent".
QString requestWord(const RequestOutcome &outcome);

/// Returns the message for a request that has failed.
QString failureText(const Tag &tag, const RequestOutcome &outcome);

/// Prints a message if the reply that was taken is probably another station's.
void reportDoubt(const Tag &tag, const RequestOutcome &outcome);

/// Returns the time of a station's reply, "3.4 ms", or "after 2 attempts": whatever came then may
/// answer the first of them, and its time says nothing.
QString replyText(const RequestOutcome &outcome);

} // namespace kvt

#endif
