// The bytes of one input, taken from the front as numbers and texts.
#ifndef KVT_TESTS_FUZZ_SUPPORT_FUZZ_INPUT_H
#define KVT_TESTS_FUZZ_SUPPORT_FUZZ_INPUT_H

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstddef>
#include <cstdint>

/// Never ends: what is taken beyond the last byte is zero.
class FuzzInput
{
public:
    FuzzInput(const uint8_t *bytes, size_t size) : next_(bytes), end_(bytes + size) {}

    bool isEmpty() const { return next_ == end_; }
    int left() const { return static_cast<int>(end_ - next_); }

    int byte() { return isEmpty() ? 0 : *next_++; }

    /// A number from 0 to `count` - 1; `count` is 1 to 256.
    int below(int count) { return byte() % count; }

    /// True once in `count` values of the byte.
    bool once(int count) { return below(count) == count - 1; }

    bool flag() { return once(2); }

    /// Two or four bytes, least significant first.
    int word()
    {
        const int low = byte();
        return low | byte() << 8;
    }
    int32_t number()
    {
        const auto lowHalf = static_cast<uint32_t>(word());
        return static_cast<int32_t>(lowHalf | static_cast<uint32_t>(word()) << 16);
    }

    /// At most `count` bytes; fewer when fewer are left.
    QByteArray bytes(int count)
    {
        const int taken = std::min(count, left());
        const QByteArray result(reinterpret_cast<const char *>(next_), taken);
        next_ += taken;
        return result;
    }

    QByteArray rest() { return bytes(left()); }

    /// A text of at most `count` Latin-1 characters.
    QString text(int count) { return QString::fromLatin1(bytes(count)); }

private:
    const uint8_t *next_;
    const uint8_t *end_;
};

#endif
