#include "tags/tag_address.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace kvt
{

namespace
{

// The command without a value goes out as a read of one of these cells would.
constexpr int COMMAND_BYTE = 18;
constexpr int COMMAND_18_1_0 = 0x11;
constexpr int COMMAND_18_1_1 = 0x19;

/// Reads a part of plain decimal digits; -1 when it is anything else. Numbers too large for any
/// part come back as 99999.
int parsePart(const QString &text)
{
    const bool digits =
        !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), [](QChar character) {
            return character >= QLatin1Char('0') && character <= QLatin1Char('9');
        });
    if (!digits)
        return -1;
    bool fits = false;
    const int value = text.toInt(&fits);
    return fits ? qMin(value, 99999) : 99999;
}

QString rangeError(int index, const QString &part, int highest)
{
    return QStringLiteral("field %1 is %2, not 0 to %3")
        .arg(QString::number(index), part, QString::number(highest));
}

/// Spreadsheets take 5.2.1 for a day and save it as 05.02.2001, 2001-02-05, 5/2/01 or 05-Feb-01.
QString dateHint(const QString &text)
{
    static const QRegularExpression date(
        QStringLiteral("\\A([0-9]{1,2}\\.[0-9]{1,2}\\.(19|20)[0-9]{2}"
                       "|[0-9]{1,4}([-/])([0-9]{1,2}|\\pL{3,9}\\.?)\\3[0-9]{1,4})\\z"),
        QRegularExpression::UseUnicodePropertiesOption);
    return date.match(text).hasMatch() ? QStringLiteral("; did a spreadsheet make a date of it? "
                                                        "Format the column as text")
                                       : QString();
}

QString rangeErrors(Area area, const QStringList &parts, const TagAddress &address)
{
    if (address.a > 255)
        return rangeError(1, parts[0], 255);
    if (address.b > 15)
        return rangeError(2, parts[1], 15);
    if (area == Area::C && address.c > 1)
        return rangeError(3, parts[2], 1);
    if (address.c > 255 && address.b == 0)
        return rangeError(3, parts[2], 255);
    if (address.c > 255)
        return QStringLiteral("field 3 is %1, not 0 or 1 (2 to 255 where field 2 is 0)")
            .arg(parts[2]);
    if (address.c > 1 && address.b != 0)
        return QStringLiteral("field 2 must be 0 when field 3 is 2 or more: it would not be sent");
    if (address.d >= ELEMENTS_PER_BLOCK)
        return rangeError(4, parts[3], ELEMENTS_PER_BLOCK - 1);
    return QString();
}

/// Says which command a read of the address would set off; empty when it is a mere read.
QString commandError(const TagAddress &address)
{
    if (address.a != COMMAND_BYTE || (address.c != COMMAND_18_1_0 && address.c != COMMAND_18_1_1))
        return QString();
    return QStringLiteral("a read of it is on the line the command D 18.1.%1, which the PLC would "
                          "carry out")
        .arg(address.c == COMMAND_18_1_0 ? 0 : 1);
}

QString parseParts(Area area, const QString &text, TagAddress *address)
{
    const int count = area == Area::C ? 4 : 3;
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() != count)
        return QStringLiteral("\"%1\" has %2; area %3 takes %4")
            .arg(text,
                 parts.size() == 1 ? QStringLiteral("1 part")
                                   : QStringLiteral("%1 parts").arg(parts.size()),
                 areaName(area), QString::number(count));
    int values[4] = {};
    for (int i = 0; i < count; ++i) {
        values[i] = parsePart(parts[i]);
        if (values[i] < 0)
            return QStringLiteral("field %1 of \"%2\" is not a decimal number")
                .arg(QString::number(i + 1), text);
    }
    *address = TagAddress{values[0], values[1], values[2], values[3]};
    const QString error = rangeErrors(area, parts, *address);
    return error.isEmpty() ? commandError(*address) : error;
}

} // namespace

QString parseTagAddress(Area area, const QString &text, TagAddress *address)
{
    const QString error = parseParts(area, text, address);
    return error.isEmpty() ? error : error + dateHint(text);
}

bool isCommand(Area area, const QString &text)
{
    return area == Area::D && text.startsWith(QLatin1String("18.1."));
}

quint8 readAddressByte(const TagAddress &address)
{
    const int high = address.b * 16;
    if (address.c > 1)
        return static_cast<quint8>(address.c);
    return static_cast<quint8>(address.c == 1 ? high + 8 : high);
}

quint8 writeAddressByte(const TagAddress &address)
{
    const int read = readAddressByte(address);
    return static_cast<quint8>(address.c > 1 ? read : read + 1);
}

int numericAddress(Area area, const TagAddress &address)
{
    if (area == Area::C)
        return address.b * 160 + address.c * 80 + address.d;
    return address.a * 32 + address.b * 2 + address.c;
}

int numericAddress(const Tag &tag)
{
    TagAddress address;
    return parseTagAddress(tag.area, tag.address, &address).isEmpty()
               ? numericAddress(tag.area, address)
               : -1;
}

int readListAddress(Area area, const TagAddress &address)
{
    return numericAddress(area, address) - address.d;
}

} // namespace kvt
