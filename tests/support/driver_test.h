// Base of the test classes that look into the driver object.
#ifndef KVT_TESTS_SUPPORT_DRIVER_TEST_H
#define KVT_TESTS_SUPPORT_DRIVER_TEST_H

#include "tests/support/callback_log.h"
#include "tests/support/driver_fixture.h"

#include <QtTest>

/// Each test begins with the driver's start values, `info_` as its block and nothing in the log of
/// callbacks, and has to leave every mutex free.
class DriverTest : public QObject
{
    Q_OBJECT

protected:
    /// What a class needs besides before each test, and what it looks at after it.
    virtual void prepare() {}
    virtual void finish() {}

    ComInfo info_;

private Q_SLOTS:
    void init()
    {
        resetDriver(info_);
        callbackLog() = CallbackLog();
        prepare();
    }

    void cleanup()
    {
        QVERIFY(isFree(PLC_driver.listMutex));
        QVERIFY(isFree(PLC_driver.stationMutex));
        QVERIFY(isFree(PLC_driver.areaMutex));
        finish();
    }
};

#endif
