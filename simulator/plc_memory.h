// The cells of the simulated PLC: which exist, how a frame names them, and what they hold.
#ifndef KVT_SIMULATOR_PLC_MEMORY_H
#define KVT_SIMULATOR_PLC_MEMORY_H

#include "simulator/serial_ledger.h"
#include "simulator/tag_signal.h"
#include "tags/tag_address.h"

#include <QHash>
#include <QSet>
#include <QVector>

#include <array>
#include <optional>

namespace kvt
{

/// Elements in one block of area C.
constexpr int BLOCK_SIZE = 70;

/// Which kind of movement the cells get.
struct SignalPlan {
    SignalKind all = SignalKind::Mixed; ///< for every cell not named below
    QHash<QString, SignalRule> byTag;   ///< by name of the tag; without fault
};

/// What a request reads or writes: one cell of area X or D, or a block of area C.
struct PlcTarget {
    Area area = Area::X;
    int index = -1;  ///< of the cell or the block
    int element = 0; ///< area C: element of the block with which the answer begins
};

/// Memory of all stations, laid out by a tag list: tags of the same read frame share a cell. Every
/// read moves a cell on, until a write sets it; from then on it keeps what was written. The cells
/// of a tag that takes several, or has a rule of its own, move together as time goes by, until one
/// of them is written. Tags with a bad address are passed over. Not thread-safe.
class PlcMemory
{
public:
    PlcMemory(const QVector<Tag> &tags, const SignalPlan &plan, quint64 seed);

    /// True when any tag names this station.
    bool hasStation(int station) const { return stations_.contains(station); }

    /// Finds what a read frame asks for, by its command and address byte.
    std::optional<PlcTarget> findRead(int station, int command, int addressByte) const;

    /// Finds the cell that a write frame of area X or D names.
    std::optional<PlcTarget> findWrite(Area area, int station, int command, int addressByte) const;

    /// Finds a cell or, in area C, an element of a block by its numeric address.
    std::optional<PlcTarget> findNumber(Area area, int station, int number) const;

    /// Returns the bytes that a read of `target` answers, high byte first, and moves its cells on.
    /// Area C answers BLOCK_SIZE elements always: those of the block from the first one asked for,
    /// then zeros.
    QByteArray read(PlcTarget target, qint64 time_ns);

    /// Sets a cell of area X or D (to the low byte alone in X) and stops its movement.
    void write(PlcTarget target, int value);

    /// Returns what a cell answered last or was written, 0 before both; none when it is unknown.
    std::optional<int> value(int station, Area area, const QString &address) const;

    /// Sets any cell, also of area C, as `write` does. False when it is unknown.
    bool setValue(int station, Area area, const QString &address, int value);

    /// True when a serial cell sent `value` at `since_ns` or later. False for any other cell.
    bool wasSentTo(int station, Area area, const QString &address, int value,
                   qint64 since_ns) const;

    /// Returns the name of the tag to whose serial cell `value` belongs; empty when there is none.
    QString serialOwner(Area area, int value) const;

    /// Returns a target of the same area at another station, chosen by `choice`; none if no other
    /// station has one.
    std::optional<PlcTarget> elsewhere(PlcTarget target, quint32 choice) const;

    /// Returns the station of a target.
    int stationOf(PlcTarget target) const;

private:
    struct Cell {
        QString tag;
        int station;
        Area area;
        bool serial;
        int serialCell; ///< number in the ledger; -1 when not serial
        bool written;
        int value;
        Signal signal;
        int group;   ///< of cells that move together; -1: none
        int element; ///< of the group's value
    };
    struct Block {
        int station = 0;
        std::array<int, BLOCK_SIZE> cells = {}; ///< indices of cells; -1 where no tag is
    };

    /// What all cells of a tag have in common.
    struct Origin {
        SignalKind kind;
        quint64 seed;
        int group;
    };

    void addTag(const Tag &tag, SignalKind kind, const SignalRule *rule, quint64 seed);
    bool haveCells(const Tag &tag, const QVector<TagAddress> &addresses) const;
    int addElement(const Tag &tag, const TagAddress &address, const Origin &origin);
    void freeze(int group);
    void addTarget(quint64 key, PlcTarget target);
    int addCell(const Tag &tag, const Origin &origin);
    int blockOf(const Tag &tag, const TagAddress &address);
    int cellAt(int station, Area area, const QString &address) const;
    int readCell(int cell, qint64 time_ns);
    SerialLedger &ledger(Area area) { return area == Area::D ? words_ : bytes_; }
    const SerialLedger &ledger(Area area) const { return area == Area::D ? words_ : bytes_; }

    QVector<Cell> cells_;
    QVector<Block> blocks_;
    QVector<TagSignal> groups_;
    QSet<int> stations_;
    QHash<quint64, PlcTarget> byRead_;
    QHash<quint64, PlcTarget> byWrite_;
    QHash<quint64, PlcTarget> byNumber_; ///< blocks by their first element
    QVector<PlcTarget> targets_;         ///< all cells of areas X and D and all blocks, in order
    SerialLedger words_ = SerialLedger(65536);
    SerialLedger bytes_ = SerialLedger(256);
    QVector<int> serialWords_; ///< cells by their number in the ledger
    QVector<int> serialBytes_;
};

} // namespace kvt

#endif
