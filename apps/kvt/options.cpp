#include "apps/kvt/options.h"

#include "apps/kvt/console.h"
#include "apps/kvt/exit_codes.h"
#include "tags/nearest_word.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <algorithm>

namespace kvt
{

namespace
{

const QString TAGS = QStringLiteral("tags");

// The parser names its options in its help alone.
QStringList optionNames(const QCommandLineParser &parser)
{
    static const QRegularExpression form(QStringLiteral("^  (?:-[a-z], )?(--[a-z-]+)"),
                                         QRegularExpression::MultilineOption);
    QStringList names;
    auto match = form.globalMatch(parser.helpText());
    while (match.hasNext())
        names.append(match.next().captured(1));
    return names;
}

QString errorText(const QCommandLineParser &parser)
{
    const QStringList unknown = parser.unknownOptionNames();
    if (unknown.isEmpty())
        return parser.errorText();
    const QString &name = unknown.first();
    const QString first = (name.size() > 1 ? QStringLiteral("--") : QStringLiteral("-")) + name;
    return QStringLiteral("there is no option %1%2")
        .arg(first, suggestion(first, optionNames(parser)));
}

bool takeTags(const QString &path, const TagListResult &list, QVector<Tag> *tags)
{
    printProblems(path, list);
    *tags = list.tags;
    return list.errors.isEmpty();
}

} // namespace

QString suggestion(const QString &word, const QStringList &known)
{
    const QString nearest = nearestWord(word, known);
    return nearest.isEmpty() ? QString() : QStringLiteral("; is \"%1\" meant?").arg(nearest);
}

bool parseOptions(QCommandLineParser *parser, const QString &command, const QStringList &arguments,
                  int *exitCode)
{
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Print this help."));
    parser->addOption(help);
    const QString program = QStringLiteral("kvt %1").arg(command);
    if (!parser->parse(QStringList(program) + arguments)) {
        printError(QStringLiteral("%1: %2").arg(command, errorText(*parser)));
        *exitCode = EXIT_USAGE;
        return true;
    }
    if (parser->isSet(help)) {
        printOut(parser->helpText().replace(QCoreApplication::arguments().value(0), program));
        *exitCode = EXIT_GOOD;
        return true;
    }
    return false;
}

bool noArguments(const QCommandLineParser &parser, const QString &command)
{
    const QStringList words = parser.positionalArguments();
    if (!words.isEmpty())
        printError(QStringLiteral("%1: what is \"%2\"?").arg(command, words.first()));
    return words.isEmpty();
}

bool readNumber(const QCommandLineParser &parser, const QString &option, int least, int most,
                int *number)
{
    bool isNumber = false;
    const int value = parser.value(option).toInt(&isNumber);
    if (!isNumber || value < least || value > most) {
        printError(QStringLiteral("--%1: \"%2\" is no whole number from %3 to %4")
                       .arg(option, parser.value(option))
                       .arg(least)
                       .arg(most));
        return false;
    }
    *number = value;
    return true;
}

bool readNumberIfSet(const QCommandLineParser &parser, const QString &option, int least, int most,
                     int *number)
{
    return !parser.isSet(option) || readNumber(parser, option, least, most, number);
}

TagListResult loadPollableList(const QString &path)
{
    TagListResult list = loadTagList(path);
    if (list.errors.isEmpty())
        list.errors = pollErrors(list);
    if (list.errors.isEmpty() && list.tags.isEmpty())
        list.errors.append({0, 0, QString(), QStringLiteral("it has no tags")});
    return list;
}

QVector<ListProblem> problemsOf(const TagListResult &list)
{
    QVector<ListProblem> problems;
    for (const TagError &error : list.errors)
        problems.append({error, false});
    for (const TagError &warning : list.warnings)
        problems.append({warning, true});
    std::stable_sort(problems.begin(), problems.end(),
                     [](const ListProblem &a, const ListProblem &b) {
                         return a.error.line != b.error.line ? a.error.line < b.error.line
                                                             : a.error.column < b.error.column;
                     });
    return problems;
}

void printProblems(const QString &path, const TagListResult &list)
{
    for (const ListProblem &problem : problemsOf(list))
        printError((problem.isWarning ? QStringLiteral("warning: ") : QString()) +
                   formatTagError(path, problem.error));
}

bool readTags(const QString &path, QVector<Tag> *tags)
{
    return takeTags(path, loadTagList(path), tags);
}

bool readPollableTags(const QString &path, QVector<Tag> *tags)
{
    return takeTags(path, loadPollableList(path), tags);
}

void addNeededTagsOption(QCommandLineParser *parser)
{
    parser->addOption(
        {TAGS, QStringLiteral("Tag list, a CSV file. Needed."), QStringLiteral("FILE")});
}

bool readNeededTags(const QCommandLineParser &parser, const QString &command, QVector<Tag> *tags)
{
    if (parser.isSet(TAGS))
        return readPollableTags(parser.value(TAGS), tags);
    printError(QStringLiteral("%1: --tags FILE is missing").arg(command));
    return false;
}

} // namespace kvt
