// What a command reads or writes, named by words of the command line.
#ifndef KVT_APPS_KVT_TARGET_H
#define KVT_APPS_KVT_TARGET_H

#include "tags/tag.h"

#include <QCommandLineParser>
#include <QVector>

namespace kvt
{

/// Adds --station, --type and --tags. `types` is what --help says of the types.
void addTargetOptions(QCommandLineParser *parser, const QString &types);

/// Reads an area's name. False, with a message that begins with `place`, when it is none.
bool readArea(const QString &text, Area *area, const QString &place = QString());

/// The targets of `words`: an area and addresses in it, or, with --tags, names of tags. False,
/// with a message, when a word is wrong, a type does not fit, or they cannot be had together.
bool readTargets(const QCommandLineParser &parser, const QStringList &words, QVector<Tag> *tags);

} // namespace kvt

#endif
