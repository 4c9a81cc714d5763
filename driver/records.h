// The records that the driver and its host exchange, and the numbers in them.
//
// Where every integer is one 32-bit slot and every string or byte array one pointer, a record is on
// the 32-bit target a plain row of slots; only HOST_VAR begins with three bytes. The library
// asserts the layout of every record when it is built.
#ifndef KVT_DRIVER_RECORDS_H
#define KVT_DRIVER_RECORDS_H

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <cstddef>

/// Areas of the PLC, as `areaType` holds them. Any other number is no area.
enum AreaCode {
    AREA_X = 0, ///< one byte per read; a bit for the host's data calls
    AREA_D = 1, ///< one 16-bit word
    AREA_C = 2  ///< read as a block of BLOCK_ELEMENTS bytes; cannot be written
};

/// What a request does, as `rwKind` holds it.
enum RequestDirection { RW_READ = 0, RW_WRITE = 1 };

/// Number of one-byte elements that one read of area C delivers.
const int BLOCK_ELEMENTS = 70;

/// The `result` of the record that DataCom returns, but for the final failures.
enum ResultCode {
    RESULT_RETRY = 0,            ///< the attempt failed and will be repeated
    RESULT_SUCCESS = 1,          ///< done; also when nothing was pending
    RESULT_REMOTE_SUCCESS = 100, ///< done on the remote path, nothing stored
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
const int RESULT_REQUESTERS = 12;

/// Most entries that the queue of writes, and that of once-reads, takes in a mode other than
/// LIST_APPEND.
const int QUEUE_LIMIT = 1024;

/// The `mode` of AddListWriteVar and AddListOnceReadVar that appends untested.
const int LIST_APPEND = 1;

/// The `hostWriteMode` in which SetRegisterData sends to the PLC.
const int HOST_WRITE_TO_PLC = 2;

/// Word of the host's local words whose low half-byte steers the reads of area C.
const int BLOCK_SELECT_WORD = 50000;

/// The `status` of the once-read callback.
enum OnceReadStatus { ONCE_READ_DONE = 1, ONCE_READ_FAILED = 2 };

/// Control characters of the line.
const char FRAME_ENQ = 0x05; ///< first byte of every request
const char FRAME_ACK = 0x06; ///< first byte of a reply that is no refusal; not looked at
const char FRAME_CR = 0x0D;  ///< last byte of every request and of every accepted reply
const char FRAME_NAK = 0x15; ///< first byte of a refusal

/// One variable to read or write. Copies share the strings and the value bytes.
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

/// One request frame with the reply it expects and a copy of its variable.
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
/// Without initialisers, so that it can be made from a list in braces in C++11.
struct EXTENDVAR {
    qint32 station;  ///< PLC station
    qint32 areaType; ///< an AreaCode
    qint32 address;  ///< numeric address
    QByteArray data; ///< the value: one byte (X, C) or two, low byte first (D)
};

/// The host's communication block. The host owns it and keeps it alive while the library is
/// loaded; the driver reads and writes the words named here and leaves words 0 to 5 alone.
struct ComInfo {
    qint32 hostWord0;
    qint32 hostWord1;
    qint32 hostWord2;
    qint32 hostWord3;
    qint32 hostWord4;
    qint32 hostWord5;
    qint32 defaultStation; ///< read: while `purgeByStation` is 0, station of what SetRegisterData
                           ///< sends or caches and of once-reads queued with a mode other than 1
    qint32 retryLimit;     ///< read: extra attempts allowed per frame
    qint32 retryCount;     ///< written: failed attempts of the current frame; success keeps it
    qint32 purgeByStation; ///< read: 0 purges all queued requests after a final failure, else
                           ///< only those of the failed station
    qint32 comWord10;      ///< set to 0 by SetComInfo
    qint32 framesExpected; ///< written: reply frames that the current request needs
    qint32 framesReceived; ///< written: good reply frames so far
    qint32 comWord13;      ///< set to 0 by SetComInfo
    qint32 remoteMode;     ///< read: non-zero sends requests in the binary envelope
    qint32 localPlcNo;     ///< read: PLC number of this link
    qint32 hostWriteMode;  ///< read: 2 sends a host write to the PLC, else it is cached only
    qint32 scanComplete;   ///< written: 1 after a whole scan without a failure and while there is
                           ///< nothing to read, 0 after a failed attempt and a rebuilt list
    qint32 portTag;        ///< read: first argument of the once-read callback
};

/// One variable of the host's own list, as ReCreatReadVarList takes it.
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

/// Called for every write frame built on the ASCII link (not with `remoteMode`) and for every
/// request that has failed for good, always with flag 1 and an empty list, which the driver
/// destroys unread. Runs on the polling thread with the driver's list mutex held: it must not call
/// an entry point that takes that mutex.
typedef void (*OwnerNotify)(QList<RW_VAR> *out, int ownerId, int flag);

#define KVT_ASSERT_WORD(field, index)                                                              \
    static_assert(offsetof(ComInfo, field) == sizeof(qint32) * (index),                            \
                  "ComInfo: word out of place")
KVT_ASSERT_WORD(hostWord0, 0);
KVT_ASSERT_WORD(hostWord1, 1);
KVT_ASSERT_WORD(hostWord2, 2);
KVT_ASSERT_WORD(hostWord3, 3);
KVT_ASSERT_WORD(hostWord4, 4);
KVT_ASSERT_WORD(hostWord5, 5);
KVT_ASSERT_WORD(defaultStation, 6);
KVT_ASSERT_WORD(retryLimit, 7);
KVT_ASSERT_WORD(retryCount, 8);
KVT_ASSERT_WORD(purgeByStation, 9);
KVT_ASSERT_WORD(comWord10, 10);
KVT_ASSERT_WORD(framesExpected, 11);
KVT_ASSERT_WORD(framesReceived, 12);
KVT_ASSERT_WORD(comWord13, 13);
KVT_ASSERT_WORD(remoteMode, 14);
KVT_ASSERT_WORD(localPlcNo, 15);
KVT_ASSERT_WORD(hostWriteMode, 16);
KVT_ASSERT_WORD(scanComplete, 17);
KVT_ASSERT_WORD(portTag, 18);
static_assert(sizeof(ComInfo) == sizeof(qint32) * 19, "ComInfo: nineteen words");
#undef KVT_ASSERT_WORD

#endif
