#include "apps/kvt/table/printable.h"

#include <QVector>

#include <algorithm>
#include <cwchar>

namespace kvt
{

namespace
{

bool turnsDirection(uint character)
{
    return character == 0x061C || character == 0x200E || character == 0x200F ||
           (character >= 0x202A && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x2069);
}

bool steers(uint character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return turnsDirection(character);
    }
}

QString textCode(uint character)
{
    return character <= 0xFF ? QStringLiteral("\\x%1").arg(character, 2, 16, QLatin1Char('0'))
                             : QStringLiteral("\\u%1").arg(character, 4, 16, QLatin1Char('0'));
}

QString jsonCode(uint character)
{
    return QStringLiteral("\\u%1").arg(character, 4, 16, QLatin1Char('0'));
}

bool isHarmless(QChar character, const QString &kept)
{
    return (character >= QLatin1Char(' ') && character <= QLatin1Char('~')) ||
           kept.contains(character) || (!character.isSurrogate() && !steers(character.unicode()));
}

QString withCodes(const QString &text, const QString &kept, QString (*codeOf)(uint))
{
    if (std::all_of(text.begin(), text.end(),
                    [&](QChar character) { return isHarmless(character, kept); }))
        return text;
    QString result;
    result.reserve(text.size());
    for (const uint character : text.toUcs4()) {
        if (steers(character) && !(character <= 0xFFFF && kept.contains(QChar(character))))
            result += codeOf(character);
        else
            result += QString::fromUcs4(&character, 1);
    }
    return result;
}

// A character that the locale does not know is taken for a narrow one.
int widthOf(uint character)
{
    const int width = wcwidth(static_cast<wchar_t>(character));
    return width >= 0 ? width : 1;
}

// The longest beginning that takes no more than `width` columns.
QString beginning(const QString &text, int width)
{
    QString part;
    int taken = 0;
    for (const uint character : text.toUcs4()) {
        taken += widthOf(character);
        if (taken > width)
            break;
        part += QString::fromUcs4(&character, 1);
    }
    return part;
}

} // namespace

QString printable(const QString &text, const QString &kept)
{
    return withCodes(text, kept, textCode);
}

QString printableJson(const QString &json)
{
    return withCodes(json, QString(), jsonCode);
}

int displayWidth(const QString &text)
{
    int width = 0;
    for (const uint character : text.toUcs4())
        width += widthOf(character);
    return width;
}

QString fitted(const QString &text, int width, Qt::Alignment alignment)
{
    QString result = text;
    if (displayWidth(text) > width)
        result = width > 0 ? beginning(text, width - 1) + QLatin1Char('~') : QString();
    const QString blanks(std::max(width - displayWidth(result), 0), QLatin1Char(' '));
    return alignment == Qt::AlignRight ? blanks + result : result + blanks;
}

} // namespace kvt
