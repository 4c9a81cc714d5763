// kvt write: one value.
#include "apps/kvt/commands.h"
#include "apps/kvt/console.h"
#include "apps/kvt/enquiry.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/options.h"
#include "apps/kvt/report_json.h"
#include "apps/kvt/request_report.h"
#include "apps/kvt/target.h"
#include "apps/kvt/value_text.h"
#include "tags/tag_address.h"
#include "tags/tag_elements.h"
#include "tags/value_elements.h"

#include <QJsonArray>
#include <QRegularExpression>

namespace kvt
{

namespace
{

QString goodText(const Tag &tag, const QString &value, const RequestOutcome &outcome)
{
    const bool command = isCommand(tag.area, tag.address);
    return QStringLiteral("%1: %2 acknowledged, %3")
        .arg(placeText(tag), command ? QStringLiteral("command") : value, replyText(outcome));
}

QString badText(const Tag &tag, const RequestOutcome &outcome)
{
    const bool command = isCommand(tag.area, tag.address);
    const QString object = command ? QStringLiteral("the command") : QStringLiteral("the value");
    const QString done = command ? QStringLiteral("carried out") : QStringLiteral("taken");
    if (outcome.interrupted) {
        const QString fate = outcome.isUncertain() ? QStringLiteral("may have been ") + done
                                                   : QStringLiteral("was not sent");
        return QStringLiteral("%1: %2 %3").arg(placeText(tag), object, fate);
    }
    QString text = failureText(tag, outcome);
    if (!outcome.asked || outcome.write.state == WriteState::Uncertain)
        text += QStringLiteral(", ") + writeReasonText(outcome.write.reason);
    if (outcome.write.state == WriteState::PartlyWritten)
        return text + QStringLiteral("; the value is partly written");
    if (outcome.isUncertain())
        text += QStringLiteral("; whether %1 was %2 is not known").arg(object, done);
    return text;
}

// `fault` is what kept the value from being sent; else empty.
void printJson(const Tag &tag, const TagValue &value, const RequestOutcome &outcome,
               const QString &fault = QString())
{
    QJsonObject write = writeToJson(tag, value, outcome);
    if (!fault.isEmpty())
        write.insert(QStringLiteral("reason"), fault);
    printOut(
        jsonLine({{QStringLiteral("writes"), QJsonArray{write}},
                  {QStringLiteral("summary"), requestSummary({outcome}, !outcome.interrupted)}}));
}

void report(const Tag &tag, const TagValue &value, const RequestOutcome &outcome, bool json)
{
    const QString verdict = outcome.good ? goodText(tag, ValueTexts({tag}).text(0, value), outcome)
                                         : badText(tag, outcome);
    if (json)
        printJson(tag, value, outcome);
    else if (outcome.good)
        printOut(verdict + QLatin1Char('\n'));
    // What has become of the value must be known even where standard output takes nothing.
    if ((!json && !outcome.good) || !outputWasTaken())
        printError(verdict);
}

int writeOne(const LineOptions &options, const Tag &tag, const QByteArray &bytes,
             const TagValue &value)
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
    report(tag, value, outcome, options.json);
    reportDoubt(tag, outcome);
    return exitCode;
}

// Says why a tag cannot be written; empty when it can.
QString writeObstacle(const Tag &tag)
{
    if (tag.area == Area::C)
        return QStringLiteral("area C cannot be written");
    if (tag.form.type == ValueType::Bit && !tag.form.bitIsWritten)
        return QStringLiteral("a bit is written by reading its element first: %1:rmw allows it")
            .arg(formText(tag.form));
    return elementTexts(tag).size() > 1 ? writeFault(tag) : QString();
}

// What an entered value is to the host. Returns what is wrong with it; empty when all is well.
QString readValue(const Tag &tag, const QString &entered, QByteArray *bytes, TagValue *value)
{
    const QString obstacle = writeObstacle(tag);
    if (!obstacle.isEmpty())
        return obstacle;
    const ValueTexts texts({tag});
    QVector<quint16> elements(elementCount(tag.form, tag.area));
    const QString error = texts.converter(0).enterInto(entered, elements.data());
    if (!error.isEmpty())
        return QStringLiteral("value \"%1\": %2").arg(entered, error);
    for (const quint16 element : elements) {
        bytes->append(static_cast<char>(element & 0xFF));
        if (tag.area == Area::D)
            bytes->append(static_cast<char>(element >> 8));
    }
    value->isKnown = true;
    value->elements = elements;
    if (tag.form.type != ValueType::String)
        value->raw = joinElements(tag.form, tag.area, elements.constData());
    return QString();
}

// A value that cannot be written has its object too: it was not sent.
int refuseValue(const Tag &tag, const QString &fault, bool json)
{
    printError(fault);
    RequestOutcome outcome;
    outcome.write.state = WriteState::Dropped;
    if (json)
        printJson(tag, TagValue(), outcome, fault);
    return EXIT_USAGE;
}

// Puts a negative number behind all else, where it is not taken for an option. `arguments` are the
// words behind the command's name.
QStringList withNegativeValueLast(const QStringList &arguments)
{
    static const QRegularExpression negative(QStringLiteral("\\A-[0-9.]+([eE]-?[0-9]+)?\\z"));
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

// Reads the words ahead of the value, which name one tag, and counts those behind.
bool readTarget(const QCommandLineParser &parser, Tag *tag, QString *value)
{
    const bool byName = parser.isSet(QStringLiteral("tags"));
    const QStringList words = parser.positionalArguments();
    const int before = byName ? 1 : 2;
    QVector<Tag> tags;
    if (words.size() >= before && !readTargets(parser, words.mid(0, before), &tags))
        return false;
    const bool command = !tags.isEmpty() && isCommand(tags.first().area, tags.first().address);
    if (command && words.size() > before) {
        printError(QStringLiteral("%1 is a command, which carries no value: leave \"%2\" out")
                       .arg(placeText(tags.first()), words.at(before)));
        return false;
    }
    if (!command && words.size() != before + 1) {
        printError(byName ? QStringLiteral("write takes the name of a tag and a value")
                          : QStringLiteral("write takes an area, an address and a value"));
        return false;
    }
    *tag = tags.first();
    *value = command ? QStringLiteral("0") : words.last();
    const bool isTyped = byName || parser.isSet(QStringLiteral("type"));
    if (!isTyped && tag->area == Area::D && value->startsWith(QLatin1Char('-')))
        tag->form = ValueType::S16;
    return true;
}

} // namespace

int runWrite(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Writes a value, or sends a command without one, once and says what became of it. The exit "
        "status is 0 if the PLC has acknowledged it."));
    parser.addPositionalArgument(QStringLiteral("AREA"), QStringLiteral("X or D."));
    parser.addPositionalArgument(
        QStringLiteral("ADDRESS"),
        QStringLiteral("Decimal parts a.b.c, e.g. 5.2.1. With --tags, the name of a tag in place "
                       "of area and address."));
    parser.addPositionalArgument(
        QStringLiteral("VALUE"),
        QStringLiteral("A decimal number, or 0x and hexadecimal digits; for hex these digits with "
                       "or without 0x, so that 10 means 0x10; for bool 0, 1, true, false, on, off. "
                       "A negative number is of type s16 unless another is given. With --tags as "
                       "the list has it: a scaled number, with its unit or not, a label or names "
                       "of bits, in any case; a text as it is. One that begins with - and is no "
                       "number stands last, behind --. D 18.1.0 and D 18.1.1 are commands and "
                       "take no value. See docs/values.md."),
        QStringLiteral("[VALUE]"));
    addTargetOptions(&parser, QStringLiteral("How the value is entered"));
    addLineOptions(&parser);
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("write"), withNegativeValueLast(arguments), &exitCode))
        return exitCode;
    LineOptions options;
    Tag tag;
    QString value;
    QByteArray bytes;
    TagValue written;
    if (!readTarget(parser, &tag, &value))
        return EXIT_USAGE;
    const QString fault = readValue(tag, value, &bytes, &written);
    if (!fault.isEmpty())
        return refuseValue(tag, fault, parser.isSet(QStringLiteral("json")));
    if (!readLineOptions(parser, &options))
        return EXIT_USAGE;
    return writeOne(options, tag, bytes, written);
}

} // namespace kvt
