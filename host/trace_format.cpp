#include "host/trace_format.h"

namespace kvt
{

QByteArray traceHex(const QByteArray &bytes)
{
    return bytes.isEmpty() ? QByteArray(trace::NO_BYTES) : bytes.toHex().toUpper();
}

QByteArray traceText(const QString &text)
{
    if (text.isEmpty())
        return trace::NO_BYTES;
    return text.toUtf8().toPercentEncoding(QByteArray(), QByteArrayLiteral("-"));
}

} // namespace kvt
