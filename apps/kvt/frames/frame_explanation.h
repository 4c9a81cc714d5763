// Explains the frames on the line, field by field.
#ifndef KVT_APPS_KVT_FRAMES_FRAME_EXPLANATION_H
#define KVT_APPS_KVT_FRAMES_FRAME_EXPLANATION_H

#include "tags/tag.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>
#include <QVector>

namespace kvt
{

/// One field of a frame.
struct FrameField {
    int offset = 0; ///< of its first byte, from 0
    QByteArray bytes;
    QString name;
    QString meaning; ///< may be empty
};

enum class FrameKind { Request, Reply, Refusal, Envelope, Unknown };

/// What a frame says.
struct FrameExplanation {
    FrameKind kind = FrameKind::Unknown;
    int station = -1;           ///< -1: none could be read
    QString summary;            ///< one line
    QVector<FrameField> fields; ///< in order; all bytes of the frame
    QJsonArray values;          ///< of tags, those that it completes
    QStringList problems;       ///< what is wrong with it; empty when all is well
};

/// Explains a frame of either direction: ENQ begins a request, ACK a reply, NAK a refusal, and a
/// length byte that fits begins an envelope. `request` is the one that a reply is meant to answer,
/// empty when it is not known. Of `tags` those that a request concerns are named; may be empty.
FrameExplanation explainFrame(const QByteArray &frame, const QByteArray &request,
                              const QVector<Tag> &tags);

/// "request", "reply", "refusal", "envelope", "unknown".
QString frameKindName(FrameKind kind);

/// Lines of text: the summary, each field, each problem.
QString explanationText(const QByteArray &frame, const FrameExplanation &explanation);

QJsonObject explanationToJson(const QByteArray &frame, const FrameExplanation &explanation);

} // namespace kvt

#endif
