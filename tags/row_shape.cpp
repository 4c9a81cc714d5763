#include "tags/row_shape.h"

#include "tags/field_text.h"

#include <QRegularExpression>

namespace kvt
{

namespace
{

bool looksLikeLabel(const QByteArray &field)
{
    static const QRegularExpression label(
        QStringLiteral("\\A\\s*(-?[0-9]+|0[xX][0-9A-Fa-f]+)\\s*="));
    return label.match(QString::fromUtf8(field)).hasMatch();
}

/// True for columns in which "1=on" may stand behind labels, and where the header has none.
bool takesLabels(int column)
{
    return column < 0 || column == NAME || column == DESCRIPTION ||
           column == columnOf(WatchColumn::AlarmText);
}

/// "0=off;1=on" is two fields where semicolons part them, and the first has none in it.
std::optional<TagError> openLabels(const CsvRow &row, const TagHeader &header)
{
    for (const MeaningColumn texts : {MeaningColumn::Labels, MeaningColumn::Bits}) {
        const int field = header.fieldOf[static_cast<size_t>(columnOf(texts))];
        if (field < 0 || field + 1 >= row.fields.size() || row.fields[field].contains(';') ||
            !looksLikeLabel(row.fields[field]) || !looksLikeLabel(row.fields[field + 1]))
            continue;
        const int column = header.columnAt(field + 1);
        if (!takesLabels(column))
            return TagError{row.line, field + 2, tagColumnName(column),
                            QStringLiteral("belongs to the %1: a text with a semicolon must be "
                                           "quoted")
                                .arg(meaningColumnName(texts))};
    }
    return std::nullopt;
}

std::optional<TagError> surplus(const CsvRow &row, const TagHeader &header, char separator)
{
    for (int i = header.fields; i < row.fields.size(); ++i)
        if (!row.fields[i].isEmpty())
            return TagError{row.line, i + 1, QString(),
                            QStringLiteral("the header has no such column; a text with a %1 must "
                                           "be quoted")
                                .arg(separatorName(separator))};
    return std::nullopt;
}

std::optional<TagError> missing(const CsvRow &row, const TagHeader &header)
{
    for (int column = 0; column < DESCRIPTION; ++column) {
        const int field = header.fieldOf[static_cast<size_t>(column)];
        if (field >= row.fields.size())
            return TagError{
                row.line, field + 1, tagColumnName(column),
                QStringLiteral("is missing: the row has only %1 of the header's %2 "
                               "fields")
                    .arg(QString::number(row.fields.size()), QString::number(header.fields))};
    }
    return std::nullopt;
}

} // namespace

std::optional<TagError> shapeFault(const CsvRow &row, const TagHeader &header, char separator)
{
    std::optional<TagError> fault;
    if (separator == ';')
        fault = openLabels(row, header);
    if (!fault)
        fault = surplus(row, header, separator);
    return fault ? fault : missing(row, header);
}

} // namespace kvt
