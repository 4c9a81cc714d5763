// Shows the values of tags as they change: a table drawn in place on a terminal, lines elsewhere.
#ifndef KVT_APPS_KVT_LIVE_VIEW_H
#define KVT_APPS_KVT_LIVE_VIEW_H

#include "apps/kvt/tag_results.h"
#include "host/value_table.h"
#include "tags/tag.h"

#include <QString>
#include <QVector>

namespace kvt
{

/// What is known of all tags at one time, in the order of the tags.
struct Snapshot {
    QVector<CellValue> values;
    QVector<TagResult> results;
    qint64 at_ns = 0;
};

/// Draws on standard output, in colour where it may.
class LiveView
{
public:
    explicit LiveView(const QVector<Tag> &tags);

    /// Shows the snapshot under `status`, one line of text. A terminal gets as many tags as fit.
    void show(const Snapshot &snapshot, const QString &status);

private:
    QString heading() const;
    QString row(int tag, const Snapshot &snapshot) const;
    QString coloured(const QString &text, Quality quality) const;

    QVector<Tag> tags_;
    int nameWidth_ = 3;
    bool inPlace_;
    bool inColour_;
    int drawnLines_ = 0;
};

} // namespace kvt

#endif
