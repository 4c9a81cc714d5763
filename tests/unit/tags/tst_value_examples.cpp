// The worked examples of docs/values.md: each row is shown and entered as it says, in each order,
// in words of D and in bytes of C.
#include "tags/value_converter.h"

#include <QFile>
#include <QSet>
#include <QtTest>

using namespace kvt;

namespace
{

constexpr WordOrder ORDERS[] = {WordOrder::Abcd, WordOrder::Badc, WordOrder::Cdab, WordOrder::Dcba};
const QString HEAD = QStringLiteral("| Type | Columns | Value | `abcd` |");

/// A row: type, columns, value, and what lies in the PLC in each order.
QStringList cellsOf(QString line)
{
    QStringList cells = line.remove(QLatin1Char('`')).split(QLatin1Char('|'));
    for (QString &cell : cells)
        cell = cell.trimmed();
    return cells.mid(1, cells.size() - 2);
}

/// The rows of the table that begins with HEAD; its head and the rule below are left out.
QVector<QStringList> examples()
{
    QFile file(QStringLiteral(KVT_DOCS "/values.md"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("docs/values.md cannot be read");
    QVector<QStringList> rows;
    bool isInside = false;
    for (const QString &line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
        isInside = line.startsWith(isInside ? QStringLiteral("|") : HEAD);
        if (isInside)
            rows.append(cellsOf(line));
    }
    return rows.mid(2);
}

MeaningTexts textsOf(const QString &columns)
{
    MeaningTexts texts;
    for (const QString &part : columns.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        for (int i = 0; i < MEANING_COLUMNS; ++i)
            if (part.section(QLatin1Char('='), 0, 0) ==
                meaningColumnName(static_cast<MeaningColumn>(i)))
                texts[static_cast<MeaningColumn>(i)] = part.section(QLatin1Char('='), 1);
    return texts;
}

/// Reads bytes in hexadecimal, with or without blanks, as elements of an area.
QVector<quint16> elementsOf(const QString &digits, Area area)
{
    const QByteArray bytes = QByteArray::fromHex(digits.toLatin1());
    QVector<quint16> elements;
    for (int i = 0; i < bytes.size(); i += valueSize(area)) {
        const auto first = static_cast<quint8>(bytes.at(i));
        elements.append(area == Area::D ? static_cast<quint16>(first << 8 |
                                                               static_cast<quint8>(bytes.at(i + 1)))
                                        : first);
    }
    return elements;
}

} // namespace

class TestValueExamples : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyTypeHasAnExample()
    {
        QSet<QString> types;
        for (const QStringList &row : examples())
            types.insert(row.first().section(QLatin1Char(':'), 0, 0));
        const QStringList all = {"bool", "bit", "hex", "u8",  "s8",  "u16",   "s16",   "u32",
                                 "s32",  "f32", "u64", "s64", "f64", "bcd16", "bcd32", "string"};
        QCOMPARE(types, QSet<QString>(all.begin(), all.end()));
    }

    void eachExampleIsTrue_data()
    {
        QTest::addColumn<QStringList>("cells");
        for (const QStringList &row : examples())
            QTest::newRow(qPrintable(row.mid(0, 3).join(QLatin1Char(' ')))) << row;
    }

    void eachExampleIsTrue()
    {
        QFETCH(QStringList, cells);
        QCOMPARE(cells.size(), 7);
        ValueForm form;
        QCOMPARE(parseForm(cells.at(0), &form), QString());
        int tried = 0;
        for (const Area area : {Area::D, Area::C})
            for (int i = 0; i < 4; ++i) {
                form.order = ORDERS[i];
                const QVector<quint16> held = elementsOf(cells.at(3 + i), area);
                if (!formMisfit(form, area).isEmpty() || held.size() != elementCount(form, area))
                    continue; // u8 in D, a word of flags in C
                QVector<MeaningProblem> problems;
                const auto converter =
                    ValueConverter::make(form, area, textsOf(cells.at(1)), &problems);
                QVERIFY(converter && problems.isEmpty());
                QCOMPARE(converter->textOf(held.constData()), cells.at(2));
                QVector<quint16> written(held.size(), 0);
                QCOMPARE(converter->enterInto(cells.at(2), written.data()), QString());
                QCOMPARE(written, held);
                ++tried;
            }
        const bool fitsBoth =
            formMisfit(form, Area::D).isEmpty() && formMisfit(form, Area::C).isEmpty() &&
            elementCount(form, Area::C) == valueSize(Area::D) * elementCount(form, Area::D);
        QCOMPARE(tried, fitsBoth ? 8 : 4);
    }
};

QTEST_GUILESS_MAIN(TestValueExamples)
#include "tst_value_examples.moc"
