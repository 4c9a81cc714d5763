// Tag lists as files: loading, writing, and what is said about them.
#include "tags/csv_rows.h"
#include "tags/tag_columns.h"
#include "tags/tag_list.h"

#include <QFile>
#include <QSaveFile>

#include <algorithm>

namespace kvt
{

namespace
{

// Well above a list of 200,000 tags.
constexpr qint64 LARGEST_FILE = 32 * 1024 * 1024;

TagListResult unusable(const QString &text)
{
    TagListResult result;
    result.errors.append({0, 0, QString(), text});
    return result;
}

QString fieldText(const Tag &tag, int column)
{
    switch (column) {
    case NAME:
        return tag.name;
    case AREA:
        return areaName(tag.area);
    case ADDRESS:
        return tag.address;
    case STATION:
        return QString::number(tag.station);
    case TYPE:
        return formText(tag.form);
    case DESCRIPTION:
        return tag.description;
    case ORDER:
        return tag.form.order == WordOrder::Abcd ? QString() : wordOrderName(tag.form.order);
    case TORN:
        return tag.acceptsTorn ? QStringLiteral("accept") : QString();
    case WRITE_ORDER:
        return tag.isWrittenDown ? QStringLiteral("down") : QString();
    default:
        break;
    }
    return column < FIRST_WATCH ? tag.meaning[static_cast<MeaningColumn>(column - FIRST_MEANING)]
                                : tag.watch[static_cast<WatchColumn>(column - FIRST_WATCH)];
}

/// Which columns a list needs: the first six always, any other if a tag says something in it.
std::array<bool, COLUMN_COUNT> usedColumns(const QVector<Tag> &tags)
{
    std::array<bool, COLUMN_COUNT> used = {};
    for (int column = 0; column < COLUMN_COUNT; ++column)
        used[static_cast<size_t>(column)] =
            column <= DESCRIPTION || std::any_of(tags.begin(), tags.end(), [&](const Tag &tag) {
                return !fieldText(tag, column).isEmpty();
            });
    return used;
}

template <typename TextOf>
void appendRow(QByteArray *csv, const std::array<bool, COLUMN_COUNT> &used, TextOf textOf)
{
    for (int column = 0; column < COLUMN_COUNT; ++column) {
        if (!used[static_cast<size_t>(column)])
            continue;
        if (column > 0)
            csv->append(',');
        appendCsvField(csv, textOf(column).toUtf8());
    }
    csv->append('\n');
}

} // namespace

TagListResult loadTagList(const QString &path)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        const QByteArray csv = file.read(LARGEST_FILE + 1);
        if (csv.size() > LARGEST_FILE)
            return unusable(QStringLiteral("is larger than %1 MiB").arg(LARGEST_FILE >> 20));
        if (file.error() == QFileDevice::NoError)
            return parseTagList(csv);
    }
    return unusable(QStringLiteral("cannot be read: %1").arg(file.errorString()));
}

QByteArray formatTagList(const QVector<Tag> &tags)
{
    const std::array<bool, COLUMN_COUNT> used = usedColumns(tags);
    QByteArray csv;
    appendRow(&csv, used, [](int column) { return tagColumnName(column); });
    for (const Tag &tag : tags)
        appendRow(&csv, used, [&](int column) { return fieldText(tag, column); });
    return csv;
}

bool saveTagList(const QString &path, const QVector<Tag> &tags, QString *error)
{
    const QByteArray csv = formatTagList(tags);
    QSaveFile file(path);
    const bool saved = file.open(QIODevice::WriteOnly) && file.write(csv) == csv.size();
    if (saved && file.commit())
        return true;
    if (error != nullptr)
        *error = file.errorString();
    return false;
}

QString formatTagError(const QString &file, const TagError &error)
{
    QString text = file;
    if (error.line > 0)
        text += QLatin1Char(':') + QString::number(error.line);
    if (error.column > 0)
        text += QLatin1String(": column ") + QString::number(error.column);
    if (!error.columnName.isEmpty())
        text += QLatin1String(" \"") + error.columnName + QLatin1Char('"');
    return text + QLatin1String(": ") + error.text;
}

} // namespace kvt
