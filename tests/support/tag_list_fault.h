// What is wrong with the reading of a tag list, whatever the list.
#ifndef KVT_TESTS_SUPPORT_TAG_LIST_FAULT_H
#define KVT_TESTS_SUPPORT_TAG_LIST_FAULT_H

#include "tags/tag_list.h"

/// Reads a list that may be broken: what is told of it has a text and a place in it, and a list
/// without errors is read as the same tags once it was written again. Says what is not so; empty
/// when all is.
inline QString tagListFault(const QByteArray &csv)
{
    const kvt::TagListResult list = kvt::parseTagList(csv);
    const int lines = 1 + csv.count('\n') + csv.count('\r');
    for (const kvt::TagError &error : list.errors + list.warnings)
        if (error.text.isEmpty() || error.line < 0 || error.line > lines)
            return QStringLiteral("an error without its place");
    if (!list.errors.isEmpty())
        return QString();
    const kvt::TagListResult again = kvt::parseTagList(kvt::formatTagList(list.tags));
    return again.errors.isEmpty() && again.tags == list.tags
               ? QString()
               : QStringLiteral("written again, the tags are others");
}

#endif
