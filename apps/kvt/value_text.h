// Values as people read them.
#ifndef KVT_APPS_KVT_VALUE_TEXT_H
#define KVT_APPS_KVT_VALUE_TEXT_H

#include "apps/kvt/tag_results.h"
#include "host/value_table.h"
#include "tags/value_converter.h"

#include <QJsonObject>

#include <vector>

namespace kvt
{

/// Shows the values of tags, which are those of a list without errors or of the command line.
class ValueTexts
{
public:
    explicit ValueTexts(const QVector<Tag> &tags);

    /// Returns a tag's value with its unit, and the raw one behind it where that reads otherwise:
    /// "21.4 °C (214)"; "-" while there is none.
    QString text(int tag, const TagValue &value) const;

    /// Puts value, raw, unit and text of a tag into `*object`; nothing while there is no value.
    void insertInto(int tag, const TagValue &value, QJsonObject *object) const;

    /// The tag's converter.
    const ValueConverter &converter(int tag) const { return converters_[static_cast<size_t>(tag)]; }

private:
    QString shown(int tag, const TagValue &value) const;
    QString rawText(int tag, const TagValue &value) const;
    QJsonValue rawToJson(int tag, const TagValue &value) const;
    QJsonValue valueToJson(int tag, const TagValue &value) const;

    QVector<Tag> tags_;
    std::vector<ValueConverter> converters_;
};

/// Returns what names a tag.
QJsonObject tagToJson(const Tag &tag);

/// Returns how the latest reading of a tag ended, with its code: "no reply (41)"; empty while there
/// is none. A station that is off is said to be: "off: no reply (41)", or "off" if the tag itself
/// has not failed.
QString resultText(const TagResult &result, bool stationIsOff);

/// Returns "D 5.2.1 at station 1", with the tag's name if it has one: "level (D 5.2.1 at station
/// 1)".
QString placeText(const Tag &tag);

} // namespace kvt

#endif
