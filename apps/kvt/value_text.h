// Values as text.
#ifndef KVT_APPS_KVT_VALUE_TEXT_H
#define KVT_APPS_KVT_VALUE_TEXT_H

#include "apps/kvt/tag_results.h"
#include "host/value_table.h"
#include "tags/tag.h"

#include <QString>

namespace kvt
{

/// Returns the text of a value as the tag's type shows it.
QString rawText(const Tag &tag, quint16 raw);

/// Returns the text of a tag's value; "-" while there is none.
QString valueText(const Tag &tag, const TagValue &value);

/// Returns how the latest reading of a tag ended, with its code: "no reply (41)"; empty while there
/// is none. A station that is off is said to be: "off: no reply (41)", or "off" if the tag itself
/// has not failed.
QString resultText(const TagResult &result, bool stationIsOff);

/// Returns a value as a number, with its sign if the tag's type has one.
int valueNumber(const Tag &tag, quint16 raw);

/// Returns "D 5.2.1 at station 1", with the tag's name if it has one: "level (D 5.2.1 at station
/// 1)".
QString placeText(const Tag &tag);

} // namespace kvt

#endif
