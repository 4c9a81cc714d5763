// Which addresses a value takes that has several elements.
#ifndef KVT_TAGS_TAG_SPAN_H
#define KVT_TAGS_TAG_SPAN_H

#include "tags/tag_address.h"

#include <QStringList>
#include <QVector>

namespace kvt
{

/// The elements of a value, at rising addresses.
struct TagSpan {
    QVector<TagAddress> addresses; ///< at least one
    QStringList texts;             ///< the same as address texts; the first as the tag has it
    QString writeFault; ///< why the value cannot be written though it can be read; or empty
};

/// Returns the text of an address, without zeros in front.
QString addressText(Area area, const TagAddress &address);

/// Finds the elements of a value of a form that fits `area`, which begins at the address `text`.
/// In X and D each has the driver's number of the one before plus 1: 5.2.1 is followed by 5.3.0,
/// 5.15.1 by 6.0.0; an address whose c is an address byte (2 and above) by the next address byte.
/// In C they are neighbours in one block. Returns an empty text and fills `*span`, or says what is
/// wrong: with the address, behind the end of its block or of its area, or with an element whose
/// read would set off a command.
QString parseTagSpan(Area area, const QString &text, const ValueForm &form, TagSpan *span);

} // namespace kvt

#endif
