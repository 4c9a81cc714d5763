// Image areas on the heap, exactly as long as the driver's or with a margin on both sides, so that
// a sanitizer sees a step outside.
#ifndef KVT_TESTS_SUPPORT_IMAGE_AREAS_H
#define KVT_TESTS_SUPPORT_IMAGE_AREAS_H

#include "driver/driver_object.h"

#include <QMap>

#include <initializer_list>
#include <utility>
#include <vector>

typedef std::vector<quint8> ByteArea;
typedef std::vector<quint16> WordArea;

const int AREA_WORDS = IMAGE_AREA_BYTES / 2;
const int AREA_BITS = IMAGE_AREA_BYTES * 8;

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

/// What differs from `fill`, by index. Comparing it shows what a call changed and nothing else.
template <typename Area>
QMap<int, int> changes(const Area &area, typename Area::value_type fill = 0)
{
    QMap<int, int> result;
    for (size_t i = 0; i < area.size(); ++i) {
        if (area[i] != fill)
            result.insert(int(i), int(area[i]));
    }
    return result;
}

typedef QMap<int, int> Changes;

/// Pairs of index and value as what `changes` finds. QMap itself takes braces since Qt 5 only.
inline Changes changesAt(std::initializer_list<std::pair<int, int>> all)
{
    Changes result;
    for (const std::pair<int, int> &change : all)
        result.insert(change.first, change.second);
    return result;
}

/// Elements on either side of the driver's own length.
const int AREA_MARGIN = 16;

/// An area that reaches beyond the driver's length on both sides; indices are those of the pointer.
template <typename Unit>
class WideArea
{
public:
    explicit WideArea(Unit fill = 0)
        : m_fill(fill), m_units(2 * AREA_MARGIN + IMAGE_AREA_BYTES / sizeof(Unit), fill)
    {
    }
    Unit *data() { return m_units.data() + AREA_MARGIN; }
    Changes changed() const
    {
        Changes result;
        for (size_t i = 0; i < m_units.size(); ++i) {
            if (m_units[i] != m_fill)
                result.insert(int(i) - AREA_MARGIN, int(m_units[i]));
        }
        return result;
    }

private:
    Unit m_fill;
    std::vector<Unit> m_units;
};
typedef WideArea<quint8> WideBytes;
typedef WideArea<quint16> WideWords;

#endif
