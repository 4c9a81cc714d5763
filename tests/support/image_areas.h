// Image areas on the heap, exactly as long as the driver's or with a margin on both sides, so that
// a sanitizer sees a step outside.
#ifndef KVT_TESTS_SUPPORT_IMAGE_AREAS_H
#define KVT_TESTS_SUPPORT_IMAGE_AREAS_H

#include "driver/driver_object.h"

#include <QMap>
#include <QMetaType>

#include <initializer_list>
#include <utility>
#include <vector>

typedef std::vector<quint8> ByteArea;
typedef std::vector<quint16> WordArea;

constexpr int AREA_WORDS = IMAGE_AREA_BYTES / 2;
constexpr int AREA_BITS = IMAGE_AREA_BYTES * 8;

/// A byte area that holds `fill` everywhere.
inline ByteArea byteArea(quint8 fill = 0)
{
    return ByteArea(size_t(IMAGE_AREA_BYTES), fill);
}

/// A word area that holds `fill` everywhere.
inline WordArea wordArea(quint16 fill = 0)
{
    return WordArea(size_t(AREA_WORDS), fill);
}

typedef QMap<int, int> Changes;
Q_DECLARE_METATYPE(Changes)

/// What differs from `fill`, by index; `first` is that of the front. Comparing it shows what a call
/// changed and nothing else.
template <typename Area>
Changes changes(const Area &area, typename Area::value_type fill = 0, int first = 0)
{
    Changes result;
    for (size_t i = 0; i < area.size(); ++i) {
        if (area[i] != fill)
            result.insert(int(i) + first, int(area[i]));
    }
    return result;
}

/// Pairs of index and value as what `changes` finds. QMap itself takes braces since Qt 5 only.
inline Changes changesAt(std::initializer_list<std::pair<int, int>> all)
{
    Changes result;
    for (const std::pair<int, int> &change : all)
        result.insert(change.first, change.second);
    return result;
}

/// Elements on either side of the driver's own length.
constexpr int AREA_MARGIN = 16;

/// An area that reaches beyond the driver's length on both sides; indices are those of the pointer.
template <typename Unit>
class WideArea
{
public:
    explicit WideArea(Unit fill = 0)
        : fill_(fill), units_(2 * AREA_MARGIN + IMAGE_AREA_BYTES / sizeof(Unit), fill)
    {
    }
    Unit *data() { return units_.data() + AREA_MARGIN; }
    Changes changed() const { return changes(units_, fill_, -AREA_MARGIN); }

private:
    Unit fill_;
    std::vector<Unit> units_;
};
typedef WideArea<quint8> WideBytes;
typedef WideArea<quint16> WideWords;

#endif
