// Which tags a reply concerns: tags take cells and share them, and cells share requests.
#ifndef KVT_HOST_TAG_INDEX_H
#define KVT_HOST_TAG_INDEX_H

#include "tags/tag.h"

#include <QHash>
#include <QVector>

namespace kvt
{

/// What the driver's read list keeps one entry for.
struct ReadKey {
    int station = 0;
    int area = 0;    ///< an area code
    int address = 0; ///< numeric; in area C that of the block
};

bool operator==(const ReadKey &a, const ReadKey &b);
uint qHash(const ReadKey &key, uint seed = 0);

/// A cell of the PLC that tags take: a word of area D, else a byte.
struct TagCell {
    int station = 0;
    int area = 0;
    int address = 0;        ///< numeric
    QString addressText;    ///< as one of its tags has it
    QVector<int> tags;      ///< indices of the tags whose value are its bits as they stand
    QVector<int> assembled; ///< indices of the others that take it
};

/// The tags of a host, by the cells they take and by the requests that read those.
class TagIndex
{
public:
    /// The tags must be those of a tag list without errors.
    explicit TagIndex(const QVector<Tag> &tags);

    const QVector<TagCell> &cells() const { return cells_; }

    /// The only cell of a tag, or the first.
    int cellOf(int tag) const { return cellsOf_.at(tag).first(); }

    /// The cells of a tag, at rising addresses.
    const QVector<int> &cellsOf(int tag) const { return cellsOf_.at(tag); }

    /// True when a tag's value is something else than the bits of one cell as they stand.
    bool isAssembled(int tag) const { return isAssembled_.at(tag); }

    /// True when a tag's cells are read by more than one request.
    bool takesSeveralRequests(int tag) const;

    /// The request that reads the cell.
    ReadKey readKeyOf(int cell) const { return keyOfCell_.at(cell); }

    /// The cells that one request reads; empty when it is none of these tags'.
    const QVector<int> &cellsRead(const ReadKey &key) const
    {
        const auto found = byKey_.constFind(key);
        return found == byKey_.constEnd() ? noCells_ : *found;
    }

    /// The cells of one station.
    QVector<int> cellsOfStation(int station) const { return byStation_.value(station); }

    /// The stations, rising.
    QVector<int> stations() const;

private:
    void add(int tag, const Tag &description);
    int cellAt(const Tag &tag, const QString &addressText);

    QVector<TagCell> cells_;
    QVector<QVector<int>> cellsOf_;
    QVector<bool> isAssembled_;
    QVector<ReadKey> keyOfCell_;
    QHash<ReadKey, int> cellByAddress_;
    QHash<ReadKey, QVector<int>> byKey_;
    QVector<int> noCells_; // what an unknown request reads
    QHash<int, QVector<int>> byStation_;
};

} // namespace kvt

#endif
