// What parts the fields of a CSV text: spreadsheets differ with the country.
#ifndef KVT_TAGS_CSV_DIALECT_H
#define KVT_TAGS_CSV_DIALECT_H

#include <QByteArray>

namespace kvt
{

/// Returns what parts the fields of a text, ',', ';' or a tab. A first line "sep=;" decides; it is
/// taken out of `*text` up to its end, so that lines keep their numbers. Else it is what parts the
/// header line, the first that is neither without text nor a comment, into titles one of which is
/// `title`, in any case; a comma when nothing does.
char takeSeparator(QByteArray *text, const QByteArray &title);

/// Returns what parts a header line into titles one of which is `title`, in any case; NUL when
/// nothing does.
char separatorOf(const QByteArray &header, const QByteArray &title);

} // namespace kvt

#endif
