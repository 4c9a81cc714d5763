// How kvt poll is started on a simulated line, and what it has shown with --json.
#ifndef KVT_TESTS_SUPPORT_POLL_RUN_H
#define KVT_TESTS_SUPPORT_POLL_RUN_H

#include "tests/support/simulated_line.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVector>

#include <algorithm>

inline QStringList pollArguments(const SimulatedLine &line, const char *more)
{
    return line.arguments(QStringLiteral("poll ") + QString::fromLatin1(more)) +
           QStringList{QStringLiteral("--tags"), line.tagFile()};
}

/// All lines of standard output as JSON objects.
inline QVector<QJsonObject> objects(KvtProcess *kvt)
{
    QVector<QJsonObject> result;
    const QByteArrayList lines = kvt->output().trimmed().split('\n');
    for (const QByteArray &line : lines)
        result.append(QJsonDocument::fromJson(line).object());
    return result;
}

inline QJsonObject tagOf(const QJsonObject &shown, const char *name)
{
    const QJsonArray tags = shown.value(QStringLiteral("tags")).toArray();
    for (const QJsonValue &tag : tags)
        if (tag.toObject().value(QStringLiteral("name")).toString() == QLatin1String(name))
            return tag.toObject();
    return QJsonObject();
}

/// Number of tags of that quality.
inline int countOf(const QJsonObject &shown, const char *quality)
{
    const QJsonArray tags = shown.value(QStringLiteral("tags")).toArray();
    return static_cast<int>(std::count_if(tags.begin(), tags.end(), [&](const QJsonValue &tag) {
        return tag[QStringLiteral("quality")].toString() == QLatin1String(quality);
    }));
}

inline QJsonObject totalOf(const QJsonObject &shown)
{
    return shown.value(QStringLiteral("summary"))
        .toObject()
        .value(QStringLiteral("total"))
        .toObject();
}

#endif
