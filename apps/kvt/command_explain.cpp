// kvt explain: a result code in words.
#include "apps/kvt/commands.h"
#include "apps/kvt/console.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/options.h"
#include "apps/kvt/result_code.h"

namespace kvt
{

namespace
{

// False, with a message, when the word is no code.
bool readCode(const QString &word, CodeExplanation *code)
{
    bool isNumber = false;
    *code = explainCode(word.toInt(&isNumber));
    if (isNumber && code->isKnown)
        return true;
    printError(QStringLiteral("explain: \"%1\" is no result code; those are 0, 1, 100, 200 and "
                              "11-22, 41-52, 71-82, 111-122, 141-152, 171-182")
                   .arg(word));
    return false;
}

// One wrong word does not take the explanations of the others away.
int explainWords(const QStringList &words, bool json)
{
    int explained = 0;
    for (const QString &word : words) {
        CodeExplanation code;
        if (!readCode(word, &code))
            continue;
        printOut(json ? jsonLine(codeToJson(code)) : codeText(code));
        ++explained;
    }
    const int unknown = words.size() - explained;
    if (json && explained > 0)
        printOut(jsonLine(
            {{QStringLiteral("summary"), QJsonObject{{QStringLiteral("explained"), explained},
                                                     {QStringLiteral("unknown"), unknown}}}}));
    return unknown == 0 ? EXIT_GOOD : EXIT_USAGE;
}

} // namespace

int runExplain(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Explains result codes of the driver: what happened, who had asked, and "
                       "what to check."));
    parser.addPositionalArgument(QStringLiteral("CODE"),
                                 QStringLiteral("A result code of the driver, such as 41."),
                                 QStringLiteral("CODE..."));
    parser.addOption({QStringLiteral("json"), QStringLiteral("Print JSON, one object per line.")});
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("explain"), arguments, &exitCode))
        return exitCode;
    const QStringList words = parser.positionalArguments();
    if (words.isEmpty()) {
        printError(QStringLiteral("explain: no code is given, see kvt explain --help"));
        return EXIT_USAGE;
    }
    return explainWords(words, parser.isSet(QStringLiteral("json")));
}

} // namespace kvt
