// Rows of a tag list whose fields are not where the header has them.
#ifndef KVT_TAGS_ROW_SHAPE_H
#define KVT_TAGS_ROW_SHAPE_H

#include "tags/tag_header.h"

#include <optional>

namespace kvt
{

/// Says what is wrong with the number of a row's fields, parted by `separator`: it ends ahead of a
/// column that every list has, goes on behind the header's last one, or has labels without quotes.
/// What else might be said of such a row is guesswork. None when nothing is wrong.
std::optional<TagError> shapeFault(const CsvRow &row, const TagHeader &header, char separator);

} // namespace kvt

#endif
