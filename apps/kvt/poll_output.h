// What kvt poll prints: a table on a terminal, lines in a pipe, or JSON.
#ifndef KVT_APPS_KVT_POLL_OUTPUT_H
#define KVT_APPS_KVT_POLL_OUTPUT_H

#include "apps/kvt/alarm_texts.h"
#include "apps/kvt/live_view.h"
#include "tags/deadband.h"

#include <QJsonObject>
#include <QStringList>

namespace kvt
{

/// What is shown beside the values.
struct PollState {
    QString line; ///< name of the line
    bool lineIsUp = false;
    QString lineError; ///< why it is down; empty while it is not, or not yet known
    int scans = 0;
    quint64 exchanges = 0;
    QString more; ///< what else is to be told beside these counts
    qint64 elapsed_ns = 0;
};

/// Prints on standard output. Make it before any thread; Table needs outputIsScreen.
class PollOutput
{
public:
    enum class Form { Table, Lines, Json };

    /// `alarms` are those of the tags and outlive the object. Table: `acknowledge`, if any, is
    /// called with the tags whose alarms the user has seen to.
    PollOutput(const QVector<Tag> &tags, const AlarmTexts &alarms, Form form,
               const Acknowledge &acknowledge = Acknowledge());

    /// Table: draws it anew. Lines: those tags whose value, quality or result has changed. Json:
    /// one object with all tags, and with the summary, which is empty but at the end.
    void show(const Snapshot &snapshot, const PollState &state,
              const QJsonObject &summary = QJsonObject());

    /// To be called once, behind the last `show`: gives the terminal back, with the table.
    void finish();

private:
    void showLines(const Snapshot &snapshot);
    bool isNews(int tag, const TagValue &value, const QString &result, const QString &line);
    void showJson(const Snapshot &snapshot, const PollState &state,
                  const QJsonObject &summary) const;

    QVector<Tag> tags_;
    ValueTexts texts_;
    const AlarmTexts &alarms_;
    Form form_;
    std::unique_ptr<LiveView> view_; // Table
    QStringList shown_;              // the latest line of each tag
    QStringList shownResults_;       // and the result in it
    std::vector<std::optional<DeadbandFilter>> deadbands_;
};

} // namespace kvt

#endif
