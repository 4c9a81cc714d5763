// The second address part of area C, which all tags that are polled together share.
#ifndef KVT_TAGS_BLOCK_DIGIT_H
#define KVT_TAGS_BLOCK_DIGIT_H

#include "tags/tag.h"

#include <QVector>

#include <optional>

namespace kvt
{

/// Returns the second address part of a tag of area C, 0 to 15; none for a tag of another area or
/// with a bad address.
std::optional<int> blockDigit(const Tag &tag);

/// A tag whose block digit is not that of the first tag that has one.
struct BlockDigitClash {
    int index = 0; ///< of the tag
    QString text;  ///< what is wrong with its address
};

/// Returns the clashes in the order of the tags: the driver reads all of area C with one digit.
QVector<BlockDigitClash> blockDigitClashes(const QVector<Tag> &tags);

} // namespace kvt

#endif
