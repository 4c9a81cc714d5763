// Texts as the bytes of a value.
#ifndef KVT_TAGS_STRING_VALUE_H
#define KVT_TAGS_STRING_VALUE_H

#include "tags/value_type.h"

#include <QByteArray>

#include <optional>

namespace kvt
{

/// Returns the text that the bytes of a string stand for, up to the first 0; none when they are not
/// of its encoding. What follows the first 0 is not in the text, and is 0 when that is written.
std::optional<QString> stringText(const ValueForm &form, const QByteArray &bytes);

/// The bytes of an entered text, or what is wrong with it.
struct EnteredString {
    QByteArray bytes; ///< as many as the form has, filled up with 0
    QString error;    ///< empty when all is well
};

/// Encodes a text as it stands, blanks included.
EnteredString enterString(const ValueForm &form, const QString &text);

} // namespace kvt

#endif
