// The host's way to the values. Its entry points are GetRegisterData and SetRegisterData.
#ifndef KVT_CACHE_HOST_DATA_H
#define KVT_CACHE_HOST_DATA_H

#include "driver/entry_points.h"

/// Stores the `count` elements of `var` (not null), two bytes each in `data`, in the cache at
/// rising addresses: kinds X (the first byte of each) and D; other kinds store nothing, and
/// elements whose two bytes are not both there are skipped. Any thread; takes the area mutex.
Q_DECL_EXPORT void WriteDataToLocal(RW_VAR *var);

#endif
