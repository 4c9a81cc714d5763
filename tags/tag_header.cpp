#include "tags/tag_header.h"

#include "tags/csv_dialect.h"
#include "tags/field_text.h"

#include <algorithm>

namespace kvt
{

namespace
{

/// "order=cdab" names the order of all tags that have none of their own.
void readDefaultOrder(const CsvRow &row, int field, const QString &text, TagHeader *header,
                      TagListResult *result)
{
    const std::optional<WordOrder> order = parseWordOrder(text);
    if (order)
        header->order = *order;
    else
        result->errors.append({row.line, field + 1, tagColumnName(ORDER), wordOrderFault(text)});
}

void warnOfUnknown(const CsvRow &row, int field, const QString &title, TagListResult *result)
{
    const QString likely = likelyColumnName(title);
    result->warnings.append({row.line, field + 1, title,
                             likely.isEmpty()
                                 ? QStringLiteral("is not known")
                                 : QStringLiteral("is not known; is \"%1\" meant?").arg(likely)});
}

void readTitle(const CsvRow &row, int field, TagHeader *header, TagListResult *result)
{
    const QString title = QString::fromUtf8(row.fields[field]).trimmed();
    if (title.isEmpty())
        return;
    const QString order = QStringLiteral("order=");
    const bool hasOrder = title.startsWith(order, Qt::CaseInsensitive);
    const int column = hasOrder ? static_cast<int>(ORDER) : tagColumnOf(title);
    if (column < 0) {
        warnOfUnknown(row, field, title, result);
        return;
    }
    int &known = header->fieldOf[static_cast<size_t>(column)];
    if (known >= 0)
        result->errors.append(
            {row.line, field + 1, title, QStringLiteral("this column is there twice")});
    known = field;
    if (hasOrder)
        readDefaultOrder(row, field, title.mid(order.size()).trimmed(), header, result);
}

/// Only a line "sep=" ahead of it can part a header otherwise than its titles ask for.
QString separatorFault(const CsvRow &row, char separator)
{
    const char parts = row.fields.size() == 1
                           ? separatorOf(row.fields.first(), tagColumnName(NAME).toLatin1())
                           : '\0';
    return parts == '\0' ? QString()
                         : QStringLiteral("is parted by %1s, but the line \"sep=\" above says %2s")
                               .arg(separatorName(parts), separatorName(separator));
}

} // namespace

int TagHeader::columnAt(int field) const
{
    const auto *const column = std::find(fieldOf.cbegin(), fieldOf.cend(), field);
    return column == fieldOf.cend() ? -1 : static_cast<int>(column - fieldOf.cbegin());
}

TagHeader readTagHeader(const CsvRow &row, char separator, TagListResult *result)
{
    TagHeader header;
    header.fields = row.fields.size();
    const QString fault = separatorFault(row, separator);
    if (!fault.isEmpty()) {
        result->errors.append({row.line, 0, QString(), fault});
        return header;
    }
    for (int i = 0; i < row.fields.size(); ++i)
        readTitle(row, i, &header, result);
    for (int column = 0; column < DESCRIPTION; ++column) {
        if (header.fieldOf[static_cast<size_t>(column)] < 0)
            result->errors.append({row.line, 0, QString(),
                                   QStringLiteral("column \"%1\" is missing from the header")
                                       .arg(tagColumnName(column))});
    }
    return header;
}

} // namespace kvt
