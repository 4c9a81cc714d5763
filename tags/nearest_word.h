// The word that was probably meant.
#ifndef KVT_TAGS_NEAREST_WORD_H
#define KVT_TAGS_NEAREST_WORD_H

#include <QStringList>

namespace kvt
{

/// Returns the word of `known` that takes the fewest slips of the hand to become `word`: a letter
/// left out, put in, taken for another, or two that changed places. Empty when even that one takes
/// more than one slip for each three letters. A word whose beginning `word` is will always do.
QString nearestWord(const QString &word, const QStringList &known);

/// Returns ten of `names` at most, in quotes, for people to choose from: first the one nearest to
/// `word`, whatever its case, and how many more there are.
QString likelyNames(const QString &word, QStringList names);

} // namespace kvt

#endif
