// Tag lists: CSV files as engineers keep them in a spreadsheet.
//
// The header line names the columns name, area, address, station and type, in any order and any
// case, and any of description, order, torn, write_order, scale, offset, raw_low, raw_high, low,
// high, unit, decimals, min, max, labels, bits, interval, deadband, alarm, lolo, lo, hi, hihi,
// hysteresis, on_delay, off_delay, priority and alarm_text; others are passed over with a warning.
// "order=cdab" in the header is the order of all tags that name none. Fields are parted by commas,
// semicolons or tabs, as the header line or a line "sep=;" ahead of it shows; where it is not by
// commas, numbers may have a decimal comma. Text is UTF-8 with or without a byte order mark, lines
// end in LF or CRLF, fields may be quoted, and lines without any text or with a # in front are
// skipped. A file has at most 32 MiB and a row at most 256 fields; names are without control
// characters.
#ifndef KVT_TAGS_TAG_LIST_H
#define KVT_TAGS_TAG_LIST_H

#include "tags/tag.h"

#include <QByteArray>
#include <QVector>

namespace kvt
{

/// What is wrong with a tag list, and where.
struct TagError {
    int line = 0;       ///< line of the file, from 1; 0 when the file as a whole is meant
    int column = 0;     ///< number of the field in its line, from 1; 0 when the line is meant
    QString columnName; ///< header name of that field; may be empty
    QString text;       ///< what is wrong
};

/// A tag list as read: the good tags in the order of the file, and everything wrong with the rest.
/// A list with errors must not be used.
struct TagListResult {
    QVector<Tag> tags;
    QVector<TagError> errors;   ///< in the order of the file, the first 100; empty when all is well
    QVector<TagError> warnings; ///< what is doubtful; the list can be used
    QVector<int> lines;         ///< of each tag in the file, from 1
    int addressColumn = 0;      ///< number of the field that has the address, from 1
};

/// Reads the tag list in the file `path`. A file that cannot be read is an error of its own.
TagListResult loadTagList(const QString &path);

/// Reads a tag list from the bytes of a file.
TagListResult parseTagList(const QByteArray &csv);

/// What keeps the tags of a list without errors from being polled together: the driver reads all
/// of area C with one second part of the address.
QVector<TagError> pollErrors(const TagListResult &list);

/// Returns the bytes of a tag list file, lines ended by LF. Reading them gives equal tags back.
QByteArray formatTagList(const QVector<Tag> &tags);

/// Writes a tag list to the file `path`, which is replaced whole or not at all. Returns false and
/// sets `*error` (if not null) when it cannot be written.
bool saveTagList(const QString &path, const QVector<Tag> &tags, QString *error);

/// Returns `file:line: column 3 "address": text`, without the parts that the error does not have.
QString formatTagError(const QString &file, const TagError &error);

} // namespace kvt

#endif
