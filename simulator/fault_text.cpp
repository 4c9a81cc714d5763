#include "simulator/fault_text.h"

#include <QRegularExpression>
#include <QStringList>

namespace kvt
{

namespace
{

constexpr qint64 DEFAULT_OUTAGE_ns = 1000000000;
constexpr int MOST_JITTER_SECONDS = 3600;

/// Parts of one rule, still text.
struct RuleText {
    QString name;
    QString when;
    QString duration;
    QString jitter;
    QString station;
};

bool split(const QString &text, RuleText *parts)
{
    static const QRegularExpression form(
        QStringLiteral("\\A([a-z]+)=([^:@~]+)(?::([^:@~]+)(?:~([^:@~]+))?)?(?:@([^:@~]+))?\\z"));
    const QRegularExpressionMatch match = form.match(text);
    *parts = {match.captured(1), match.captured(2), match.captured(3), match.captured(4),
              match.captured(5)};
    return match.hasMatch();
}

bool readName(const QString &name, FaultRule *rule)
{
    for (int i = 0; i < FAULT_KINDS; ++i) {
        rule->kind = static_cast<FaultKind>(i);
        if (name == QLatin1String(faultName(rule->kind)))
            return true;
    }
    return false;
}

/// Reads up to nine decimal digits; -1 when there is anything else.
qint64 readCount(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("\\A[0-9]{1,9}\\z"));
    return form.match(text).hasMatch() ? text.toLongLong() : -1;
}

// Kept in whole numbers, so that a probability is the same on every machine.
bool readChance(const QString &text, FaultRule *rule)
{
    static const QRegularExpression form(QStringLiteral("\\A([0-9]{1,3})(?:\\.([0-9]{1,7}))?%\\z"));
    const QRegularExpressionMatch match = form.match(text);
    const QString decimals = match.captured(2).leftJustified(7, QLatin1Char('0'));
    const qint64 chance = match.captured(1).toLongLong() * 10000000 + decimals.toLongLong();
    rule->trigger = FaultRule::Trigger::Chance;
    rule->chance = static_cast<quint32>(chance);
    return match.hasMatch() && chance <= CERTAIN;
}

bool readWhen(const QString &text, FaultRule *rule)
{
    if (text.endsWith(QLatin1Char('%')))
        return readChance(text, rule);
    if (text.startsWith(QLatin1String("every"))) {
        rule->trigger = FaultRule::Trigger::Every;
        rule->every = readCount(text.mid(5));
        return rule->every > 0;
    }
    const QStringList ends = text.split(QLatin1Char('-'));
    rule->trigger = FaultRule::Trigger::Range;
    rule->first = readCount(ends.first());
    rule->last = readCount(ends.last());
    return ends.size() <= 2 && rule->first > 0 && rule->last >= rule->first;
}

/// Reads "80ms"; -1 when it is no duration.
qint64 readDuration(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("\\A([0-9]{1,9})(us|ms|s)\\z"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return -1;
    const QString unit = match.captured(2);
    const qint64 scale = unit == QLatin1String("us")   ? 1000
                         : unit == QLatin1String("ms") ? 1000000
                                                       : 1000000000;
    return match.captured(1).toLongLong() * scale;
}

QString readTimes(const RuleText &parts, FaultRule *rule)
{
    const bool delay = rule->kind == FaultKind::Delay || rule->kind == FaultKind::LateReply;
    const bool outage = rule->kind == FaultKind::Silence || rule->kind == FaultKind::LineBreak;
    if (!parts.jitter.isEmpty() && !delay)
        return QStringLiteral("takes no jitter");
    if (parts.duration.isEmpty()) {
        rule->duration_ns = outage ? DEFAULT_OUTAGE_ns : 0;
        return delay ? QStringLiteral("needs a duration, for example 80ms") : QString();
    }
    if (!delay && !outage)
        return QStringLiteral("takes no duration");
    rule->duration_ns = readDuration(parts.duration);
    rule->jitter_ns = parts.jitter.isEmpty() ? 0 : readDuration(parts.jitter);
    if (rule->duration_ns < 0 || rule->jitter_ns < 0)
        return QStringLiteral("has a duration that is none (80ms, 2s, 300us)");
    if (rule->jitter_ns > MOST_JITTER_SECONDS * Q_INT64_C(1000000000))
        return QStringLiteral("has a jitter of more than an hour");
    return QString();
}

QString unknownName()
{
    QStringList names;
    for (int i = 0; i < FAULT_KINDS; ++i)
        names.append(QLatin1String(faultName(static_cast<FaultKind>(i))));
    return QStringLiteral("names no fault that is known (%1)").arg(names.join(QLatin1String(", ")));
}

/// Returns what is wrong with a rule; empty when all is well.
QString readRule(const QString &text, FaultRule *rule)
{
    RuleText parts;
    if (!split(text, &parts))
        return QStringLiteral("is not of the form name=when[:duration[~jitter]][@station]");
    if (!readName(parts.name, rule))
        return unknownName();
    if (!readWhen(parts.when, rule))
        return QStringLiteral("does not say when (0.5%, every100, 7 or 5-20)");
    if (!parts.station.isEmpty()) {
        const qint64 station = readCount(parts.station);
        if (station < 0 || station > 255)
            return QStringLiteral("names no station from 0 to 255");
        rule->station = static_cast<int>(station);
    }
    return readTimes(parts, rule);
}

} // namespace

FaultTextResult parseFaults(const QString &text)
{
    FaultTextResult result;
    if (text.trimmed().isEmpty())
        return result;
    const QStringList rules = text.split(QLatin1Char(','));
    for (const QString &ruleText : rules) {
        FaultRule rule;
        const QString error = readRule(ruleText.trimmed(), &rule);
        if (!error.isEmpty()) {
            result.rules.clear();
            result.error = QStringLiteral("fault \"%1\" %2").arg(ruleText.trimmed(), error);
            return result;
        }
        result.rules.append(rule);
    }
    return result;
}

} // namespace kvt
