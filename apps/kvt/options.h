// Command line options that the sub-commands share.
#ifndef KVT_APPS_KVT_OPTIONS_H
#define KVT_APPS_KVT_OPTIONS_H

#include "tags/tag_list.h"

#include <QCommandLineParser>
#include <QVector>

namespace kvt
{

/// Parses the words behind a sub-command's name. When it returns true, the command is over with
/// `*exitCode`: help was asked for and printed, or a word was wrong and was named.
bool parseOptions(QCommandLineParser *parser, const QString &command, const QStringList &arguments,
                  int *exitCode);

/// Returns "; is \"WORD\" meant?" with the word of `known` that is nearest to `word`; empty when
/// none is near.
QString suggestion(const QString &word, const QStringList &known);

/// False, with a message, when there are words that are no options.
bool noArguments(const QCommandLineParser &parser, const QString &command);

/// Reads a whole number from `least` to `most`. False, with a message that names the option, when
/// its value is none.
bool readNumber(const QCommandLineParser &parser, const QString &option, int least, int most,
                int *number);

/// The same for an option without a usual value: `*number` stays as it is when it is not given.
bool readNumberIfSet(const QCommandLineParser &parser, const QString &option, int least, int most,
                     int *number);

/// Reads a tag list that is to be polled: it is an error, too, that it has no tag, or tags that
/// cannot be polled together.
TagListResult loadPollableList(const QString &path);

/// Something wrong about a list, or only doubtful.
struct ListProblem {
    TagError error;
    bool isWarning = false;
};

/// Returns the errors and warnings of a list in the order of its lines and fields.
QVector<ListProblem> problemsOf(const TagListResult &list);

/// Prints the errors and warnings of a list in the order of its lines.
void printProblems(const QString &path, const TagListResult &list);

/// Reads a tag list. False, with one message for each error, when it has any. Warnings are printed
/// too.
bool readTags(const QString &path, QVector<Tag> *tags);

/// The same for a list that is to be polled.
bool readPollableTags(const QString &path, QVector<Tag> *tags);

/// Adds --tags to a command that polls such a list and cannot do without.
void addNeededTagsOption(QCommandLineParser *parser);

/// Reads the list that it names. False, with a message, also when it is not given.
bool readNeededTags(const QCommandLineParser &parser, const QString &command, QVector<Tag> *tags);

} // namespace kvt

#endif
