#include "tags/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace kvt
{

namespace
{

// The largest power of ten below 2^64, and its zeros.
constexpr quint64 LARGEST_TEN = 10000000000000000000U;
constexpr int ZEROS_OF_LARGEST_TEN = 19;

// From here on the digits of a number are read more easily than its exponent.
template <typename Number>
constexpr Number SMALLEST_PLAIN = Number(1e-5);

/// Returns a number that lies halfway between two with `places` digits behind the point, rounded
/// away from 0, in units of the last one; none for any other. Times 2 * 10^places it is odd, and
/// since powers of 5 are odd, times 2^(places + 1) as well.
std::optional<Int128> roundedHalf(double number, int places)
{
    constexpr double LARGEST_ODD = 9007199254740991; // 2^53 - 1
    const double size = std::abs(number) * static_cast<double>(qint64(2) << places);
    if (size > LARGEST_ODD)
        return std::nullopt;
    const auto doubled = static_cast<qint64>(size);
    if (doubled % 2 == 0 || static_cast<double>(doubled) != size)
        return std::nullopt;
    Int128 units = doubled;
    for (int i = 0; i < places; ++i)
        units *= 5;
    units = (units + 1) / 2;
    return number < 0 ? -units : units;
}

} // namespace

void NumberText::append(char character)
{
    if (size_ < CAPACITY)
        text_[size_++] = character;
}

void NumberText::append(const char *text)
{
    for (; *text != '\0'; ++text)
        append(*text);
}

template <typename... Arguments>
void NumberText::appendChars(Arguments... arguments)
{
    const std::to_chars_result result =
        std::to_chars(text_ + size_, text_ + CAPACITY, arguments...);
    if (result.ec == std::errc())
        size_ = static_cast<int>(result.ptr - text_);
}

/// Appends a number with zeros in front, up to `digits` of it.
void NumberText::appendDigits(quint64 number, int digits)
{
    char buffer[ZEROS_OF_LARGEST_TEN + 1] = {};
    const std::to_chars_result end = std::to_chars(buffer, buffer + sizeof buffer, number);
    for (auto missing = digits - (end.ptr - buffer); missing > 0; --missing)
        append('0');
    for (const char *next = buffer; next != end.ptr; ++next)
        append(*next);
}

void NumberText::appendDecimal(Int128 number, int places)
{
    if (number < 0)
        append('-');
    const UInt128 whole = magnitude(number);
    const int start = size_;
    const int fewest = places + 1; // digits, one of them ahead of the point
    if (whole < LARGEST_TEN) {
        appendDigits(static_cast<quint64>(whole), fewest);
    } else {
        const UInt128 high = whole / LARGEST_TEN;
        if (high < LARGEST_TEN) {
            appendDigits(static_cast<quint64>(high), fewest - ZEROS_OF_LARGEST_TEN);
        } else {
            appendDigits(static_cast<quint64>(high / LARGEST_TEN), 1);
            appendDigits(static_cast<quint64>(high % LARGEST_TEN), ZEROS_OF_LARGEST_TEN);
        }
        appendDigits(static_cast<quint64>(whole % LARGEST_TEN), ZEROS_OF_LARGEST_TEN);
    }
    if (places == 0 || size_ == CAPACITY || size_ - start <= places)
        return;
    ++size_;
    for (int i = 1; i <= places; ++i)
        text_[size_ - i] = text_[size_ - i - 1];
    text_[size_ - places - 1] = '.';
}

void NumberText::appendHex(quint64 bits, int digits)
{
    append("0x");
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        append("0123456789ABCDEF"[bits >> shift & 0xF]);
}

template <typename Number>
void NumberText::appendPlain(Number number, Number end)
{
    const Number size = std::abs(number);
    if (size >= SMALLEST_PLAIN<Number> && size < end)
        appendChars(number, std::chars_format::fixed);
    else
        appendChars(number);
}

void NumberText::appendShortest(float number)
{
    appendPlain(number, 1e7F);
}

void NumberText::appendShortest(double number)
{
    appendPlain(number, 1e15);
}

void NumberText::appendRounded(double number, int digits)
{
    appendChars(number, std::chars_format::general, digits);
}

void NumberText::appendFixed(double number, int places)
{
    const std::optional<Int128> half = roundedHalf(number, places);
    if (half) { // std::to_chars would round it to even
        appendDecimal(*half, places);
        return;
    }
    const int start = size_;
    appendChars(number, std::chars_format::fixed, places);
    const auto isZero = [](char c) { return c == '-' || c == '0' || c == '.'; };
    if (number < 0 && std::all_of(text_ + start, text_ + size_, isZero)) {
        std::copy(text_ + start + 1, text_ + size_, text_ + start);
        --size_;
    }
}

} // namespace kvt
