#include "tags/thousands_point.h"

#include "tags/decimal.h"

#include <QRegularExpression>

#include <algorithm>

namespace kvt
{

bool haveDecimalComma(const QVector<CsvRow> &rows)
{
    return std::any_of(rows.cbegin(), rows.cend(), [](const CsvRow &row) {
        return std::any_of(row.fields.cbegin(), row.fields.cend(), [](const QByteArray &field) {
            return field.contains(',') && hasDecimalComma(QString::fromUtf8(field).trimmed());
        });
    });
}

// No thousands begin with a 0: "0.125" has one reading.
QString thousandsDoubt(const QString &text, bool hasCommas)
{
    static const QRegularExpression pattern(
        QStringLiteral("^(-?[1-9][0-9]{0,2}\\.[0-9]{3})[^0-9.]*$"));
    if (!text.contains(QLatin1Char('.')))
        return QString();
    const QString number = pattern.match(text).captured(1);
    Decimal read;
    if (readDecimal(number, &read) != NumberReading::Good)
        return QString();
    QString whole = number;
    whole.remove(QLatin1Char('.'));
    if (!hasCommas)
        return QStringLiteral("\"%1\" is read as %2; if thousands are meant, %3 is needed")
            .arg(text, decimalText(read), whole);
    QString comma = number;
    comma.replace(QLatin1Char('.'), QLatin1Char(','));
    return QStringLiteral("\"%1\" may be %2 or %3, since this list has decimal commas: %2 or %4 "
                          "is needed")
        .arg(text, whole, decimalText(read), comma);
}

} // namespace kvt
