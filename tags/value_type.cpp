#include "tags/value_type.h"

#include <QStringList>

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int LONGEST_STRING_bytes = ELEMENTS_PER_BLOCK;
constexpr int BITS_OF_A_WORD = 16;

constexpr ValueType ALL_TYPES[] = {
    ValueType::Bool,  ValueType::U8,    ValueType::S8,     ValueType::U16,
    ValueType::S16,   ValueType::Hex,   ValueType::U32,    ValueType::S32,
    ValueType::F32,   ValueType::U64,   ValueType::S64,    ValueType::F64,
    ValueType::Bcd16, ValueType::Bcd32, ValueType::String, ValueType::Bit};

/// Bytes of types that have a size of their own; 0 for the others.
int fixedSize(ValueType type)
{
    switch (type) {
    case ValueType::U8:
    case ValueType::S8:
        return 1;
    case ValueType::U16:
    case ValueType::S16:
    case ValueType::Bcd16:
        return 2;
    case ValueType::U32:
    case ValueType::S32:
    case ValueType::F32:
    case ValueType::Bcd32:
        return 4;
    case ValueType::U64:
    case ValueType::S64:
    case ValueType::F64:
        return 8;
    case ValueType::Bool:
    case ValueType::Hex:
    case ValueType::String:
    case ValueType::Bit:
        break;
    }
    return 0;
}

QString unknownType(const QString &text)
{
    return QStringLiteral(
               "\"%1\" is no type (bool, u8, s8, u16, s16, hex, u32, s32, f32, u64, s64, "
               "f64, bcd16, bcd32, string:N, string:N:utf8, bit:N or bit:N:rmw)")
        .arg(text);
}

/// Reads plain decimal digits up to `highest`; -1 when the text is anything else.
int readTypeNumber(const QString &text, int highest)
{
    const bool digits = std::all_of(text.cbegin(), text.cend(), [](QChar character) {
        return character >= QLatin1Char('0') && character <= QLatin1Char('9');
    });
    bool good = false;
    const int number = text.toInt(&good);
    return digits && good && number <= highest ? number : -1;
}

QString parseStringForm(const QStringList &parts, ValueForm *form)
{
    form->number = readTypeNumber(parts.value(1), LONGEST_STRING_bytes);
    if (form->number < 1)
        return QStringLiteral("a string has 1 to %1 bytes, as in string:16")
            .arg(LONGEST_STRING_bytes);
    const QString encoding = parts.value(2, QStringLiteral("latin1"));
    if (encoding != QLatin1String("latin1") && encoding != QLatin1String("utf8"))
        return QStringLiteral("\"%1\" is no encoding of a string (latin1 or utf8)").arg(encoding);
    if (encoding == QLatin1String("utf8"))
        form->encoding = TextEncoding::Utf8;
    return QString();
}

QString parseBitForm(const QStringList &parts, ValueForm *form)
{
    form->number = readTypeNumber(parts.value(1), BITS_OF_A_WORD - 1);
    if (form->number < 0 || parts.value(1).isEmpty())
        return QStringLiteral("a bit has a number from 0 to %1, as in bit:3")
            .arg(BITS_OF_A_WORD - 1);
    if (parts.size() > 2 && parts.at(2) != QLatin1String("rmw"))
        return QStringLiteral("\"%1\" is nothing that can stand behind a bit (rmw)")
            .arg(parts.at(2));
    form->bitIsWritten = parts.size() > 2;
    return QString();
}

} // namespace

bool operator==(const ValueForm &a, const ValueForm &b)
{
    return a.type == b.type && a.number == b.number && a.encoding == b.encoding &&
           a.bitIsWritten == b.bitIsWritten && a.order == b.order;
}

QString typeName(ValueType type)
{
    static const char *const names[] = {"bool",  "u8",    "s8",     "u16", "s16", "hex",
                                        "u32",   "s32",   "f32",    "u64", "s64", "f64",
                                        "bcd16", "bcd32", "string", "bit"};
    return QLatin1String(names[static_cast<int>(type)]);
}

QString formText(const ValueForm &form)
{
    QString text = typeName(form.type);
    if (form.type == ValueType::String || form.type == ValueType::Bit)
        text += QLatin1Char(':') + QString::number(form.number);
    if (form.type == ValueType::String && form.encoding == TextEncoding::Utf8)
        text += QLatin1String(":utf8");
    if (form.type == ValueType::Bit && form.bitIsWritten)
        text += QLatin1String(":rmw");
    return text;
}

QString parseForm(const QString &text, ValueForm *form)
{
    const QStringList parts = text.split(QLatin1Char(':'));
    const ValueType *const type =
        std::find_if(std::begin(ALL_TYPES), std::end(ALL_TYPES),
                     [&](ValueType known) { return parts.first() == typeName(known); });
    if (type == std::end(ALL_TYPES))
        return unknownType(text);
    ValueForm read;
    read.type = *type;
    read.order = form->order;
    QString error;
    if (*type == ValueType::String)
        error = parseStringForm(parts, &read);
    else if (*type == ValueType::Bit)
        error = parseBitForm(parts, &read);
    const int mostParts = *type == ValueType::String || *type == ValueType::Bit ? 3 : 1;
    if (error.isEmpty() && parts.size() > mostParts)
        error = unknownType(text);
    if (error.isEmpty())
        *form = read;
    return error;
}

QString formMisfit(const ValueForm &form, Area area)
{
    const int size = byteCount(form, area);
    const bool isText = form.type == ValueType::String;
    const bool fits = area == Area::D   ? isText || size % valueSize(area) == 0
                      : area == Area::X ? !isText && size == 1
                                        : true;
    if (!fits)
        return QStringLiteral("type %1 does not fit area %2").arg(formText(form), areaName(area));
    if (form.type == ValueType::Bit && form.number >= 8 * size)
        return QStringLiteral("an element of area %1 has bits 0 to %2")
            .arg(areaName(area), QString::number(8 * size - 1));
    return QString();
}

int byteCount(const ValueForm &form, Area area)
{
    if (form.type == ValueType::String)
        return form.number;
    const int size = fixedSize(form.type);
    return size > 0 ? size : valueSize(area);
}

int elementCount(const ValueForm &form, Area area)
{
    const int size = valueSize(area);
    return (byteCount(form, area) + size - 1) / size;
}

bool isNumeric(ValueType type)
{
    return fixedSize(type) > 0;
}

} // namespace kvt
