// What a list asks about a value that its type and scaling never bring about.
#ifndef KVT_TAGS_VALUE_REACH_H
#define KVT_TAGS_VALUE_REACH_H

#include "tags/tag.h"
#include "tags/value_converter.h"

namespace kvt
{

/// Warns of limits that no value is beyond, or that all are, and of a deadband of that width that
/// no change of the value leaves. `converter` is the tag's own. Floats have infinities, which reach
/// everything; texts that are no numbers are passed over. Appends to `*problems`, not null.
void warnOfReach(const Tag &tag, const ValueConverter &converter, std::optional<double> deadband,
                 QVector<WatchProblem> *problems);

} // namespace kvt

#endif
