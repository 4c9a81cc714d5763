// The records that the driver and its host exchange, and the numbers in them.
//
// Where every integer is one 32-bit slot and every string or byte array one pointer, a record is on
// the 32-bit target a plain row of slots; only HOST_VAR begins with three bytes. The library
// asserts the layout of every record when it is built.
#ifndef KVT_DRIVER_RECORDS_H
#define KVT_DRIVER_RECORDS_H

#include "driver/com_info.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

/// Areas of the PLC, as `areaType` holds them. Any other number is no area.
enum AreaCode {
    AREA_X = 0, ///< one byte per read; a bit for the host's data calls
    AREA_D = 1, ///< one 16-bit word
    AREA_C = 2  ///< read as a block of BLOCK_ELEMENTS bytes; cannot be written
};

/// What a request does, as `rwKind` holds it.
enum RequestDirection { RW_READ = 0, RW_WRITE = 1 };

/// Number of one-byte elements that one read of area C delivers.
constexpr int BLOCK_ELEMENTS = 70;

/// The `result` of the record that DataCom returns, but for the final failures.
enum ResultCode {
    RESULT_RETRY = 0,            ///< the attempt failed and will be repeated
    RESULT_SUCCESS = 1,          ///< done; also when nothing was pending
    RESULT_REMOTE_SUCCESS = 100, ///< done on the remote path; stored only with `remoteTag` -1
    RESULT_UNKNOWN = 200         ///< for a reason that there is not; DataCom never returns it
};

/// The classes of final failures. The `result` is the class + 1 + the requester (`ownerId`) where
/// that is below RESULT_REQUESTERS, else the class + 1.
enum ResultClass {
    RESULT_LOCAL_BAD_REPLY = 10,     ///< refused, or no end where it should be
    RESULT_LOCAL_NO_REPLY = 40,      ///< nothing came
    RESULT_LOCAL_WRONG_LENGTH = 70,  ///< fewer or more bytes than expected
    RESULT_REMOTE_BAD_REPLY = 110,   ///< the same three on the remote path
    RESULT_REMOTE_NO_REPLY = 140,    ///< see above
    RESULT_REMOTE_WRONG_LENGTH = 170 ///< see above
};

/// Requesters that have a result code of their own within a class.
constexpr int RESULT_REQUESTERS = 12;

/// Most entries that the queue of writes, and that of once-reads, takes in a mode other than
/// LIST_APPEND.
constexpr int QUEUE_LIMIT = 1024;

/// The `mode` of AddListWriteVar and AddListOnceReadVar that appends untested.
constexpr int LIST_APPEND = 1;

/// The `hostWriteMode` in which SetRegisterData sends to the PLC.
constexpr int HOST_WRITE_TO_PLC = 2;

/// Word of the host's local words whose low half-byte steers the reads of area C.
constexpr int BLOCK_SELECT_WORD = 50000;

/// The `status` of the once-read callback.
enum OnceReadStatus { ONCE_READ_DONE = 1, ONCE_READ_FAILED = 2 };

/// Control characters of the line.
constexpr char FRAME_ENQ = 0x05; ///< first byte of every request
constexpr char FRAME_ACK = 0x06; ///< first byte of a reply that is no refusal; not looked at
constexpr char FRAME_CR = 0x0D;  ///< last byte of every request and of every accepted reply
constexpr char FRAME_NAK = 0x15; ///< first byte of a refusal

/// One variable to read or write. Copies share the strings and the value bytes. "Queues it" is the
/// thread that calls AddListWriteVar, AddListOnceReadVar or AddListReadVar; for cyclic reads
/// (ReCreatReadVarList) and host writes (SetRegisterData) the driver fills the record in there. An
/// envelope of `remoteMode` carries all numbers but `ownerSubId`, `reserved3` and `result`, most of
/// them cut to its fields, and the `data` of a write.
///
/// | Field | Written by | Read by | Range |
/// |---|---|---|---|
/// | ownerId | who queues it; 0 in cyclic reads | polling thread: result code, callbacks | any; 0 to 11 have codes of their own |
/// | ownerSubId | who queues it; -1 in cyclic reads | polling thread: end of a group of once-reads; host: which write it was | any |
/// | rwKind | who queues it | polling thread, judging the reply | 0 or 1 |
/// | plcNo | who queues it | polling thread: local or remote path | any; 8 bits in an envelope |
/// | result | polling thread, in the record of DataCom alone | host, same thread | ResultCode, or a ResultClass + 1 to 12 |
/// | addressText | who queues it | polling thread, building the frame | "a.b.c", in area C "a.b.c.d" |
/// | areaType | who queues it | queues, polling thread | 0 to 2; another one builds no frame |
/// | address | who queues it; AddListOnceReadVar (mode not 1), SetRegisterData and ReCreatReadVarList fill it in | queues, cache and envelopes; never an ASCII frame | 0 or more, as PLCAddressChangeIntef gives it |
/// | station | who queues it; defaultStation while purgeByStation is 0 (once-reads with a mode not 1, SetRegisterData) | polling thread: frame, cache, stations that are off | 0 to 255 |
/// | count | as address | queues, cache, envelopes | elements: 1, or 70 in area C |
/// | remoteTag | who queues it; 0 in cyclic reads, once-reads (mode not 1) and from SetRegisterData | polling thread, remote path | -1, or any other |
/// | data | host, for a write | polling thread: frame and cache | bytes: 1 or 2 (X), 2 (D); empty in the record of DataCom |
/// | name, reserved3, reserved13 | who queues it | nobody; reserved13 in envelopes | any |
struct RW_VAR {
    qint32 ownerId = 0;    ///< requester, first half; 0 to 11 selects the error code's offset
    qint32 ownerSubId = 0; ///< requester, second half
    qint32 rwKind = 0;     ///< RW_READ or RW_WRITE; with any other value every reply is refused
    qint32 reserved3 = 0;  ///< `ComInfo::remoteMode` when the request was made
    qint32 plcNo = 0;      ///< PLC that holds the variable; equal to `localPlcNo`: local path
    qint32 result = 0;     ///< result code, meaningful in the record that DataCom returns
    QString name;          ///< text of the host, carried along
    QString addressText;   ///< decimal parts joined by "."
    qint32 areaType = 0;   ///< an AreaCode
    qint32 address = 0;    ///< numeric address; negative marks an invalid variable
    qint32 station = 0;    ///< PLC station; the low 8 bits go on the line
    qint32 count = 0;      ///< number of units to transfer
    qint32 remoteTag = 0;  ///< -1: a remote reply is stored; any other value: it is not
    qint32 reserved13 = 0; ///< carried along
    QByteArray data;       ///< value bytes, least significant first
};

