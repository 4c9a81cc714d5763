// The fault matrix: every fault of the line at every kind of request with every setting of the
// host, on a virtual clock. The exit status is 0 only if every cell keeps what is promised of it.
#include "rig/fault_page.h"
#include "rig/fault_table.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

namespace
{

using namespace kvt;

// What the page has around its figures.
const QString BEGIN = QStringLiteral("<!-- figures, made by scripts/faults --update -->\n");
const QString END = QStringLiteral("<!-- end of figures -->\n");

QVector<FaultCell> cellsOf(int fault)
{
    QVector<FaultCell> cells;
    for (int request = 0; request < REQUESTS_OF_CELL; ++request) {
        const auto kind = static_cast<RequestOfCell>(request);
        if (faultsOfLine().at(fault).uniform && kind != RequestOfCell::ReadD)
            continue;
        for (int settings = 0; settings < CELL_SETTINGS; ++settings)
            for (const bool paced : {true, false})
                cells.append({fault, kind, static_cast<CellSettings>(settings), paced});
    }
    return cells;
}

QVector<CellResult> runCells(const QString &only, quint64 seed)
{
    QVector<CellResult> results;
    for (int fault = 0; fault < faultsOfLine().size(); ++fault) {
        if (!QLatin1String(faultsOfLine().at(fault).name).startsWith(only))
            continue;
        for (const FaultCell &cell : cellsOf(fault))
            results.append(runFaultCell(cell, QStringLiteral(KVT_LIBRARY), seed));
    }
    return results;
}

QString csvOf(const QVector<CellResult> &results)
{
    QString text = csvHead() + QLatin1Char('\n');
    for (const CellResult &result : results)
        text += csvLine(result) + QLatin1Char('\n');
    return text;
}

bool complain(const QString &text)
{
    QTextStream(stderr) << "kvt_faults: " << text << '\n';
    return false;
}

bool writeFile(const QString &path, const QString &text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.flush())
        return complain(QStringLiteral("%1: %2").arg(path, file.errorString()));
    return true;
}

bool readFile(const QString &path, QString *text)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return complain(QStringLiteral("%1: %2").arg(path, file.errorString()));
    *text = QString::fromUtf8(file.readAll());
    return true;
}

// Puts the figures in the place of those that the page has.
bool updatePage(const QString &path, const QVector<CellResult> &results)
{
    QString text;
    if (!readFile(path, &text))
        return false;
    const int begin = text.indexOf(BEGIN);
    const int end = text.indexOf(END);
    if (begin < 0 || end < begin)
        return complain(path + QStringLiteral(": has no place for the figures"));
    const int first = begin + BEGIN.size();
    text.replace(first, end - first, QLatin1Char('\n') + faultPage(results) + QLatin1Char('\n'));
    return writeFile(path, text);
}

QString nameOf(const CellResult &result)
{
    return csvLine(result).section(QLatin1Char(','), 0, 3);
}

bool keepsPromises(QTextStream &out, const QVector<CellResult> &results)
{
    bool good = true;
    for (const CellResult &result : results) {
        for (const QString &broken : brokenPromises(result)) {
            out << "FAILED  " << nameOf(result) << ": " << broken << '\n';
            good = false;
        }
    }
    return good;
}

bool isNoWorse(QTextStream &out, const QString &path, const QVector<CellResult> &results)
{
    QString text;
    if (!readFile(path, &text))
        return false;
    const QStringList found = worse(groupsOf(text), groupsOf(results));
    for (const QString &what : found)
        out << "WORSE   " << what << '\n';
    return found.isEmpty();
}

QString summary(const QVector<CellResult> &results)
{
    qint64 strikes = 0;
    qint64 values = 0;
    qint64 writes = 0;
    qint64 unsettled = 0;
    for (const CellResult &result : results) {
        strikes += result.strikes;
        values += result.findings.values;
        writes += result.findings.writes;
        unsettled += result.findings.writesUnsettled;
    }
    return QStringLiteral("%1 cells, %2 faults, %3 values shown as good, %4 writes, %5 unsettled")
        .arg(results.size())
        .arg(strikes)
        .arg(values)
        .arg(writes)
        .arg(unsettled);
}

struct Options {
    QCommandLineOption only{QStringLiteral("fault"),
                            QStringLiteral("Only the faults whose names begin so."),
                            QStringLiteral("name")};
    QCommandLineOption seed{QStringLiteral("seed"), QStringLiteral("Seed of the runs (default 1)."),
                            QStringLiteral("number"), QStringLiteral("1")};
    QCommandLineOption check{QStringLiteral("check"),
                             QStringLiteral("Fail where a cell is worse than in the file."),
                             QStringLiteral("file")};
    QCommandLineOption csv{QStringLiteral("csv"), QStringLiteral("Write all cells."),
                           QStringLiteral("file")};
    QCommandLineOption page{QStringLiteral("page"),
                            QStringLiteral("Put the tables into a page that has them."),
                            QStringLiteral("file")};
};

// Does with the results what the options say.
bool report(const QVector<CellResult> &results, const QCommandLineParser &parser,
            const Options &options, QTextStream &out)
{
    bool good = keepsPromises(out, results) && !results.isEmpty();
    if (parser.isSet(options.check))
        good = isNoWorse(out, parser.value(options.check), results) && good;
    if (parser.isSet(options.csv))
        good = writeFile(parser.value(options.csv), csvOf(results)) && good;
    if (parser.isSet(options.page))
        good = updatePage(parser.value(options.page), results) && good;
    return good;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Tries the host against every fault of the line, on a virtual clock."));
    parser.addHelpOption();
    const Options options;
    parser.addOptions({options.only, options.seed, options.check, options.csv, options.page});
    parser.process(app);
    bool isNumber = false;
    const quint64 seed = parser.value(options.seed).toULongLong(&isNumber);
    if (!isNumber || !parser.positionalArguments().isEmpty()) {
        complain(QStringLiteral("--seed takes a whole number, and there are no arguments"));
        return 2;
    }
    QTextStream out(stdout);
    const QVector<CellResult> results = runCells(parser.value(options.only), seed);
    const bool good = report(results, parser, options, out);
    out << summary(results) << '\n';
    return good ? 0 : 1;
}
