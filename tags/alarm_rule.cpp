#include "tags/alarm_rule.h"

#include "tags/duration_text.h"

namespace kvt
{

namespace
{

using Column = WatchColumn;

const Column LIMITS[] = {Column::LoLo, Column::Lo, Column::Hi, Column::HiHi};
constexpr int LIMIT_COUNT = 4;
constexpr int LO = 1;
constexpr int HI = 2;

const char *const PRIORITIES[] = {"low", "medium", "high", "critical"};

/// Reads the texts of one tag.
class RuleReader
{
public:
    RuleReader(const Tag &tag, const std::optional<ValueConverter> &converter,
               QVector<WatchProblem> *problems)
        : tag_(tag), texts_(tag.watch), converter_(converter), problems_(problems)
    {
    }

    std::optional<AlarmRule> read();

private:
    bool has(Column column) const { return !texts_[column].isEmpty(); }
    bool hasLimits() const;
    void fail(Column column, const QString &text) { problems_->append({column, text, false}); }
    void warn(Column column, const QString &text) { problems_->append({column, text, true}); }
    void warnOfUseless();
    std::optional<Decimal> number(Column column) { return numberIn(texts_, column, problems_); }
    void readLimits();
    void checkOrder();
    void readHysteresis();
    void readBits();
    void readDelay(Column column, qint64 *delay_ns);
    void readPriority();

