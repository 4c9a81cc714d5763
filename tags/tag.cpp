#include "tags/tag.h"

namespace kvt
{

bool operator==(const Tag &a, const Tag &b)
{
    return a.name == b.name && a.area == b.area && a.address == b.address &&
           a.station == b.station && a.form == b.form && a.description == b.description &&
           a.meaning == b.meaning && a.watch == b.watch && a.acceptsTorn == b.acceptsTorn &&
           a.isWrittenDown == b.isWrittenDown;
}

} // namespace kvt
