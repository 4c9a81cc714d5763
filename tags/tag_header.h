// The header line of a tag list.
#ifndef KVT_TAGS_TAG_HEADER_H
#define KVT_TAGS_TAG_HEADER_H

#include "tags/csv_rows.h"
#include "tags/tag_columns.h"
#include "tags/tag_list.h"
#include "tags/word_order.h"

#include <array>

namespace kvt
{

/// What the first row of a list says about the others.
struct TagHeader {
    TagHeader() { fieldOf.fill(-1); }

    /// Returns the column of a field, by its index in a row; -1 when there is none.
    int columnAt(int field) const;

    std::array<int, COLUMN_COUNT> fieldOf = {}; ///< index in a row; -1: no such column
    int fields = 0;                             ///< of the row itself
    WordOrder order = WordOrder::Abcd;          ///< of tags that name none
};

/// Reads the row that names the columns, whose fields were parted by `separator`. What is wrong
/// is appended to the errors of `*result`, not null, what is doubtful to its warnings.
TagHeader readTagHeader(const CsvRow &row, char separator, TagListResult *result);

} // namespace kvt

#endif
