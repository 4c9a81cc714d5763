// The send cycle: which request goes out next. Its entry point is ComCommunication.
#ifndef KVT_CYCLE_SEND_CYCLE_H
#define KVT_CYCLE_SEND_CYCLE_H

#include "driver/entry_points.h"

/// True while polling of `station` is switched off. Any thread; takes the station mutex.
Q_DECL_EXPORT bool Ethernetcontains(int station);

#endif
