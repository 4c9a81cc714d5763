#include "apps/kvt/frames/frame_explanation.h"

#include "apps/kvt/common/counted.h"
#include "apps/kvt/frames/explainers.h"
#include "apps/kvt/frames/field_reader.h"
#include "apps/kvt/frames/frame_text.h"
#include "driver/records.h"

namespace kvt
{

namespace
{

void explainUnknown(const QByteArray &frame, FrameExplanation *out)
{
    FieldReader reader(frame, out);
    reader.take(frame.size(), QStringLiteral("bytes"));
    out->summary = QStringLiteral("no frame");
    reader.addProblem(QStringLiteral("it begins neither with ENQ (05), ACK (06) or NAK (15) nor "
                                     "as an envelope"));
}

} // namespace

FrameExplanation explainFrame(const QByteArray &frame, const QByteArray &request,
                              const QVector<Tag> &tags)
{
    FrameExplanation explanation;
    const bool isText = !isEnvelope(frame);
    if (isText && frame.startsWith(FRAME_ENQ))
        explainRequest(frame, tags, &explanation);
    else if (isText && (frame.startsWith(FRAME_ACK) || frame.startsWith(FRAME_NAK)))
        explainReply(frame, request, &explanation);
    else if (hasEnvelopeLength(frame))
        explainEnvelope(frame, &explanation);
    else
        explainUnknown(frame, &explanation);
    return explanation;
}

QString frameKindName(FrameKind kind)
{
    switch (kind) {
    case FrameKind::Request:
        return QStringLiteral("request");
    case FrameKind::Reply:
        return QStringLiteral("reply");
    case FrameKind::Refusal:
        return QStringLiteral("refusal");
    case FrameKind::Envelope:
        return QStringLiteral("envelope");
    case FrameKind::Unknown:
        break;
    }
    return QStringLiteral("unknown");
}

QString explanationText(const QByteArray &frame, const FrameExplanation &explanation)
{
    QString text = QStringLiteral("%1: %2 (%3)\n")
                       .arg(frameKindName(explanation.kind), explanation.summary,
                            counted(frame.size(), "byte", "bytes"));
    for (const FrameField &field : explanation.fields) {
        text += QStringLiteral("%1  %2  %3")
                    .arg(field.offset, 5)
                    .arg(hexText(field.bytes), -12)
                    .arg(field.name, field.meaning.isEmpty() ? 0 : -14);
        text += field.meaning.isEmpty() ? QString() : QStringLiteral("  ") + field.meaning;
        text += QLatin1Char('\n');
    }
    for (const QString &problem : explanation.problems)
        text += QStringLiteral("  wrong: %1\n").arg(problem);
    return text;
}

QJsonObject explanationToJson(const QByteArray &frame, const FrameExplanation &explanation)
{
    QJsonArray fields;
    for (const FrameField &field : explanation.fields)
        fields.append(QJsonObject{{QStringLiteral("offset"), field.offset},
                                  {QStringLiteral("bytes"), hexText(field.bytes)},
                                  {QStringLiteral("name"), field.name},
                                  {QStringLiteral("meaning"), field.meaning}});
    QJsonObject object{
        {QStringLiteral("frame"), hexText(frame)},
        {QStringLiteral("kind"), frameKindName(explanation.kind)},
        {QStringLiteral("text"), explanation.summary},
        {QStringLiteral("fields"), fields},
        {QStringLiteral("problems"), QJsonArray::fromStringList(explanation.problems)}};
    if (explanation.station >= 0)
        object.insert(QStringLiteral("station"), explanation.station);
    if (!explanation.values.isEmpty())
        object.insert(QStringLiteral("values"), explanation.values);
    return object;
}

} // namespace kvt
