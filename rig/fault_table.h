// The fault matrix as a file with a line for every cell, and what must hold of each.
#ifndef KVT_RIG_FAULT_TABLE_H
#define KVT_RIG_FAULT_TABLE_H

#include "rig/fault_cell.h"

#include <QStringList>

namespace kvt
{

/// What is compared of a cell from one version to the next; times in milliseconds.
struct CellFigures {
    qint64 strikes = 0;
    qint64 values = 0;
    qint64 recovery_ms = 0;
    qint64 recoveryAfter_ms = 0; ///< -1: never
    qint64 wrong = 0;
    qint64 wrongLongest_ms = 0;
    qint64 bound_ms = 0;
    qint64 beyondBound = 0;
    qint64 beyondOfSeveral = 0;
    qint64 writes = 0;
    qint64 writesLost = 0;
    qint64 writesDoubled = 0;
    qint64 writesUnsettled = 0;
    qint64 writesBelied = 0;
};

bool operator==(const CellFigures &one, const CellFigures &other);

CellFigures figuresOf(const CellResult &result);

/// The cell's line of the file, without its end.
QString csvLine(const CellResult &result);

/// The first line of the file.
QString csvHead();

/// Cells that differ in their kind of request alone, by fault, settings and line, taken together:
/// the worst of times, the sum of counts.
using CellGroups = QMap<QString, CellFigures>;

CellGroups groupsOf(const QVector<CellResult> &results);

/// Reads the file's text. Lines that are none of cells are passed over.
CellGroups groupsOf(const QString &text);

/// Takes `figures` into `group`.
void takeTogether(CellFigures *group, const CellFigures &figures);

/// What is worse in `now` than in `before` by more than chance, a text each.
QStringList worse(const CellGroups &before, const CellGroups &now);

/// Which promise the cell breaks; empty when none.
QStringList brokenPromises(const CellResult &result);

} // namespace kvt

#endif
