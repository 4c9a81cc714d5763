#include "tags/string_value.h"

#include <QTextCodec>

#include <algorithm>

namespace kvt
{

namespace
{

/// Encodes a text; none when the encoding has not all its characters.
std::optional<QByteArray> encoded(const ValueForm &form, const QString &text)
{
    if (form.encoding == TextEncoding::Utf8)
        return text.isValidUtf16() ? std::make_optional(text.toUtf8()) : std::nullopt;
    const bool fits = std::all_of(text.cbegin(), text.cend(),
                                  [](QChar character) { return character.unicode() < 256; });
    return fits ? std::make_optional(text.toLatin1()) : std::nullopt;
}

EnteredString stringFailure(const QString &error)
{
    EnteredString entered;
    entered.error = error;
    return entered;
}

/// The longest beginning of a text that fits, for a message.
QString longestThatFits(const ValueForm &form, QString text)
{
    while (encoded(form, text).value_or(QByteArray()).size() > form.number) {
        text.chop(1);
        if (!text.isEmpty() && text.at(text.size() - 1).isHighSurrogate())
            text.chop(1);
    }
    return text;
}

} // namespace

std::optional<QString> stringText(const ValueForm &form, const QByteArray &bytes)
{
    const int end = bytes.indexOf('\0');
    const QByteArray text = end < 0 ? bytes : bytes.left(end);
    if (form.encoding == TextEncoding::Latin1)
        return QString::fromLatin1(text);
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QString decoded =
        QTextCodec::codecForName("UTF-8")->toUnicode(text.constData(), text.size(), &state);
    const bool good = state.invalidChars == 0 && state.remainingChars == 0;
    return good ? std::make_optional(decoded) : std::nullopt;
}

EnteredString enterString(const ValueForm &form, const QString &text)
{
    const std::optional<QByteArray> bytes = encoded(form, text);
    if (!bytes)
        return stringFailure(
            QStringLiteral("\"%1\" has characters that a %2 has not").arg(text, formText(form)));
    if (bytes->contains('\0'))
        return stringFailure(QStringLiteral("a text ends at its first 0, and can have none in it"));
    if (bytes->size() > form.number)
        return stringFailure(QStringLiteral("\"%1\" has %2 bytes, and %3 fit; \"%4\" would do")
                                 .arg(text, QString::number(bytes->size()),
                                      QString::number(form.number), longestThatFits(form, text)));
    EnteredString entered;
    entered.bytes = bytes->leftJustified(form.number, '\0');
    return entered;
}

} // namespace kvt
