// The values of tags as they change, on a terminal.
#ifndef KVT_APPS_KVT_LIVE_VIEW_H
#define KVT_APPS_KVT_LIVE_VIEW_H

#include "apps/kvt/console.h"
#include "apps/kvt/table/screen.h"
#include "apps/kvt/tag_results.h"
#include "apps/kvt/value_text.h"
#include "host/alarm_board.h"
#include "tags/tag.h"

#include <QSet>

#include <functional>

namespace kvt
{

/// What is known of all tags at one time, in the order of the tags.
struct Snapshot {
    QVector<TagValue> values;
    QVector<TagResult> results;
    qint64 at_ns = 0;
    QSet<int> stationsOff; ///< those that are polled less often because they fail
    QVector<std::optional<AlarmStatus>> alarms = {}; ///< none where a tag has none; or empty
};

/// Takes indices of tags.
using Acknowledge = std::function<void(const QVector<int> &tags)>;

/// A table on the terminal, which it takes at the first snapshot; messages wait until it gives the
/// terminal back. The user scrolls, filters, acknowledges alarms, and ends the event loop
/// with "q".
class LiveView
{
public:
    /// `texts` are those of the tags and outlive the object; `acknowledge`, if any, is called with
    /// the tags whose alarms the user has seen to.
    LiveView(const QVector<Tag> &tags, const ValueTexts &texts, Acknowledge acknowledge);

    /// Shows the snapshot below a line about the whole and, if it is not empty, one about what is
    /// wrong.
    void show(const Snapshot &snapshot, const QString &status, const QString &trouble);

    /// Gives the terminal back and prints what it has shown last.
    void finish();

private:
    void press(Key key, QChar character);
    TableRow row(int tag, const Snapshot &snapshot) const;
    void draw();

    QVector<Tag> tags_;
    const ValueTexts &texts_;
    Acknowledge acknowledge_;
    LiveTable table_;
    std::unique_ptr<HeldMessages> messages_; // goes after the screen
    std::unique_ptr<Screen> screen_;
};

} // namespace kvt

#endif
