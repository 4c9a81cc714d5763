// The values of tags that frames bring or want written.
#ifndef KVT_APPS_KVT_FRAME_VALUES_H
#define KVT_APPS_KVT_FRAME_VALUES_H

#include "apps/kvt/frames/frame_explanation.h"
#include "apps/kvt/frames/request_parts.h"
#include "apps/kvt/value_text.h"

#include <vector>

namespace kvt
{

/// Puts values together from the frames of a line, which are taken in order. Those of several words
/// are told with the last word, as the words came: whether they belong together is the host's to
/// find out, which reads them again.
class FrameValues
{
public:
    /// The tags are those of a list without errors.
    explicit FrameValues(const QVector<Tag> &tags);

    /// Adds to what is said of a frame the values that it completes, or the word of a value that it
    /// brings. `request` is the one that a reply answers, empty when it is not known. A frame with
    /// problems says nothing.
    void addTo(const QByteArray &frame, const QByteArray &request, FrameExplanation *explanation);

private:
    using Elements = std::vector<int>; // of a tag; -1: not seen yet

    bool take(const TagPart &part, const QByteArray &digits, Elements *seen) const;
    TagValue valueOf(int tag, const Elements &seen) const;

    QVector<Tag> tags_;
    ValueTexts texts_;
    std::vector<Elements> read_;
    std::vector<Elements> written_;
};

} // namespace kvt

#endif
