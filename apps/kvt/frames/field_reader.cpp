#include "apps/kvt/frames/field_reader.h"

#include "apps/kvt/common/counted.h"
#include "apps/kvt/frames/frame_text.h"
#include "driver/records.h"

namespace kvt
{

QByteArray FieldReader::take(int count, const QString &name, const QString &meaning)
{
    const QByteArray bytes = frame_.mid(offset_, count);
    if (bytes.isEmpty())
        return bytes;
    explanation_->fields.append({offset_, bytes, name, meaning});
    offset_ += bytes.size();
    return bytes;
}

int FieldReader::takeDigits(int count, const QString &name)
{
    const QByteArray digits = take(count, name);
    if (digits.size() < count) {
        addProblem(QStringLiteral("the frame ends before the end of its %1").arg(name));
        return -1;
    }
    const int number = hexNumber(digits);
    if (number >= 0)
        setMeaning(numberText(number, count));
    else
        addProblem(QStringLiteral("%1: %2 are not upper-case hexadecimal digits")
                       .arg(name, hexText(digits)));
    return number;
}

quint32 FieldReader::takeBinary(int count, const QString &name)
{
    const QByteArray bytes = take(count, name);
    quint32 number = 0;
    for (const char byte : bytes)
        number = number << 8U | static_cast<quint8>(byte);
    if (bytes.size() == count)
        setMeaning(QString::number(number));
    else
        addProblem(QStringLiteral("the envelope ends before the end of its %1").arg(name));
    return number;
}

void FieldReader::takeEnd()
{
    if (left() > 0 && frame_.at(offset_) == FRAME_CR) {
        take(1, QStringLiteral("CR"), QStringLiteral("end"));
    } else {
        take(1, QStringLiteral("end"), QStringLiteral("not CR"));
        addProblem(QStringLiteral("the frame does not end with CR (0D)"));
    }
    if (left() > 0) {
        addProblem(counted(left(), "byte follows behind the end", "bytes follow behind the end"));
        take(left(), QStringLiteral("surplus"));
    }
}

void FieldReader::setMeaning(const QString &meaning)
{
    if (!explanation_->fields.isEmpty())
        explanation_->fields.last().meaning = meaning;
}

} // namespace kvt