/// One request frame with the reply it expects and a copy of its variable. All on the polling
/// thread: ComCommunication writes it, DataCom removes it when the request has ended.
///
/// | Field | Read by | Range |
/// |---|---|---|
/// | frame, frameLength | host, to send it | bytes: 8, 10 or 12, an envelope 22 or more |
/// | expectedReplyLength | host, collecting; DataCom, judging | bytes: 6, 8 or 144; 0 for an envelope of no area |
/// | builderParam1, builderParam2 | DataCom, decoding | 3 with 2, 4 or 140; 0 with 0 for a write |
/// | var | DataCom; host, before DataCom | see RW_VAR; `data` is the value of a write |
/// | extra0, extra1, extra2 | nobody | 0 |
struct Protocol {
    QByteArray frame;               ///< the bytes to put on the line
    qint32 frameLength = 0;         ///< number of bytes in `frame`
    qint32 expectedReplyLength = 0; ///< bytes; -1 accepts any length, 0 expects none
    qint32 builderParam1 = 0;       ///< index in the reply of the first data character
    qint32 builderParam2 = 0;       ///< number of data characters in the reply
    RW_VAR var;                     ///< the variable that the frame reads or writes
    qint32 extra0 = 0;              ///< not used by the driver
    qint32 extra1 = 0;              ///< not used by the driver
    qint32 extra2 = 0;              ///< not used by the driver
};

/// One value of the cache; its key is (station, areaType, address), which no two records share.
/// Without initialisers, so that it can be made from a list in braces in C++11. Of no use to hosts,
/// which read through GetRegisterData.
///
/// | Field | Written by | Read by | Range |
/// |---|---|---|---|
/// | station, areaType, address | the thread that asks for it or stores it first; never changed | every look-up, area mutex | any; see RW_VAR |
/// | data | polling thread, from replies and writes; SetRegisterData on any thread; area mutex, but for the remote path | GetRegisterData on any thread, area mutex | bytes: 4 of zero when new, then 1 or 2 |
struct EXTENDVAR {
    qint32 station;  ///< PLC station
    qint32 areaType; ///< an AreaCode
    qint32 address;  ///< numeric address
    QByteArray data; ///< the value: one byte (X, C) or two, low byte first (D)
};

/// One variable of the host's own list, as ReCreatReadVarList takes it. The host writes all fields;
/// the driver reads them on the thread that calls it, and copies what it needs.
///
/// | Field | Range |
/// |---|---|
/// | kind | any; not read |
/// | areaType | 0 to 2 |
/// | station | 0 to 255: a larger number is cut when it is assigned |
/// | addressText | "a.b.c", in area C "a.b.c.d"; with a negative address the variable is left out |
/// | name | any text |
struct HOST_VAR {
    quint8 kind = 0;     ///< the host's own; not read
    quint8 areaType = 0; ///< an AreaCode
    quint8 station = 0;  ///< PLC station, 0 to 255
    QString addressText; ///< decimal parts joined by "."
    QString name;        ///< text of the host, carried along
};

/// Called when the last queued once-read of one requester on the local PLC has been served;
/// status 1 success, 2 failure. The result is ignored. Runs on the polling thread with the
/// driver's list mutex held: it must not call an entry point that takes that mutex.
typedef int (*OnceReadDone)(int portTag, int ownerId, int ownerSubId, int status);

/// Called for every queued write whose turn comes on the ASCII link (not with `remoteMode`), also
/// where its area builds no frame and it comes again, and for every
/// request that has failed for good, always with flag 1 and an empty list, which the driver
/// destroys unread. Runs on the polling thread with the driver's list mutex held: it must not call
/// an entry point that takes that mutex.
typedef void (*OwnerNotify)(QList<RW_VAR> *out, int ownerId, int flag);

#endif
