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

// Reads all codes before anything is printed.
bool readCodes(const QStringList &words, QVector<CodeExplanation> *codes)
{
    for (const QString &word : words) {
        bool isNumber = false;
        const CodeExplanation explanation = explainCode(word.toInt(&isNumber));
        if (!isNumber || !explanation.isKnown) {
            printError(QStringLiteral("explain: \"%1\" is no result code; those are 0, 1, 100, 200 "
                                      "and 11-22, 41-52, 71-82, 111-122, 141-152, 171-182")
                           .arg(word));
            return false;
        }
        codes->append(explanation);
    }
    if (codes->isEmpty())
        printError(QStringLiteral("explain: no code is given, see kvt explain --help"));
    return !codes->isEmpty();
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
    QVector<CodeExplanation> codes;
    if (!readCodes(parser.positionalArguments(), &codes))
        return EXIT_USAGE;
    for (const CodeExplanation &code : codes)
        printOut(parser.isSet(QStringLiteral("json")) ? jsonLine(codeToJson(code))
                                                      : codeText(code));
    return EXIT_GOOD;
}

} // namespace kvt
