// Shows the values of tags as they change: a table drawn in place on a terminal, lines elsewhere.
#ifndef KVT_APPS_KVT_LIVE_VIEW_H
#define KVT_APPS_KVT_LIVE_VIEW_H

#include "host/value_table.h"
#include "tags/tag.h"

#include <QVector>

namespace kvt
{

/// Returns how a quality reads in a table.
QString qualityName(Quality quality);

/// Returns the text of a tag's value; "-" while there is none.
QString valueText(const Tag &tag, const CellValue &value);

/// Draws on standard output.
class LiveView
{
public:
    explicit LiveView(const QVector<Tag> &tags);

    /// Shows the values, in the order of the tags, under `status`, one line of text.
    void show(const QVector<CellValue> &values, const QString &status);

private:
    QString row(int tag, const CellValue &value) const;

    QVector<Tag> tags_;
    int nameWidth_ = 3;
    bool inPlace_;
    int drawnLines_ = 0;
};

} // namespace kvt

#endif