    const Tag &tag_;
    const WatchTexts &texts_;
    const std::optional<ValueConverter> &converter_;
    QVector<WatchProblem> *problems_;
    AlarmRule rule_;
    std::optional<Decimal> limits_[LIMIT_COUNT];
};

bool RuleReader::hasLimits() const
{
    for (const Column column : LIMITS)
        if (has(column))
            return true;
    return false;
}

void RuleReader::readLimits()
{
    std::optional<double> *const targets[] = {&rule_.lolo, &rule_.lo, &rule_.hi, &rule_.hihi};
    for (int i = 0; i < LIMIT_COUNT; ++i) {
        if (has(LIMITS[i]) && !isNumeric(tag_.form.type)) {
            fail(LIMITS[i], QStringLiteral("values of type %1 have none; column \"alarm\" names a "
                                           "value that is an alarm")
                                .arg(typeName(tag_.form.type)));
            continue;
        }
        limits_[i] = number(LIMITS[i]);
        if (limits_[i])
            *targets[i] = toDouble(*limits_[i]);
    }
    checkOrder();
}

/// Each limit against the nearest given one below it: lolo <= lo < hi <= hihi.
void RuleReader::checkOrder()
{
    int below = -1;
    for (int i = 0; i < LIMIT_COUNT; ++i) {
        if (!limits_[i])
            continue;
        if (below >= 0) {
            const int order = compare(*limits_[below], *limits_[i]);
            const bool mayBeEqual = i < HI || below > LO;
            if (order > 0 || (order == 0 && !mayBeEqual))
                fail(LIMITS[i],
                     QStringLiteral("%1 is %2 %3, which is %4")
                         .arg(texts_[LIMITS[i]],
                              order > 0 ? QStringLiteral("below") : QStringLiteral("no more than"),
                              watchColumnName(LIMITS[below]), texts_[LIMITS[below]]));
        }
        below = i;
    }
}

void RuleReader::readHysteresis()
{
    const std::optional<Decimal> hysteresis = number(Column::Hysteresis);
    if (!hysteresis)
        return;
    rule_.hysteresis = toDouble(*hysteresis);
    if (hysteresis->mantissa < 0) {
        fail(Column::Hysteresis, QStringLiteral("%1 is below 0").arg(texts_[Column::Hysteresis]));
        return;
    }
    const std::optional<double> low = rule_.lo ? rule_.lo : rule_.lolo;
    const std::optional<double> high = rule_.hi ? rule_.hi : rule_.hihi;
    if (low && high && *low < *high && rule_.hysteresis >= *high - *low)
        fail(Column::Hysteresis,
             QStringLiteral("%1 is no less than the gap between the limits: a value would stay in "
                            "alarm once it is")
                 .arg(texts_[Column::Hysteresis]));
}

void RuleReader::readBits()
{
    const QString text = texts_[Column::Alarm].trimmed();
    if (hasLimits()) {
        fail(Column::Alarm, QStringLiteral("a value has either limits or a name that is an alarm"));
        return;
    }
    if (isFloat(tag_.form.type) || tag_.form.type == ValueType::String) {
        fail(Column::Alarm,
             QStringLiteral("values of type %1 have no names").arg(typeName(tag_.form.type)));
        return;
    }
    if (!converter_)
        return;
    const EnteredValue entered = converter_->enter(text);
    if (!entered.error.isEmpty()) {
        fail(Column::Alarm,
             QStringLiteral("\"%1\" is no value, label or bit of this tag").arg(text));
        return;
    }
    const bool isBit = !tag_.meaning[MeaningColumn::Bits].isEmpty();
    if (isBit && entered.bits == 0)
        fail(Column::Alarm, QStringLiteral("\"%1\" names no bit").arg(text));
    rule_.bits = AlarmBits{isBit ? entered.bits : ~quint64{0}, entered.bits};
}

void RuleReader::readDelay(Column column, qint64 *delay_ns)
{
    if (!has(column))
        return;
    const std::optional<qint64> delay = parseDuration_ns(texts_[column]);
    if (delay)
        *delay_ns = *delay;
    else
        fail(column, QStringLiteral("\"%1\" is no delay: 0, or a number with ms, s, min or h, of a "
                                    "day at most")
                         .arg(texts_[column]));
}

void RuleReader::readPriority()
{
    if (!has(Column::Priority))
        return;
    for (int i = 0; i < 4; ++i) {
        if (texts_[Column::Priority].compare(QLatin1String(PRIORITIES[i]), Qt::CaseInsensitive) ==
            0) {
            rule_.priority = static_cast<AlarmPriority>(i);
            return;
        }
    }
    fail(Column::Priority, QStringLiteral("\"%1\" is no priority (low, medium, high or critical)")
                               .arg(texts_[Column::Priority]));
}

void RuleReader::warnOfUseless()
{
    const bool isAlarm = hasLimits() || has(Column::Alarm);
    for (const Column column :
         {Column::OnDelay, Column::OffDelay, Column::Priority, Column::AlarmText})
        if (has(column) && !isAlarm)
            warn(column, QStringLiteral("says nothing: the tag has neither a limit nor an alarm"));
    if (has(Column::Hysteresis) && !hasLimits())
        warn(Column::Hysteresis, QStringLiteral("says nothing: the tag has no limit"));
}

std::optional<AlarmRule> RuleReader::read()
{
    const int before = problems_->size();
    readLimits();
    readHysteresis();
    if (has(Column::Alarm))
        readBits();
    readDelay(Column::OnDelay, &rule_.onDelay_ns);
    readDelay(Column::OffDelay, &rule_.offDelay_ns);
    readPriority();
    rule_.text = texts_[Column::AlarmText];
    bool isGood = rule_.hasLimits() || rule_.bits;
    for (int i = before; i < problems_->size(); ++i)
        isGood = isGood && problems_->at(i).isWarning;
    warnOfUseless();
    return isGood ? std::make_optional(rule_) : std::nullopt;
}

} // namespace

QString alarmLevelName(AlarmLevel level)
{
    static const char *const names[] = {"none", "lolo", "lo", "hi", "hihi", "set"};
    return QLatin1String(names[static_cast<int>(level)]);
}

QString alarmPriorityName(AlarmPriority priority)
{
    return QLatin1String(PRIORITIES[static_cast<int>(priority)]);
}

std::optional<AlarmRule> readAlarmRule(const Tag &tag,
                                       const std::optional<ValueConverter> &converter,
                                       QVector<WatchProblem> *problems)
{
    return RuleReader(tag, converter, problems).read();
}

} // namespace kvt
