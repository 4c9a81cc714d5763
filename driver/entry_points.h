// The fourteen entry points that a host resolves by name after loading libKVT.so.1.
//
// "Polling thread" below is the one host thread that calls ComCommunication and DataCom, strictly
// by turns. "Any thread" may run beside it. The locks named are the driver's own and not
// recursive: a callback, which runs under the list mutex, must not call what takes it. No entry
// point prints or waits for anything but these locks. No exception leaves one: a callback that
// throws, or memory that runs out, ends the process.
//
// Strings and byte arrays handed in are shared, not copied: one made with fromRawData must outlive
// every list entry that holds it. The value cache keeps bytes of its own.
#ifndef KVT_DRIVER_ENTRY_POINTS_H
#define KVT_DRIVER_ENTRY_POINTS_H

#include "driver/records.h"
#include "driver/version.h"

extern "C" {

/// Hands the driver the host's communication block and clears its words 10 and 13.
/// `info` stays the host's and must outlive the library; null is ignored. Calling again replaces
/// it. Set-up thread, before polling starts; no lock.
Q_DECL_EXPORT void SetComInfo(ComInfo *info);

/// Hands the driver the host's areas: local bits, local words, and a third one. Any may be null.
/// `lw`, if given, holds at least 50,001 16-bit words. Returns 396. Set-up thread; no lock.
Q_DECL_EXPORT int FlashLocalRegister(void *lb, void *lw, void *rwi);

/// Registers the two callbacks; a null one is never called. Set-up thread; no lock.
Q_DECL_EXPORT void RegistCallBackFuncIntf(OnceReadDone onceReadDone, OwnerNotify ownerNotify);

/// Returns 1: the driver is set up as soon as it is loaded. Any thread; no lock.
Q_DECL_EXPORT int QueryFinishFlag();

/// Switches the polling of stations. `station` negative: all are polled again. Else `mode` 0
/// stops polling this one, 1 resumes it, any other value does nothing. Cyclic reads of a station
/// that is off are skipped and kept; its queued writes and once-reads are dropped unreported when
/// their turn comes. Any thread; station mutex.
Q_DECL_EXPORT void EnCommStation(int station, int mode);

/// Returns the next frame to send, or null when there is nothing to send now. The record is the
/// driver's and stays valid until DataCom removes it; until then the same one is returned again.
/// Needs SetComInfo. Polling thread; list mutex, and inside it the station mutex, the area mutex
/// and the host's `ownerNotify`.
Q_DECL_EXPORT Protocol *ComCommunication();

/// Judges what arrived for the frame that ComCommunication returned last. `received` holds the
/// bytes and `receivedLength` is their number, 0 when nothing came (`received` may then be null);
/// a number that the array does not have is a bad reply. Returns the driver's own record, valid
/// until the next call, whose `result` is 1 or 100 for success, 0 for an attempt that will be
/// repeated, 11 to 182 for a final failure. With nothing pending `result` is 1.
/// Needs SetComInfo. Polling thread; area mutex, then list mutex and inside it both callbacks.
Q_DECL_EXPORT RW_VAR *DataCom(QByteArray *received, int receivedLength);

/// Returns the numeric address of `addressText` in area `areaType`: a*32 + b*2 + c for "a.b.c" in
/// areas X and D, b*160 + c*80 + d for "a.b.c.d" in area C, 0 for any other area. A bad or missing
/// part counts as 0; further parts are ignored; the sum wraps at 32 bits. Any thread; no lock.
Q_DECL_EXPORT int PLCAddressChangeIntef(int areaType, QString addressText);

/// Appends a copy of `var` to the cyclic read list, untested; null adds nothing. Returns the
/// number of entries. Takes no lock: only while the polling thread does not run.
Q_DECL_EXPORT int AddListReadVar(RW_VAR *var);

/// Rebuilds the cyclic read list from the host's variables: by area and station in the order first
/// met, by rising address within, one entry for each address, area C widened to whole blocks.
/// Variables with a negative address are left out; a null list counts as empty. Returns the number
/// of entries. Needs SetComInfo. Any thread; list mutex.
Q_DECL_EXPORT int ReCreatReadVarList(QList<HOST_VAR> *hostVars);

/// Queues a write; `var` is copied, null adds nothing. `mode` 1 appends it untested; any other
/// value lets it replace a queued write of the same station, area, address and count (never the
/// first in the queue, which may be on the line) and drops it when 1024 are queued. Returns the
/// number of queued writes. Any thread; list mutex.
Q_DECL_EXPORT int AddListWriteVar(RW_VAR *var, int mode);

/// Queues a one-time read; `var` is copied, null adds nothing. `mode` 1 appends it untested. Any
/// other value fills in address, station (from `defaultStation` while `purgeByStation` is 0),
/// count and tags in `var` itself, adds nothing when the same requester has queued the same read,
/// and drops it when 1024 are queued. Returns the number of queued reads, or 0 when the address is
/// negative. Needs SetComInfo unless `mode` is 1. Any thread; list mutex.
Q_DECL_EXPORT int AddListOnceReadVar(RW_VAR *var, int mode);

/// Reads from the value cache, never from the line. `kind` is an area code. X and D write two
/// bytes to the front of `out` and ignore `count`; C writes two for each of `count` elements, the
/// value and 0. `out` grows as needed and keeps bytes beyond; another kind leaves it alone. A
/// value never stored reads as 0. Each value asked for gets a record of the cache that stays: all
/// `count` of them, so that a huge count is for the caller to answer for.
/// Returns 0 when the address is negative, else 1. The first argument has no use.
/// Any thread; area mutex.
Q_DECL_EXPORT int GetRegisterData(QString, int kind, QString addressText, int station,
                                  QByteArray &out, int count);

/// Writes a value: into the cache (`count` elements of two bytes each, kinds X and D), or, when
/// `hostWriteMode` is 2, one element as a queued write to the PLC. `defaultStation` replaces
/// `station` while `purgeByStation` is 0. Returns 0 when the address is negative or the kind
/// cannot be sent, 1 in cache mode (kinds other than X and D store nothing), else what
/// AddListWriteVar returns. Missing bytes are sent as 0 and not cached. Needs SetComInfo.
/// Any thread; area mutex or list mutex.
Q_DECL_EXPORT int SetRegisterData(QString name, int kind, QString addressText, int station,
                                  QByteArray &value, int count, int ownerId, int ownerSubId);

} // extern "C"

#endif
