#include "tags/tag_columns.h"

#include "tags/nearest_word.h"

namespace kvt
{

QString tagColumnName(int column)
{
    static const char *const names[] = {"name",        "area",  "address", "station",    "type",
                                        "description", "order", "torn",    "write_order"};
    if (column < FIRST_MEANING)
        return QLatin1String(names[column]);
    return column < FIRST_WATCH
               ? meaningColumnName(static_cast<MeaningColumn>(column - FIRST_MEANING))
               : watchColumnName(static_cast<WatchColumn>(column - FIRST_WATCH));
}

int tagColumnOf(const QString &title)
{
    for (int column = 0; column < COLUMN_COUNT; ++column)
        if (title.compare(tagColumnName(column), Qt::CaseInsensitive) == 0)
            return column;
    return -1;
}

QString likelyColumnName(const QString &title)
{
    QStringList names;
    for (int column = 0; column < COLUMN_COUNT; ++column)
        names.append(tagColumnName(column));
    return nearestWord(title.toLower(), names);
}

} // namespace kvt
