// kvt write: one value.
#include "apps/kvt/commands.h"
#include "apps/kvt/console.h"
#include "apps/kvt/enquiry.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/options.h"
#include "apps/kvt/outcome_text.h"
#include "apps/kvt/request_report.h"
#include "apps/kvt/target.h"
#include "apps/kvt/value_text.h"
#include "tags/tag_value.h"

#include <QRegularExpression>

namespace kvt
{

namespace
{

void printWrite(const Tag &tag, const QString &value, const RequestOutcome &outcome)
{
    if (outcome.good) {
        printOut(QStringLiteral("%1: %2 acknowledged, %3\n")
                     .arg(placeText(tag), value, timeText(outcome.replyTime_ns)));
        return;
    }
    if (outcome.interrupted) {
        printError(QStringLiteral("%1: the value %2")
                       .arg(placeText(tag), outcome.isUncertain()
                                                ? QStringLiteral("may have been taken")
                                                : QStringLiteral("was not sent")));
        return;
    }
    QString text = failureText(tag, outcome);
    if (!outcome.asked)
        text += QStringLiteral(", ") + writeReasonText(outcome.write.reason);
    if (outcome.isUncertain())
        text += QStringLiteral("; whether the value was taken is not known");
    printError(text);
}

void printJson(const Tag &tag, const QString &value, const RequestOutcome &outcome)
{
    QJsonObject object = outcomeToJson(tag, outcome);
    object.insert(QStringLiteral("text"), value);
    object.insert(QStringLiteral("state"), writeStateName(outcome.write.state));
    object.insert(QStringLiteral("reason"), writeReasonText(outcome.write.reason));
    object.insert(QStringLiteral("uncertain"), outcome.isUncertain());
    printOut(jsonLine(object));
}

int writeOne(const LineOptions &options, const Tag &tag, const QByteArray &bytes)
{
    Enquiry enquiry(options, {tag});
    int exitCode = enquiry.open();
    if (exitCode != EXIT_GOOD && exitCode != EXIT_NO_ANSWER)
        return exitCode;
    RequestOutcome outcome;
    outcome.interrupted = true;
    outcome.write.state = WriteState::Dropped;
    if (exitCode == EXIT_GOOD && !enquiry.write(0, bytes, &outcome))
        exitCode = enquiry.reportStop();
    else if (!outcome.good)
        exitCode = EXIT_NO_ANSWER;
    const QString value = formatValue(tag.area, tag.type, bytes);
    if (options.json)
        printJson(tag, value, outcome);
    else
        printWrite(tag, value, outcome);
    return exitCode;
}

bool readValue(const Tag &tag, const QString &text, QByteArray *bytes)
{
    if (tag.area == Area::C) {
        printError(QStringLiteral("area C cannot be written"));
        return false;
    }
    const ParsedValue value = parseValue(tag.area, tag.type, text);
    if (!value.error.isEmpty())
        printError(QStringLiteral("value \"%1\": %2").arg(text, value.error));
    *bytes = value.bytes;
    return value.error.isEmpty();
}

// Puts a negative number behind all else, where it is not taken for an option. `arguments` are the
// words behind the command's name.
QStringList withNegativeValueLast(const QStringList &arguments)
{
    static const QRegularExpression negative(QStringLiteral("\\A-[0-9]+\\z"));
    QStringList words;
    QStringList values;
    for (const QString &word : arguments) {
        const QString before = words.value(words.size() - 1);
        const bool belongsToOption = before.startsWith(QLatin1String("--")) &&
                                     !before.contains(QLatin1Char('=')) &&
                                     before != QLatin1String("--json");
        const bool isValue = negative.match(word).hasMatch() && !belongsToOption;
        (isValue ? values : words).append(word);
    }
    if (values.isEmpty() || arguments.contains(QStringLiteral("--")))
        return arguments;
    return words + QStringList(QStringLiteral("--")) + values;
}

// The words ahead of the value name one tag.
bool readTarget(const QCommandLineParser &parser, Tag *tag)
{
    const bool byName = parser.isSet(QStringLiteral("tags"));
    const QStringList words = parser.positionalArguments();
    if (words.size() != (byName ? 2 : 3)) {
        printError(byName ? QStringLiteral("write takes the name of a tag and a value")
                          : QStringLiteral("write takes an area, an address and a value"));
        return false;
    }
    QVector<Tag> tags;
    if (!readTargets(parser, words.mid(0, words.size() - 1), &tags))
        return false;
    *tag = tags.first();
    const bool isTyped = byName || parser.isSet(QStringLiteral("type"));
    if (!isTyped && tag->area == Area::D && words.last().startsWith(QLatin1Char('-')))
        tag->type = ValueType::S16;
    return true;
}

} // namespace

int runWrite(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Writes a value once and says what became of it. The exit status is 0 if the PLC has "
        "acknowledged it."));
    parser.addPositionalArgument(QStringLiteral("AREA"), QStringLiteral("X or D."));
    parser.addPositionalArgument(
        QStringLiteral("ADDRESS"),
        QStringLiteral("Decimal parts a.b.c, e.g. 5.2.1. With --tags, the name of a tag in place "
                       "of area and address."));
    parser.addPositionalArgument(
        QStringLiteral("VALUE"),
        QStringLiteral("A decimal number; for bool also true, false, on, off; for hex, digits. A "
                       "negative number is of type s16 unless another is given."));
    addTargetOptions(&parser);
    addLineOptions(&parser);
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("write"), withNegativeValueLast(arguments), &exitCode))
        return exitCode;
    LineOptions options;
    Tag tag;
    QByteArray bytes;
    if (!readTarget(parser, &tag) || !readValue(tag, parser.positionalArguments().last(), &bytes) ||
        !readLineOptions(parser, &options))
        return EXIT_USAGE;
    return writeOne(options, tag, bytes);
}

} // namespace kvt
