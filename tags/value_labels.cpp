#include "tags/value_labels.h"

#include "tags/decimal.h"
#include "tags/raw_number.h"

namespace kvt
{

namespace
{

struct Entry {
    QString key;
    QString name;
};

/// Splits "a=b;c=d"; an error if a part has no key or no name.
QString splitEntries(const QString &text, QVector<Entry> *entries)
{
    for (const QString &part : text.split(QLatin1Char(';'))) {
        const QString entry = part.trimmed();
        if (entry.isEmpty())
            continue;
        const int sign = entry.indexOf(QLatin1Char('='));
        if (sign < 0)
            return QStringLiteral("\"%1\" is not a number, = and a name").arg(entry);
        const Entry split{entry.left(sign).trimmed(), entry.mid(sign + 1).trimmed()};
        if (split.name.isEmpty())
            return QStringLiteral("\"%1\" has no name").arg(entry);
        entries->append(split);
    }
    return QString();
}

bool sameName(const QString &a, const QString &b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

/// Reads "bit 5"; -1 when it is anything else or above 63.
int numberedBit(const QString &name)
{
    if (!name.startsWith(QLatin1String("bit "), Qt::CaseInsensitive))
        return -1;
    const EnteredRaw number = enterRaw(ValueType::U8, Area::X, name.mid(4));
    return number.error.isEmpty() && number.number < 64 ? static_cast<int>(number.number) : -1;
}

/// Says that the name of a value would be entered for another one; empty when it would not.
QString readingFault(ValueType type, const QString &name, quint64 bits)
{
    const EnteredRaw truth = enterRaw(ValueType::Bool, Area::X, name);
    const bool isTruth = type == ValueType::Bool || type == ValueType::Bit;
    if (isTruth && truth.error.isEmpty() && truth.number == bits)
        return QString();
    if (isNumberText(name) || (isTruth && truth.error.isEmpty()))
        return QStringLiteral("\"%1\" is entered for another value").arg(name);
    return QString();
}

/// Says what keeps a text from being the name of a bit.
QString nameFault(const QString &name)
{
    if (name.contains(QLatin1Char(',')))
        return QStringLiteral("\"%1\" has a comma in it").arg(name);
    if (isNumberText(name) || sameName(name, QStringLiteral("none")) || numberedBit(name) >= 0)
        return QStringLiteral("\"%1\" is shown or entered for something else").arg(name);
    return QString();
}

QString takenTwice(const QString &what)
{
    return QStringLiteral("\"%1\" is there twice").arg(what);
}

} // namespace

bool isNumberText(const QString &text)
{
    Decimal ignored;
    return readDecimal(text, &ignored) == NumberReading::Good ||
           enterRaw(ValueType::U64, Area::D, text).error.isEmpty();
}

QString ValueLabels::parse(const QString &text, const ValueForm &form, Area area,
                           ValueLabels *labels)
{
    QVector<Entry> entries;
    const QString fault = splitEntries(text, &entries);
    if (!fault.isEmpty())
        return fault;
    ValueLabels read;
    for (const Entry &entry : entries) {
        const EnteredRaw key = enterRaw(form.type, area, entry.key);
        if (!key.error.isEmpty())
            return key.error;
        const quint64 bits = rawBits(form.type, key.number);
        if (read.nameOf(bits) != nullptr)
            return takenTwice(entry.key);
        if (read.bitsOf(entry.name))
            return takenTwice(entry.name);
        const QString wrong = readingFault(form.type, entry.name, bits);
        if (!wrong.isEmpty())
            return wrong;
        read.labels_.append({bits, entry.name});
    }
    *labels = read;
    return QString();
}

const QString *ValueLabels::nameOf(quint64 bits) const
{
    for (const Label &label : labels_)
        if (label.bits == bits)
            return &label.name;
    return nullptr;
}

std::optional<quint64> ValueLabels::bitsOf(const QString &name) const
{
    for (const Label &label : labels_)
        if (sameName(label.name, name))
            return label.bits;
    return std::nullopt;
}

QStringList ValueLabels::names() const
{
    QStringList names;
    for (const Label &label : labels_)
        names.append(label.name);
    return names;
}

QString BitNames::parse(const QString &text, const ValueForm &form, Area area, BitNames *names)
{
    QVector<Entry> entries;
    const QString fault = splitEntries(text, &entries);
    if (!fault.isEmpty())
        return fault;
    const int count = 8 * byteCount(form, area);
    BitNames read;
    read.names_.resize(entries.isEmpty() ? 0 : count);
    for (const Entry &entry : entries) {
        const EnteredRaw key = enterRaw(ValueType::U8, Area::X, entry.key);
        if (!key.error.isEmpty() || key.number >= count)
            return QStringLiteral("\"%1\" is no bit of %2 (0 to %3)")
                .arg(entry.key, typeName(form.type), QString::number(count - 1));
        const QString wrong = nameFault(entry.name);
        if (!wrong.isEmpty())
            return wrong;
        QString &name = read.names_[static_cast<int>(key.number)];
        if (!name.isEmpty())
            return takenTwice(entry.key);
        if (read.bitOf(entry.name))
            return takenTwice(entry.name);
        name = entry.name;
    }
    *names = read;
    return QString();
}

std::optional<int> BitNames::bitOf(const QString &name) const
{
    for (int bit = 0; bit < names_.size(); ++bit)
        if (!names_.at(bit).isEmpty() && sameName(names_.at(bit), name))
            return bit;
    const int bit = numberedBit(name);
    return bit >= 0 && bit < names_.size() ? std::make_optional(bit) : std::nullopt;
}

QString BitNames::textOf(quint64 bits) const
{
    QStringList set;
    for (int bit = 0; bit < names_.size(); ++bit)
        if ((bits >> bit & 1) != 0)
            set.append(names_.at(bit).isEmpty() ? QStringLiteral("bit %1").arg(bit)
                                                : names_.at(bit));
    return set.isEmpty() ? QStringLiteral("none") : set.join(QStringLiteral(", "));
}

std::optional<quint64> BitNames::bitsOf(const QString &text) const
{
    if (sameName(text.trimmed(), QStringLiteral("none")))
        return 0;
    quint64 bits = 0;
    for (const QString &name : text.split(QLatin1Char(','))) {
        const std::optional<int> bit = bitOf(name.trimmed());
        if (!bit)
            return std::nullopt;
        bits |= quint64(1) << *bit;
    }
    return bits;
}

QStringList BitNames::names() const
{
    QStringList names;
    for (const QString &name : names_)
        if (!name.isEmpty())
            names.append(name);
    return names;
}

QString BitNames::unknownIn(const QString &text) const
{
    for (const QString &name : text.split(QLatin1Char(',')))
        if (!bitOf(name.trimmed()))
            return name.trimmed();
    return QString();
}

} // namespace kvt
