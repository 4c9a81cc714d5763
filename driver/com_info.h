// The block of words that host and driver share.
#ifndef KVT_DRIVER_COM_INFO_H
#define KVT_DRIVER_COM_INFO_H

#include <QtCore/QtGlobal>

#include <cstddef>

/// The host's communication block. The host owns it and keeps it alive while the library is
/// loaded; the driver reads and writes the words named here and leaves words 0 to 5 alone.
///
/// "Callers" are the threads that call AddListOnceReadVar or SetRegisterData; they read without a
/// lock, so that words which they read change only while none of them is in a call.
///
/// | Word | Written by | Read by | Range |
/// |---|---|---|---|
/// | hostWord0 to hostWord5 | host | host | any |
/// | defaultStation | host, at rest | callers | 0 to 255 |
/// | retryLimit | host, polling thread | polling thread | attempts beyond the first, 0 or more |
/// | retryCount | polling thread; host there, to clear it | polling thread | attempts, 0 to retryLimit between calls |
/// | purgeByStation | host, at rest | callers, polling thread | 0 or not |
/// | comWord10, comWord13 | SetComInfo | host | 0 |
/// | framesExpected, framesReceived | polling thread | polling thread | frames: 1; 0 or 1 |
/// | remoteMode | host, at rest | callers, ReCreatReadVarList, polling thread | 0 or not |
/// | localPlcNo | host, at rest | callers, ReCreatReadVarList, polling thread | any |
/// | hostWriteMode | host, at rest | callers | HOST_WRITE_TO_PLC, or any other |
/// | scanComplete | polling thread; ReCreatReadVarList on its caller's thread | host, polling thread | 0 or 1 |
/// | portTag | host, polling thread | polling thread | any |
struct ComInfo {
    qint32 hostWord0;      ///< the host's own
    qint32 hostWord1;      ///< the host's own
    qint32 hostWord2;      ///< the host's own
    qint32 hostWord3;      ///< the host's own
    qint32 hostWord4;      ///< the host's own
    qint32 hostWord5;      ///< the host's own
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

/// @cond
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
/// @endcond

#endif
