// What the tests of a tormented process share: how long they go on, and the judge of what kvt
// shows.
#ifndef KVT_TESTS_PROCESS_TORTURE_H
#define KVT_TESTS_PROCESS_TORTURE_H

#include "tests/support/poll_run.h"

#include <QDir>
#include <QElapsedTimer>
#include <QMap>

#include <memory>

/// `quick`, or `full` where scripts/torture asks for all of it.
inline int effort(int quick, int full)
{
    return qEnvironmentVariableIsSet("KVT_TORTURE_FULL") ? full : quick;
}

/// The words that make a simulated PLC hold still: every tag keeps its value.
inline QStringList constantValues(const QStringList &more = QStringList())
{
    return QStringList{QStringLiteral("--values"), QStringLiteral("constant")} + more;
}

/// Number of descriptors that a process has open.
inline int openDescriptors(qint64 process)
{
    return static_cast<int>(QDir(QStringLiteral("/proc/%1/fd").arg(process))
                                .entryList(QDir::Files | QDir::System)
                                .size());
}

/// Knows what each tag of a line holds, and counts what kvt shows otherwise.
class ValueJudge
{
public:
    /// Looks at an undisturbed poll first. Not ready when it was none, or when two words of a
    /// station are alike, so that a mix-up would not show.
    explicit ValueJudge(const SimulatedLine &line)
    {
        KvtProcess kvt;
        isReady_ = kvt.run(pollArguments(line, "--cycles 5 --json --timeout 10000")) == 0;
        const QJsonArray tags = objects(&kvt).last().value(QStringLiteral("tags")).toArray();
        for (const QJsonValue &tag : tags)
            right_.insert(tag[QStringLiteral("name")].toString(),
                          tag[QStringLiteral("value")].toInt(-1));
        isReady_ = isReady_ && right_.size() == 5 &&
                   right_.value(QStringLiteral("level")) != right_.value(QStringLiteral("offset"));
    }

    bool isReady() const { return isReady_; }

    /// Takes a line of `kvt poll --json` into account. True if every tag is good in it, and was
    /// read at `since_ms` of the poll's time or later.
    bool sees(const QJsonObject &shown, double since_ms = 0)
    {
        const double now_ms = shown.value(QStringLiteral("elapsed_ms")).toDouble();
        const QJsonArray tags = shown.value(QStringLiteral("tags")).toArray();
        bool allGood = !tags.isEmpty();
        for (const QJsonValue &tag : tags) {
            const bool isGood = tag[QStringLiteral("quality")].toString() == QLatin1String("good");
            const QString name = tag[QStringLiteral("name")].toString();
            if (isGood && tag[QStringLiteral("value")].toInt(-1) != right_.value(name, -2))
                ++wrong_;
            const double read_ms = now_ms - tag[QStringLiteral("age_ms")].toDouble();
            allGood = allGood && isGood && read_ms >= since_ms;
        }
        return allGood;
    }

    /// Reads on until `lines` lines show nothing but good values that were read from now on. False
    /// when kvt ended before.
    bool seesGoodLines(KvtProcess *kvt, int lines)
    {
        double since_ms = -1;
        while (lines > 0) {
            const QJsonObject shown = kvt->readObject();
            if (shown.isEmpty())
                return false;
            if (since_ms < 0)
                since_ms = shown.value(QStringLiteral("elapsed_ms")).toDouble();
            lines -= sees(shown, since_ms) ? 1 : 0;
        }
        return true;
    }

    /// Reads on until the line is shown as up, or as down. False when kvt ended before.
    bool seesLine(KvtProcess *kvt, bool up)
    {
        for (;;) {
            const QJsonObject shown = kvt->readObject();
            if (shown.isEmpty())
                return false;
            sees(shown);
            if (shown.value(QStringLiteral("line_up")).toBool() == up)
                return true;
        }
    }

    /// Looks at all that is left of the output, and returns the last line.
    QJsonObject seesTheRest(KvtProcess *kvt)
    {
        QJsonObject last;
        for (const QJsonObject &shown : objects(kvt)) {
            sees(shown);
            last = shown;
        }
        return last;
    }

    /// How often a wrong value was shown as good.
    int wrong() const { return wrong_; }

private:
    QMap<QString, int> right_;
    bool isReady_ = false;
    int wrong_ = 0;
};

#endif
