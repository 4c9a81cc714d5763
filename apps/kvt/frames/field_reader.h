// Takes a frame apart from its front.
#ifndef KVT_APPS_KVT_FRAMES_FIELD_READER_H
#define KVT_APPS_KVT_FRAMES_FIELD_READER_H

#include "apps/kvt/frames/frame_explanation.h"

namespace kvt
{

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

} // namespace kvt

#endif
