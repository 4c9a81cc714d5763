// Rows of a CSV text.
#include "tags/csv_rows.h"

#include "tests/support/damage.h"

#include <QtTest>

using namespace kvt;

namespace
{

/// Writes rows as "line:field|field", one after the other, parted by blanks.
QByteArray shown(const CsvRows &rows)
{
    QByteArrayList texts;
    for (const CsvRow &row : rows.rows)
        texts.append(QByteArray::number(row.line) + ':' +
                     QByteArrayList(row.fields.toList()).join('|'));
    return texts.join(' ');
}

QVector<QVector<QByteArray>> fieldsOf(const CsvRows &rows)
{
    QVector<QVector<QByteArray>> fields;
    for (const CsvRow &row : rows.rows)
        fields.append(row.fields);
    return fields;
}

QByteArray written(const CsvRows &rows)
{
    QByteArray text;
    for (const CsvRow &row : rows.rows) {
        for (int i = 0; i < row.fields.size(); ++i) {
            text.append(i > 0 ? "," : "");
            appendCsvField(&text, row.fields[i]);
        }
        text.append('\n');
    }
    return text;
}

/// Says what is wrong with the rows of a text that may be broken.
QString faultOf(const QByteArray &text)
{
    const CsvRows rows = splitCsv(text);
    const int lines = 1 + text.count('\n') + text.count('\r');
    for (const CsvRow &row : rows.rows)
        if (row.line < 1 || row.line > lines)
            return QStringLiteral("a row in line %1").arg(row.line);
    if (rows.errorText.isEmpty())
        return fieldsOf(splitCsv(written(rows))) == fieldsOf(rows)
                   ? QString()
                   : QStringLiteral("written again, the rows are others");
    return rows.errorLine >= 1 && rows.errorLine <= lines && rows.errorColumn >= 1
               ? QString()
               : QStringLiteral("an error without its place");
}

} // namespace

class TestCsvRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rowsKeepTheirFieldsAndLines_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("rows");
        QTest::newRow("nothing") << QByteArray() << QByteArray();
        QTest::newRow("LF") << QByteArray("a,b\nc,d\n") << QByteArray("1:a|b 2:c|d");
        QTest::newRow("CRLF") << QByteArray("a,b\r\nc,d\r\n") << QByteArray("1:a|b 2:c|d");
        QTest::newRow("CR") << QByteArray("a,b\rc,d\r") << QByteArray("1:a|b 2:c|d");
        QTest::newRow("no final line end") << QByteArray("a,b\nc,d") << QByteArray("1:a|b 2:c|d");
        QTest::newRow("blank lines") << QByteArray("\n  \na\n\r\n\t\nb\n") << QByteArray("3:a 6:b");
        QTest::newRow("comment lines")
            << QByteArray("#a,\"b\r\n # c\nd,#e\n\"f\n#g\",h\n#") << QByteArray("3:d|#e 4:f\n#g|h");
        QTest::newRow("quoted comments")
            << QByteArray("\"# b, \"\"c\"\"\",,\nd,e\n\" # f,\"\r\n\"#g\",,h\n")
            << QByteArray("2:d|e 4:#g||h");
        QTest::newRow("rows of empty fields")
            << QByteArray("a,b\n,,\nc,d\n") << QByteArray("1:a|b 3:c|d");
        QTest::newRow("empty field at the end") << QByteArray("a,\n") << QByteArray("1:a|");
        QTest::newRow("blanks around fields") << QByteArray(" a , b c \n") << QByteArray("1:a|b c");
        QTest::newRow("quoted comma") << QByteArray("\"a,b\",c\n") << QByteArray("1:a,b|c");
        QTest::newRow("quoted quote")
            << QByteArray("\"say \"\"a\"\"\"\n") << QByteArray("1:say \"a\"");
        QTest::newRow("quoted blanks stay") << QByteArray("\" a \"\n") << QByteArray("1: a ");
        QTest::newRow("quoted line end")
            << QByteArray("x,\"a\nb\"\ny,c\n") << QByteArray("1:x|a\nb 3:y|c");
        QTest::newRow("quoted line end first")
            << QByteArray("\"a\n\nb\",x\nc,y\n") << QByteArray("1:a\n\nb|x 4:c|y");
    }

    void rowsKeepTheirFieldsAndLines()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, rows);
        const CsvRows result = splitCsv(text);
        QCOMPARE(result.errorText, QString());
        QCOMPARE(shown(result), rows);
    }

    void brokenQuotingIsAnErrorWithItsPlace_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("line");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("error");
        const QString stray = QStringLiteral("a quote stands where none may be");
        const QString open = QStringLiteral("a quoted field is not closed");
        QTest::newRow("inside a field") << QByteArray("a,b\nc,d\"e\n") << 2 << 2 << stray;
        QTest::newRow("text behind a quoted field") << QByteArray("\"a\"b\n") << 1 << 1 << stray;
        QTest::newRow("not closed") << QByteArray("a\n\nb,\"c\nd\n") << 3 << 2 << open;
        QTest::newRow("a quote alone") << QByteArray("\"") << 1 << 1 << open;
    }

    void brokenQuotingIsAnErrorWithItsPlace()
    {
        QFETCH(QByteArray, text);
        const CsvRows result = splitCsv(text);
        QTEST(result.errorLine, "line");
        QTEST(result.errorColumn, "column");
        QTEST(result.errorText, "error");
    }

    void writtenFieldsAreReadBack_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QByteArray>("written");
        QTest::newRow("plain") << QByteArray("a b") << QByteArray("a b");
        QTest::newRow("comma") << QByteArray("a,b") << QByteArray("\"a,b\"");
        QTest::newRow("quote") << QByteArray("a\"b") << QByteArray("\"a\"\"b\"");
        QTest::newRow("line end") << QByteArray("a\r\nb") << QByteArray("\"a\r\nb\"");
        QTest::newRow("blank in front") << QByteArray(" a") << QByteArray("\" a\"");
        QTest::newRow("number sign in front") << QByteArray("#a") << QByteArray("\"#a\"");
        QTest::newRow("tab behind") << QByteArray("a\t") << QByteArray("\"a\t\"");
    }

    void writtenFieldsAreReadBack()
    {
        QFETCH(QByteArray, field);
        QByteArray row;
        appendCsvField(&row, field);
        QTEST(row, "written");
        const CsvRows rows = splitCsv(row + ",x\n");
        QCOMPARE(rows.rows.size(), 1);
        QCOMPARE(rows.rows[0].fields, (QVector<QByteArray>{field, "x"}));
    }

    void aDamagedTextHasItsRowsOrAnErrorWithItsPlace()
    {
        QCOMPARE(faultAtDamage("name,area\r\n\"a, \"\"b\"\"\", X \n#c\n\"d\ne\",\n", faultOf),
                 QString());
    }
};

QTEST_GUILESS_MAIN(TestCsvRows)
#include "tst_csv_rows.moc"
