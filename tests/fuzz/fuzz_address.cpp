// Address texts: the driver's number for any text, and the addresses of tags, which have to mean
// the same to the tag list as to the driver and its frames.
#include "driver/entry_points.h"
#include "tags/tag_address.h"
#include "tests/fuzz/support/fuzz_input.h"
#include "tests/fuzz/support/promise.h"
#include "tests/support/driver_fixture.h"
#include "varlist/address_text.h"

#include <QStringList>

#include <vector>

namespace
{

constexpr int STATION = 0xA7;

quint32 weighted(const QStringList &parts, int index, quint32 weight)
{
    return static_cast<quint32>(parts.value(index).toInt()) * weight;
}

// What driver/entry_points.h says, in its plainest form.
int expectedNumber(int area, const QString &text)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    if (area == AREA_X || area == AREA_D)
        return static_cast<int>(weighted(parts, 0, 32) + weighted(parts, 1, 2) +
                                weighted(parts, 2, 1));
    if (area == AREA_C)
        return static_cast<int>(weighted(parts, 1, 160) + weighted(parts, 2, 80) +
                                weighted(parts, 3, 1));
    return 0;
}

QByteArray frameStart(int command, int addressByte)
{
    const char bytes[] = {static_cast<char>(STATION), static_cast<char>(command),
                          static_cast<char>(addressByte)};
    return FRAME_ENQ + QByteArray(bytes, sizeof bytes).toHex().toUpper();
}

QByteArray nextFrame()
{
    const Protocol *const frame = ComCommunication();
    require(frame != nullptr, "a good address makes a frame");
    return frame->frame;
}

RW_VAR variable(int area, const QString &text)
{
    RW_VAR var;
    var.areaType = area;
    var.addressText = text;
    var.station = STATION;
    return var;
}

void checkRead(int area, const QString &text, const kvt::TagAddress &address)
{
    static std::vector<quint16> words(BLOCK_SELECT_WORD + 1);
    ComInfo info;
    resetDriver(info);
    info.purgeByStation = 1;
    words[BLOCK_SELECT_WORD] = static_cast<quint16>(address.b);
    FlashLocalRegister(nullptr, words.data(), nullptr);
    RW_VAR var = variable(area, text);
    require(AddListOnceReadVar(&var, 0) == 1, "a good address can be read once");
    require(kvt::readListAddress(kvt::Area(area), address) == var.address,
            "tags know the entries of the read list");
    require(nextFrame() == frameStart(address.a, kvt::readAddressByte(address)) + FRAME_CR,
            "tags know the frame of a read");
}

void checkWrite(int area, const QString &text, const kvt::TagAddress &address)
{
    ComInfo info;
    resetDriver(info);
    info.purgeByStation = 1;
    info.hostWriteMode = HOST_WRITE_TO_PLC;
    QByteArray value("\x34\x12", 2);
    const int queued = SetRegisterData(QString(), area, text, STATION, value, 1, 0, 1);
    require(queued == (area == AREA_C ? 0 : 1), "all areas but C can be written");
    if (queued == 0)
        return;
    const QByteArray digits = kvt::isCommand(kvt::Area(area), text) ? QByteArray()
                              : area == AREA_X                      ? QByteArray("34")
                                                                    : QByteArray("1234");
    require(nextFrame() ==
                frameStart(address.a, kvt::writeAddressByte(address)) + digits + FRAME_CR,
            "tags know the frame of a write");
}

void checkTagAddress(kvt::Area area, const QString &text)
{
    kvt::TagAddress address;
    if (!kvt::parseTagAddress(area, text, &address).isEmpty())
        return;
    const bool isBlock = area == kvt::Area::C;
    require(address.a >= 0 && address.a <= 255 && address.b >= 0 && address.b <= 15 &&
                address.c >= 0 && address.c <= (isBlock ? 1 : 255) && address.d >= 0 &&
                address.d <= (isBlock ? 69 : 0),
            "the parts of a good address are in their ranges");
    require(kvt::numericAddress(area, address) == PLCAddressChangeIntef(int(area), text),
            "tags and driver agree about the number of an address");
    checkRead(int(area), text, address);
    checkWrite(int(area), text, address);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput input(data, size);
    const int selector = input.byte();
    const QByteArray bytes = input.rest();
    const QString text =
        (selector & 4) != 0 ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
    const int area = selector & 3;
    require(PLCAddressChangeIntef(area, text) == expectedNumber(area, text),
            "the number of a text is the weighted sum of its parts");
    require(StringAddressToInt(area, text) == PLCAddressChangeIntef(area, text),
            "host and driver have one number for a text");
    if (area <= AREA_C)
        checkTagAddress(kvt::Area(area), text);
    return 0;
}
