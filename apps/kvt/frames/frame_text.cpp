#include "apps/kvt/frames/frame_text.h"

#include <algorithm>

namespace kvt
{

int hexNumber(const QByteArray &digits)
{
    const bool good = std::all_of(digits.begin(), digits.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
    });
    bool isNumber = false;
    const int number = digits.toInt(&isNumber, 16);
    return good && isNumber ? number : -1;
}

QString numberText(int value, int digits)
{
    return QStringLiteral("%1 (0x%2)")
        .arg(value)
        .arg(QString::number(value, 16).toUpper().rightJustified(digits, QLatin1Char('0')));
}

QString hexText(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}

} // namespace kvt
