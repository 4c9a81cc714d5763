// Points that may part thousands: "1.000" is a thousand in a list of one country and one in that
// of another.
#ifndef KVT_TAGS_THOUSANDS_POINT_H
#define KVT_TAGS_THOUSANDS_POINT_H

#include "tags/csv_rows.h"

namespace kvt
{

/// True when a field of the rows is a number with a decimal comma.
bool haveDecimalComma(const QVector<CsvRow> &rows);

/// Says how a number like "1.500", perhaps with a unit behind it, may be understood; empty for one
/// that has no two readings. `hasCommas`: other numbers of the list have decimal commas.
QString thousandsDoubt(const QString &text, bool hasCommas);

} // namespace kvt

#endif
