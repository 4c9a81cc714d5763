// Names of values and of bits: "0=off;1=manual" and "0=door open;3=dry run".
#ifndef KVT_TAGS_VALUE_LABELS_H
#define KVT_TAGS_VALUE_LABELS_H

#include "tags/value_type.h"

#include <QStringList>
#include <QVector>

#include <optional>

namespace kvt
{

/// True for the text of a decimal number, or of a raw one.
bool isNumberText(const QString &text);

/// Names of raw values.
class ValueLabels
{
public:
    /// Reads "0=off;1=manual": raw values of a type, each with its name. Returns an empty text, or
    /// says what is wrong; `*labels` is then left alone. No two may be alike, whatever their case,
    /// and none may read as a number, or as on or off of the other value.
    static QString parse(const QString &text, const ValueForm &form, Area area,
                         ValueLabels *labels);

    bool isEmpty() const { return labels_.isEmpty(); }
    QStringList names() const;

    /// Returns the name of a value, null when it has none. Any thread.
    const QString *nameOf(quint64 bits) const;

    /// Returns the value of a name, in any case.
    std::optional<quint64> bitsOf(const QString &name) const;

private:
    struct Label {
        quint64 bits;
        QString name;
    };

    QVector<Label> labels_;
};

/// Names of the bits of a value. A value is shown as the names of the bits that are set, lowest
/// first, as in "door open, dry run"; a set bit without a name is "bit 5", and 0 is "none".
class BitNames
{
public:
    /// Reads "0=door open;3=dry run"; the rest is as with labels. No name has a comma, is a
    /// number, "none" or "bit 5".
    static QString parse(const QString &text, const ValueForm &form, Area area, BitNames *names);

    bool isEmpty() const { return names_.isEmpty(); }
    QStringList names() const; ///< from the lowest bit on, without what has none

    /// Returns what is shown for a value. Any thread.
    QString textOf(quint64 bits) const;

    /// Reads what `textOf` shows, names in any order and case; none when one is not known.
    std::optional<quint64> bitsOf(const QString &text) const;

    /// Returns the first name in a text that is not known; empty when all are.
    QString unknownIn(const QString &text) const;

private:
    std::optional<int> bitOf(const QString &name) const;

    QVector<QString> names_; // by bit; empty where there is none
};

} // namespace kvt

#endif
