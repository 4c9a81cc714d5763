// Values that tell which request they were given to.
#ifndef KVT_TESTS_FUZZ_SUPPORT_ISSUED_VALUES_H
#define KVT_TESTS_FUZZ_SUPPORT_ISSUED_VALUES_H

#include "tags/tag.h"

#include <QByteArray>

#include <array>

/// Every reply to a read carries the next serial number, in each of its data bytes; the high byte
/// of a word is the complement of its low byte. Numbers come back after some 250 reads, by when
/// nothing else remembers them.
class IssuedValues
{
public:
    /// Data digits for the reply to a read of `area` that belongs to the host's request number
    /// `request`.
    QByteArray digitsFor(kvt::Area area, int request)
    {
        // An acknowledgement repeats the command, 0x20 or 0x21, and never looks like a value.
        do
            serial_ = serial_ % 255 + 1;
        while (serial_ == 0x20 || serial_ == 0x21);
        requests_.at(static_cast<size_t>(serial_)) = request;
        QByteArray bytes(area == kvt::Area::C ? 70 : 1, static_cast<char>(serial_));
        if (area == kvt::Area::D)
            bytes.prepend(static_cast<char>(~serial_));
        return bytes.toHex().toUpper();
    }

    /// The request that the value `raw` of a tag was given to; -1 when it was given to none.
    int requestOf(kvt::Area area, int raw) const
    {
        const int serial = raw & 0xFF;
        if (area == kvt::Area::D && (raw >> 8) != (~serial & 0xFF))
            return -1;
        return requests_.at(static_cast<size_t>(serial));
    }

private:
    static std::array<int, 256> none()
    {
        std::array<int, 256> requests = {};
        requests.fill(-1);
        return requests;
    }

    std::array<int, 256> requests_ = none();
    int serial_ = 0;
};

#endif
