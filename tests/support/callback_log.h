// Host callbacks that write down each call and let a test look at the driver meanwhile.
#ifndef KVT_TESTS_SUPPORT_CALLBACK_LOG_H
#define KVT_TESTS_SUPPORT_CALLBACK_LOG_H

#include "driver/records.h"

#include <QStringList>

#include <functional>

/// The calls in order, and what to run inside each.
struct CallbackLog {
    QStringList calls;
    std::function<void()> inside;
};

inline CallbackLog &callbackLog()
{
    static CallbackLog log;
    return log;
}

/// Writes "done <portTag> <ownerId> <ownerSubId> <status>". The result must not matter.
inline int logOnceReadDone(int portTag, int ownerId, int ownerSubId, int status)
{
    callbackLog().calls.append(
        QString("done %1 %2 %3 %4").arg(portTag).arg(ownerId).arg(ownerSubId).arg(status));
    if (callbackLog().inside)
        callbackLog().inside();
    return 77;
}

/// Writes "notify <ownerId> <flag> <size of the list>", then fills the list as a host may.
inline void logOwnerNotify(QList<RW_VAR> *out, int ownerId, int flag)
{
    callbackLog().calls.append(QString("notify %1 %2 %3").arg(ownerId).arg(flag).arg(out->size()));
    RW_VAR var;
    var.data = QByteArray(16, 'x');
    out->append(var);
    out->append(var);
    if (callbackLog().inside)
        callbackLog().inside();
}

/// The calls so far as one text.
inline QString calls()
{
    return callbackLog().calls.join(", ");
}

#endif
