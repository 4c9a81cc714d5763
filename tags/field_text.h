// Fields of a CSV row as text.
#ifndef KVT_TAGS_FIELD_TEXT_H
#define KVT_TAGS_FIELD_TEXT_H

#include <QByteArray>
#include <QString>

namespace kvt
{

/// Returns the text of UTF-8 bytes; false in `*good`, not null, when they are none.
QString decodedField(const QByteArray &bytes, bool *good);

/// Takes a decimal comma for a point: "21,4" is "21.4". Anything else stays as it is.
QString withPoint(const QString &text);

/// Returns "comma", "semicolon" or "tab".
QString separatorName(char separator);

} // namespace kvt

#endif
