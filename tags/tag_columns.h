// The columns of a tag list.
#ifndef KVT_TAGS_TAG_COLUMNS_H
#define KVT_TAGS_TAG_COLUMNS_H

#include "tags/meaning_texts.h"
#include "tags/watch_texts.h"

namespace kvt
{

/// The columns that every list has, up to TYPE, and those that it may have.
enum TagColumn {
    NAME,
    AREA,
    ADDRESS,
    STATION,
    TYPE,
    DESCRIPTION,
    ORDER,
    TORN,
    WRITE_ORDER,
    FIRST_MEANING,                                 ///< followed by the others of a value's meaning
    FIRST_WATCH = FIRST_MEANING + MEANING_COLUMNS, ///< followed by the others about watching
    COLUMN_COUNT = FIRST_WATCH + WATCH_COLUMNS
};

/// Returns "name", "area" and so on.
QString tagColumnName(int column);

/// Returns the column of a title, in any case; -1 when there is none.
int tagColumnOf(const QString &title);

/// Returns the column about a value's meaning.
constexpr int columnOf(MeaningColumn column)
{
    return FIRST_MEANING + static_cast<int>(column);
}

/// Returns the column about watching a value.
constexpr int columnOf(WatchColumn column)
{
    return FIRST_WATCH + static_cast<int>(column);
}

/// Returns the name of the column that a title is most like; empty when it is like none.
QString likelyColumnName(const QString &title);

} // namespace kvt

#endif
