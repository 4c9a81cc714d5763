// The text of a number, made without allocation.
#ifndef KVT_TAGS_NUMBER_TEXT_H
#define KVT_TAGS_NUMBER_TEXT_H

#include "tags/int128.h"

#include <QLatin1String>
#include <QString>

namespace kvt
{

/// Text of at most 63 characters, whose decimal sign is a point whatever the locale.
class NumberText
{
public:
    QLatin1String view() const { return QLatin1String(text_, size_); }
    QString toString() const { return view(); }
    const char *data() const { return text_; }
    int size() const { return size_; }

    void clear() { size_ = 0; }
    /// Appends; what finds no room is left out.
    void append(char character);
    void append(const char *text);

    /// Appends `number` * 10^-`places`, with as many digits behind the point; 0 to 30 places.
    void appendDecimal(Int128 number, int places);

    /// Appends "0x" and `digits` upper-case hexadecimal digits, 1 to 16.
    void appendHex(quint64 bits, int digits);

    /// Appends a text from which the number is read back: without an exponent from 1e-5 up to 1e7
    /// (float) or 1e15 (double), else the shortest.
    void appendShortest(float number);
    void appendShortest(double number);

    /// Appends the number with `digits` significant digits at most, 1 to 17.
    void appendRounded(double number, int digits);

    /// Appends the number with `places` digits behind the point, 0 to 15; its magnitude is below
    /// 1e16. Halves are rounded away from 0, and what becomes 0 has no minus; -0 keeps its own.
    void appendFixed(double number, int places);

private:
    static constexpr int CAPACITY = 63;

    template <typename... Arguments>
    void appendChars(Arguments... arguments);
    template <typename Number>
    void appendPlain(Number number, Number end);
    void appendDigits(quint64 number, int digits);

    char text_[CAPACITY + 1] = {};
    int size_ = 0;
};

} // namespace kvt

#endif
