// Rows of a CSV text, with the line at which each begins.
#ifndef KVT_TAGS_CSV_ROWS_H
#define KVT_TAGS_CSV_ROWS_H

#include <QByteArray>
#include <QString>
#include <QVector>

namespace kvt
{

/// One row: its fields without quotes and without the blanks around unquoted ones.
struct CsvRow {
    int line = 0; ///< line of the text at which the row begins, from 1
    QVector<QByteArray> fields;
};

/// The rows up to the first malformed one. Lines that are blank, hold only empty fields or begin
/// with `#` are left out, and so are rows whose only text is a quoted field that begins with `#`.
struct CsvRows {
    QVector<CsvRow> rows;
    int errorLine = 0;   ///< line of the malformed row; 0 when there is none
    int errorColumn = 0; ///< number of its field, from 1
    QString errorText;   ///< what is wrong with it
};

/// Splits a CSV text: fields parted by `separator`, quoted by `"`, rows ended by LF, CR or both. A
/// row of more than 256 fields counts as malformed.
CsvRows splitCsv(const QByteArray &text, char separator = ',');

/// Appends one field to a row under construction, parted by commas, quoted where it must be.
void appendCsvField(QByteArray *row, const QByteArray &field);

} // namespace kvt

#endif
