// What the kinds of frames say; explainFrame finds out which kind a frame is.
#ifndef KVT_APPS_KVT_FRAMES_EXPLAINERS_H
#define KVT_APPS_KVT_FRAMES_EXPLAINERS_H

#include "apps/kvt/frames/frame_explanation.h"

namespace kvt
{

/// Explains a frame that begins with ENQ, and names those of `tags` that it concerns.
void explainRequest(const QByteArray &frame, const QVector<Tag> &tags, FrameExplanation *out);

/// Explains a frame that begins with ACK or NAK, held against the request that it is meant to
/// answer; that is empty when it is not known.
void explainReply(const QByteArray &frame, const QByteArray &request, FrameExplanation *out);

/// Explains an envelope of the remote mode, be it damaged.
void explainEnvelope(const QByteArray &frame, FrameExplanation *out);

/// The first byte says how long the frame is, as that of an envelope does.
bool hasEnvelopeLength(const QByteArray &frame);

/// Length and checksum of an envelope are right.
bool isEnvelope(const QByteArray &frame);

} // namespace kvt

#endif
