// Brings the driver to a known state for a measurement.
#ifndef KVT_BENCH_DRIVER_RIG_H
#define KVT_BENCH_DRIVER_RIG_H

#include "driver/driver_object.h"

#include <QList>
#include <QString>

/// Returns the text of variable `index` of an area: areas X and D number their elements, area C
/// its blocks of 70. Rising indices have rising numeric addresses, in X and D without gaps.
QString addressText(int area, int index);

/// Returns `count` variables of an area at station 1, in rising order.
QList<HOST_VAR> variables(int area, int count);

/// Shuffles `list`, the same way in every run.
void shuffle(QList<HOST_VAR> &list);

/// Empties every list of the driver and gives it a fresh block of its own and callbacks that do
/// nothing.
void resetDriver();

/// Stores `count` values of area X or D at station 1 in the cache, in rising order.
void fillCache(int area, int count);

/// Answers the request that the driver sends next; one must be due.
void exchange();

#endif
