// Address texts of tags: what they mean to the PLC and to the driver.
#ifndef KVT_TAGS_TAG_ADDRESS_H
#define KVT_TAGS_TAG_ADDRESS_H

#include "tags/tag.h"

#include <QtGlobal>

namespace kvt
{

/// The parts of an address text, each within its range.
struct TagAddress {
    int a = 0; ///< command byte, 0 to 255
    int b = 0; ///< high digit of the address byte, 0 to 15
    int c = 0; ///< 0 or 1: added to b; in X and D also 2 to 255: the address byte itself, b is 0
    int d = 0; ///< area C: element of the block, 0 to 69; else 0
};

/// Reads `text` as an address of `area`. Returns an empty text and fills `*address`, or says what
/// is wrong with it. An address whose read would set off a command is wrong as well.
QString parseTagAddress(Area area, const QString &text, TagAddress *address);

/// True when a write to this address, which must be good, is a command that carries no value. The
/// driver goes by the text as it stands: 018.1.0 is an ordinary write.
bool isCommand(Area area, const QString &text);

/// Returns the address byte with which a read asks for the value (in C: for its block).
quint8 readAddressByte(const TagAddress &address);

/// Returns the address byte with which a write goes out.
quint8 writeAddressByte(const TagAddress &address);

/// Returns the driver's number for an address: a*32 + b*2 + c in X and D, b*160 + c*80 + d in C.
int numericAddress(Area area, const TagAddress &address);

/// The same for a tag whose address is good; -1 when it is not.
int numericAddress(const Tag &tag);

/// Returns the number of the entry that the driver's read list keeps for an address: the numeric
/// address, in area C that of the block's first element.
int readListAddress(Area area, const TagAddress &address);

} // namespace kvt

#endif
