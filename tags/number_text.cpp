#include "tags/number_text.h"

#include <charconv>

namespace kvt
{

namespace
{

// The largest power of ten below 2^64, and its zeros.
constexpr quint64 LARGEST_TEN = 10000000000000000000U;
constexpr int ZEROS_OF_LARGEST_TEN = 19;

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

void NumberText::appendShortest(float number)
{
    appendChars(number);
}

void NumberText::appendShortest(double number)
{
    appendChars(number);
}

void NumberText::appendRounded(double number, int digits)
{
    appendChars(number, std::chars_format::general, digits);
}

void NumberText::appendFixed(double number, int places)
{
    appendChars(number, std::chars_format::fixed, places);
}

} // namespace kvt
