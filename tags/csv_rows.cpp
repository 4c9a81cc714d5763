#include "tags/csv_rows.h"

#include <csv.h>

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int MOST_FIELDS = 256; // of a row

struct Reader {
    csv_parser parser = {};
    CsvRows result;
    CsvRow row;
    bool rowEnded = false;
    bool tooManyFields = false;
};

void onField(void *data, size_t size, void *reader)
{
    auto *r = static_cast<Reader *>(reader);
    if (r->row.fields.size() < MOST_FIELDS)
        r->row.fields.append(QByteArray(static_cast<const char *>(data), static_cast<int>(size)));
    else
        r->tooManyFields = true;
}

/// A spreadsheet quotes a comment with what parts the fields in it.
bool isComment(const CsvRow &row)
{
    return row.fields.first().trimmed().startsWith('#') &&
           std::all_of(row.fields.cbegin() + 1, row.fields.cend(),
                       [](const QByteArray &field) { return field.isEmpty(); });
}

void onRow(int, void *reader)
{
    auto *r = static_cast<Reader *>(reader);
    r->rowEnded = true;
    if (r->tooManyFields)
        return;
    const bool empty = std::all_of(r->row.fields.cbegin(), r->row.fields.cend(),
                                   [](const QByteArray &field) { return field.isEmpty(); });
    if (!empty && !isComment(r->row))
        r->result.rows.append(r->row);
    r->row.fields.clear();
}

/// Returns the position after the line that begins at `from`, its end included.
int lineEnd(const QByteArray &text, int from)
{
    for (int i = from; i < text.size(); ++i) {
        if (text[i] == '\n')
            return i + 1;
        if (text[i] == '\r')
            return i + 1 < text.size() && text[i + 1] == '\n' ? i + 2 : i + 1;
    }
    return text.size();
}

void fail(Reader *reader, const QString &text)
{
    reader->result.errorLine = reader->row.line;
    reader->result.errorColumn = reader->row.fields.size() + 1;
    reader->result.errorText = text;
}

// The parser does not count lines, so it is fed one at a time. A row stays open over a line end
// only inside quotes.
bool feedLines(Reader *reader, const QByteArray &text)
{
    bool betweenRows = true;
    int line = 1;
    for (int from = 0; from < text.size(); ++line) {
        const int to = lineEnd(text, from);
        const QByteArray bytes = text.mid(from, to - from);
        from = to;
        if (betweenRows && bytes.trimmed().startsWith('#'))
            continue;
        if (betweenRows)
            reader->row.line = line;
        reader->rowEnded = false;
        const auto size = static_cast<size_t>(bytes.size());
        if (csv_parse(&reader->parser, bytes.constData(), size, onField, onRow, reader) != size) {
            fail(reader, QStringLiteral("a quote stands where none may be"));
            return false;
        }
        if (reader->tooManyFields) {
            fail(reader, QStringLiteral("a row may have %1 fields").arg(MOST_FIELDS));
            return false;
        }
        betweenRows = reader->rowEnded || (betweenRows && bytes.trimmed().isEmpty());
    }
    return true;
}

} // namespace

CsvRows splitCsv(const QByteArray &text, char separator)
{
    Reader reader;
    if (csv_init(&reader.parser, CSV_STRICT | CSV_STRICT_FINI) != 0) {
        fail(&reader, QStringLiteral("the CSV parser cannot be set up"));
        return reader.result;
    }
    csv_set_delim(&reader.parser, static_cast<unsigned char>(separator));
    if (feedLines(&reader, text) && csv_fini(&reader.parser, onField, onRow, &reader) != 0)
        fail(&reader, QStringLiteral("a quoted field is not closed"));
    csv_free(&reader.parser);
    return reader.result;
}

void appendCsvField(QByteArray *row, const QByteArray &field)
{
    const bool plain = field.trimmed() == field && !field.startsWith('#') &&
                       field.indexOf(',') < 0 && field.indexOf('"') < 0 &&
                       field.indexOf('\n') < 0 && field.indexOf('\r') < 0;
    if (plain) {
        row->append(field);
        return;
    }
    QByteArray quoted = field;
    row->append('"').append(quoted.replace('"', "\"\"")).append('"');
}

} // namespace kvt
