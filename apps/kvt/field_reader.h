// Takes a frame apart from its front.
#ifndef KVT_APPS_KVT_FIELD_READER_H
#define KVT_APPS_KVT_FIELD_READER_H

#include "apps/kvt/frame_explanation.h"

namespace kvt
{

constexpr char BYTE_ENQ = 0x05;
constexpr char BYTE_ACK = 0x06;
constexpr char BYTE_CR = 0x0D;
constexpr char BYTE_NAK = 0x15;

/// Appends fields and problems to an explanation, which outlives it.
class FieldReader
{
public:
    FieldReader(const QByteArray &frame, FrameExplanation *explanation)
        : frame_(frame), explanation_(explanation)
    {
    }

    int left() const { return frame_.size() - offset_; }

    /// Takes bytes as a field; fewer when fewer are left. Nothing happens when none are.
    QByteArray take(int count, const QString &name, const QString &meaning = QString());

    /// Takes a number of `count` upper-case hexadecimal digits; -1, and a problem, when it is none.
    int takeDigits(int count, const QString &name);

    /// Takes a number of binary bytes, most significant first; 0, and a problem, when some are
    /// missing.
    quint32 takeBinary(int count, const QString &name);

    /// Takes the CR that ends a frame and what should not be behind it.
    void takeEnd();

    /// Sets the meaning of the latest field.
    void setMeaning(const QString &meaning);

    void addProblem(const QString &text) { explanation_->problems.append(text); }

private:
    QByteArray frame_;
    FrameExplanation *explanation_;
    int offset_ = 0;
};

/// The number of upper-case hexadecimal digits; -1 when they are none.
int hexNumber(const QByteArray &digits);

/// "18 (0x12)".
QString numberText(int value, int digits);

// The three parts of explainFrame.
void explainRequest(const QByteArray &frame, const QVector<Tag> &tags, FrameExplanation *out);
void explainReply(const QByteArray &frame, const QByteArray &request, FrameExplanation *out);
void explainEnvelope(const QByteArray &frame, FrameExplanation *out);

/// The first byte says how long the frame is, as that of an envelope does.
bool hasEnvelopeLength(const QByteArray &frame);

/// Length and checksum of an envelope are right.
bool isEnvelope(const QByteArray &frame);

} // namespace kvt

#endif
