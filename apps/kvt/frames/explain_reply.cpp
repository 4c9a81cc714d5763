// Replies and refusals.
#include "apps/kvt/common/counted.h"
#include "apps/kvt/frames/explainers.h"
#include "apps/kvt/frames/field_reader.h"
#include "apps/kvt/frames/frame_text.h"
#include "driver/records.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int READ_REQUEST_bytes = 8;
constexpr int BYTES_AROUND_DATA = 4;
constexpr int ELEMENTS_PER_FIELD = 10;

QString signedText(int word)
{
    return word < 0x8000 ? QString() : QStringLiteral(", with sign %1").arg(word - 0x10000);
}

bool answersWrite(const QByteArray &request)
{
    return request.startsWith(FRAME_ENQ) && request.size() > READ_REQUEST_bytes;
}

QString takeByte(FieldReader *reader, const QByteArray &request)
{
    if (answersWrite(request)) {
        reader->take(2, QStringLiteral("mark"), QStringLiteral("without meaning to the driver"));
        return QStringLiteral("acknowledgement of the write");
    }
    const int value = reader->takeDigits(2, QStringLiteral("value"));
    const QString number = value < 0 ? QStringLiteral("unreadable") : numberText(value, 2);
    if (request.isEmpty())
        return QStringLiteral("value %1 of area X, or acknowledgement of a write").arg(number);
    return QStringLiteral("value %1 of area X").arg(number);
}

QString takeWord(FieldReader *reader)
{
    const int value = reader->takeDigits(4, QStringLiteral("value"));
    if (value < 0)
        return QStringLiteral("unreadable value of area D");
    reader->setMeaning(numberText(value, 4) + signedText(value));
    return QStringLiteral("value %1%2 of area D").arg(numberText(value, 4), signedText(value));
}

QString takeBlock(FieldReader *reader)
{
    for (int first = 0; first < BLOCK_ELEMENTS; first += ELEMENTS_PER_FIELD) {
        const QString name =
            QStringLiteral("elements %1-%2").arg(first).arg(first + ELEMENTS_PER_FIELD - 1);
        const QByteArray digits = reader->take(2 * ELEMENTS_PER_FIELD, name);
        QStringList values;
        for (int i = 0; i < digits.size(); i += 2) {
            const int value = hexNumber(digits.mid(i, 2));
            values.append(value < 0 ? QStringLiteral("?") : QString::number(value));
        }
        reader->setMeaning(values.join(QLatin1Char(' ')));
        if (values.contains(QStringLiteral("?")))
            reader->addProblem(
                QStringLiteral("%1: not all are upper-case hexadecimal digits").arg(name));
    }
    return QStringLiteral("block of %1 values of area C").arg(BLOCK_ELEMENTS);
}

QString takeData(FieldReader *reader, int frameSize, const QByteArray &request)
{
    switch (frameSize - BYTES_AROUND_DATA) {
    case 2:
        return takeByte(reader, request);
    case 4:
        return takeWord(reader);
    case 2 * BLOCK_ELEMENTS:
        return takeBlock(reader);
    default:
        reader->take(std::max(reader->left() - 1, 0), QStringLiteral("data"));
        reader->addProblem(counted(frameSize, "byte", "bytes") +
                           QStringLiteral(": replies have 6 (X, or a write), 8 (D) or 144 (C)"));
        return QStringLiteral("a damaged reply");
    }
}

void compareStations(int station, const QByteArray &request, FieldReader *reader)
{
    const int asked = request.startsWith(FRAME_ENQ) ? hexNumber(request.mid(1, 2)) : -1;
    if (asked >= 0 && station >= 0 && asked != station)
        reader->addProblem(
            QStringLiteral("the request was for station %1, the reply names station %2")
                .arg(asked)
                .arg(station));
}

void explainRefusal(const QByteArray &frame, const QByteArray &request, FrameExplanation *out)
{
    FieldReader reader(frame, out);
    out->kind = FrameKind::Refusal;
    reader.take(1, QStringLiteral("NAK"), QStringLiteral("refused"));
    out->station = reader.takeDigits(2, QStringLiteral("station"));
    reader.take(std::max(reader.left() - 1, 0), QStringLiteral("detail"),
                QStringLiteral("without meaning to the driver"));
    reader.takeEnd();
    compareStations(out->station, request, &reader);
    out->summary = QStringLiteral("the request is refused");
}

} // namespace

void explainReply(const QByteArray &frame, const QByteArray &request, FrameExplanation *out)
{
    if (frame.startsWith(FRAME_NAK)) {
        explainRefusal(frame, request, out);
    } else {
        FieldReader reader(frame, out);
        out->kind = FrameKind::Reply;
        reader.take(1, QStringLiteral("ACK"), QStringLiteral("a reply begins"));
        out->station = reader.takeDigits(2, QStringLiteral("station"));
        out->summary = takeData(&reader, frame.size(), request);
        reader.takeEnd();
        compareStations(out->station, request, &reader);
    }
    if (out->station >= 0)
        out->summary += QStringLiteral(", from station %1").arg(out->station);
}

} // namespace kvt
