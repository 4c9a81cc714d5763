#include "tags/field_text.h"

#include <QTextCodec>

namespace kvt
{

QString decodedField(const QByteArray &bytes, bool *good)
{
    QTextCodec::ConverterState state;
    QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    *good = state.invalidChars == 0 && state.remainingChars == 0;
    return text;
}

QString withPoint(const QString &text)
{
    QString pointed = text;
    return text.count(QLatin1Char(',')) == 1 && !text.contains(QLatin1Char('.'))
               ? pointed.replace(QLatin1Char(','), QLatin1Char('.'))
               : text;
}

QString separatorName(char separator)
{
    return separator == ','   ? QStringLiteral("comma")
           : separator == ';' ? QStringLiteral("semicolon")
                              : QStringLiteral("tab");
}

} // namespace kvt
