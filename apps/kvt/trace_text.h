// A trace as an engineer reads it.
#ifndef KVT_APPS_KVT_TRACE_TEXT_H
#define KVT_APPS_KVT_TRACE_TEXT_H

#include "apps/kvt/frame_values.h"
#include "host/trace_reader.h"

#include <QJsonObject>
#include <QVector>

namespace kvt
{

/// Explains the records of one trace, in order.
class TraceText
{
public:
    /// Requests name those of `tags` that they concern, and replies their values; may be empty.
    /// `startedAt` is the time of day from which the stamps count; invalid when it is not known.
    TraceText(const QVector<Tag> &tags, const QDateTime &startedAt)
        : tags_(tags), values_(tags), startedAt_(startedAt)
    {
    }

    /// Returns the line that tells the time of day from which the stamps count; empty when it is
    /// not known.
    QString firstLine() const;

    /// One line of text with its end. Empty for records that say nothing beyond their neighbours.
    QString line(const TraceRecord &record);

    /// The same as JSON; empty for the same records. Frames have all their fields.
    QJsonObject json(const TraceRecord &record);

private:
    void note(const TraceRecord &record);
    FrameExplanation explanationOf(const TraceRecord &record);
    QString textOf(const TraceRecord &record, const FrameExplanation &explanation) const;

    QVector<Tag> tags_;
    FrameValues values_;
    QDateTime startedAt_;
    QByteArray request_;
};

} // namespace kvt

#endif
