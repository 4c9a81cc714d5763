// The cyclic read list. Its entry points are ReCreatReadVarList and AddListReadVar. Pointers are
// not null but for the hooks, which look at none.
#ifndef KVT_VARLIST_READ_LIST_H
#define KVT_VARLIST_READ_LIST_H

#include "driver/entry_points.h"

/// Appends a group sorted by address to the read list, one entry for each run of equal addresses;
/// a run of address -1 at the very front is left out. Returns -1 for an empty group, else 1. The
/// caller holds the list mutex.
Q_DECL_EXPORT int Add_AddListReadVar(QList<RW_VAR> *group);

/// Sorts `list` by rising address; equal addresses keep their order. Any thread; no lock.
Q_DECL_EXPORT void Bubble_Sort(QList<RW_VAR> *list);

/// Moves the head of `list`, the read list, which is not empty, to its end. The caller holds the
/// list mutex.
void rotateReadList(QList<RW_VAR> &list);

/// Hook for grouping: returns its first argument and touches nothing.
Q_DECL_EXPORT int WhetherGroup(int current, int limit, RW_VAR *var, QList<RW_VAR> *group);

/// Hook for a separate rebuild of bits: returns 0 and touches nothing.
Q_DECL_EXPORT int BitVarReCreat(QList<RW_VAR> *list, int first, int last);

/// Hook for a separate rebuild of words: returns 0 and touches nothing.
Q_DECL_EXPORT int WordVarReCreat(QList<RW_VAR> *list, int first, int last);

#endif
