// A host that has loaded the built library and knows only its entry points and records.
#ifndef KVT_TESTS_SUPPORT_LOADED_HOST_H
#define KVT_TESTS_SUPPORT_LOADED_HOST_H

#include "tests/support/callback_log.h"
#include "tests/support/loaded_driver.h"

#include <memory>
#include <vector>

/// The bytes that `hex` spells, blanks ignored.
inline QByteArray bytes(const char *hex)
{
    return QByteArray::fromHex(hex);
}

/// A variable of the host, named "level".
inline HOST_VAR hostVariable(int areaType, const char *addressText, int station)
{
    HOST_VAR var;
    var.areaType = static_cast<quint8>(areaType);
    var.station = static_cast<quint8>(station);
    var.addressText = QString::fromLatin1(addressText);
    var.name = QStringLiteral("level");
    return var;
}

/// A request of station 1 for one unit.
inline RW_VAR request(int areaType, const char *addressText, int ownerId)
{
    RW_VAR var;
    var.ownerId = ownerId;
    var.areaType = areaType;
    var.addressText = QString::fromLatin1(addressText);
    var.station = 1;
    var.count = 1;
    return var;
}

/// The write of 0x1234 to D 3.4.0, of requester 0.
inline RW_VAR queuedWrite(int station)
{
    RW_VAR var = request(AREA_D, "3.4.0", 0);
    var.rwKind = RW_WRITE;
    var.address = 104;
    var.station = station;
    var.data = bytes("34 12");
    return var;
}

/// Base of a test that drives the loaded library.
class LoadedHost
{
protected:
    std::unique_ptr<LoadedDriver> driver;
    ComInfo info = ComInfo();
    std::vector<quint16> localWords;

    /// Loads the library and sets it up with zeroed blocks; false when something is missing.
    bool load()
    {
        info = ComInfo();
        localWords.assign(50001, 0);
        callbackLog() = CallbackLog();
        driver = std::make_unique<LoadedDriver>(KVT_LIBRARY);
        if (!driver->isComplete())
            return false;
        driver->setComInfo(&info);
        driver->registCallBackFuncIntf(logOnceReadDone, logOwnerNotify);
        return driver->flashLocalRegister(nullptr, localWords.data(), nullptr) == 396 &&
               driver->queryFinishFlag() == 1;
    }

    int list(QList<HOST_VAR> vars) const { return driver->reCreatReadVarList(&vars); }

    /// Queues a write or a once-read with coalescing; the size of its queue.
    int queue(RW_VAR var) const
    {
        return var.rwKind == RW_WRITE ? driver->addListWriteVar(&var, 0)
                                      : driver->addListOnceReadVar(&var, 0);
    }

    /// The bytes of the next frame; empty when there is nothing to send.
    QByteArray poll() const
    {
        const Protocol *frame = driver->comCommunication();
        return frame ? frame->frame : QByteArray();
    }

    /// Hands over a reply; the result code.
    int receive(QByteArray reply) const { return driver->dataCom(&reply, reply.size())->result; }

    /// A value of the cache; empty when the address is invalid.
    QByteArray value(int kind, const char *addressText, int station, int count = 1) const
    {
        QByteArray out;
        const int known = driver->getRegisterData(QString(), kind, QString::fromLatin1(addressText),
                                                  station, out, count);
        return known == 1 ? out : QByteArray();
    }

    /// Sets a value at station 1 on behalf of requester (3, 4).
    int set(int kind, const char *addressText, QByteArray data) const
    {
        return driver->setRegisterData(QStringLiteral("valve"), kind,
                                       QString::fromLatin1(addressText), 1, data, 1, 3, 4);
    }
};

#endif
