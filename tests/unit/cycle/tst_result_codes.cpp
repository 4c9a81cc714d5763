// The result codes: six classes of error, twelve requesters each.
#include "cycle/result_codes.h"
#include "driver/driver_object.h"
#include "tests/support/driver_requests.h"
#include "tests/support/driver_test.h"
#include "tests/support/row_names.h"

#include <QtTest>

#include <climits>

namespace
{

void pendFor(int ownerId)
{
    PLC_driver.pendingFrames.append(frameFor(ownedRead(QString(), ownerId, 0), 8));
}

} // namespace

class TestResultCodes : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void requesterSelectsTheOffset_data()
    {
        QTest::addColumn<int>("ownerId");
        QTest::addColumn<int>("offset");
        for (int ownerId = 0; ownerId <= 11; ++ownerId)
            formattedRow("requester %d", ownerId) << ownerId << ownerId + 1;
        for (const int ownerId : {-1, -12, 12, 13, 100, INT_MIN, INT_MAX})
            formattedRow("requester %d", ownerId) << ownerId << 1;
    }

    void baseNearTheHighestNumberWraps() { QCOMPARE(SwitchErrorReturn(INT_MAX), INT_MIN); }

    void requesterSelectsTheOffset()
    {
        QFETCH(int, ownerId);
        QFETCH(int, offset);
        pendFor(ownerId);
        for (const int base : {10, 40, 70, 110, 140, 170, 0, -5})
            QCOMPARE(SwitchErrorReturn(base), base + offset);
    }

    void reasonBecomesACode_data()
    {
        QTest::addColumn<int>("reason");
        QTest::addColumn<int>("codeOfRequester0");
        QTest::addColumn<int>("codeOfRequester11");
        QTest::addColumn<int>("codeOfRequester12");
        QTest::newRow("success") << int(REASON_SUCCESS) << 1 << 1 << 1;
        QTest::newRow("local bad reply") << int(REASON_LOCAL_BAD_REPLY) << 11 << 22 << 11;
        QTest::newRow("local no reply") << int(REASON_LOCAL_NO_REPLY) << 41 << 52 << 41;
        QTest::newRow("local wrong length") << int(REASON_LOCAL_WRONG_LENGTH) << 71 << 82 << 71;
        QTest::newRow("remote not stored") << int(REASON_REMOTE_NOT_STORED) << 100 << 100 << 100;
        QTest::newRow("remote bad reply") << int(REASON_REMOTE_BAD_REPLY) << 111 << 122 << 111;
        QTest::newRow("remote no reply") << int(REASON_REMOTE_NO_REPLY) << 141 << 152 << 141;
        QTest::newRow("remote wrong length")
            << int(REASON_REMOTE_WRONG_LENGTH) << 171 << 182 << 171;
        for (const int unknown : {8, 9, 100, 255, -1, -7, INT_MAX, INT_MIN})
            formattedRow("unknown %d", unknown) << unknown << 200 << 200 << 200;
    }

    void reasonBecomesACode()
    {
        QFETCH(int, reason);
        QFETCH(int, codeOfRequester0);
        QFETCH(int, codeOfRequester11);
        QFETCH(int, codeOfRequester12);
        const QPair<int, int> requesters[] = {
            {0, codeOfRequester0}, {11, codeOfRequester11}, {12, codeOfRequester12}};
        for (const QPair<int, int> &requester : requesters) {
            PLC_driver.pendingFrames.clear();
            pendFor(requester.first);
            QCOMPARE(GetDriverReturnValue(reason), requester.second);
        }
    }

    void reasonsHaveTheirNumbers()
    {
        QCOMPARE(int(REASON_SUCCESS), 0);
        QCOMPARE(int(REASON_LOCAL_BAD_REPLY), 1);
        QCOMPARE(int(REASON_LOCAL_NO_REPLY), 2);
        QCOMPARE(int(REASON_LOCAL_WRONG_LENGTH), 3);
        QCOMPARE(int(REASON_REMOTE_NOT_STORED), 4);
        QCOMPARE(int(REASON_REMOTE_BAD_REPLY), 5);
        QCOMPARE(int(REASON_REMOTE_NO_REPLY), 6);
        QCOMPARE(int(REASON_REMOTE_WRONG_LENGTH), 7);
        QCOMPARE(int(RESULT_SUCCESS), 1);
        QCOMPARE(int(RESULT_REMOTE_SUCCESS), 100);
    }

    void requesterIsThatOfTheFrameOnTheLine()
    {
        pendFor(4);
        pendFor(9);
        QCOMPARE(SwitchErrorReturn(40), 45);
        PLC_driver.pendingFrames.removeFirst();
        QCOMPARE(SwitchErrorReturn(40), 50);
    }

    void withoutAFrameTheRequesterCountsAsUnknown()
    {
        QCOMPARE(SwitchErrorReturn(40), 41);
        QCOMPARE(GetDriverReturnValue(REASON_REMOTE_NO_REPLY), 141);
        QCOMPARE(GetDriverReturnValue(REASON_SUCCESS), 1);
    }

    void codesTakeNoLockAndChangeNothing()
    {
        pendFor(2);
        const AllLocksHeld held;
        QCOMPARE(GetDriverReturnValue(REASON_LOCAL_BAD_REPLY), 13);
        QCOMPARE(PLC_driver.pendingFrames.size(), 1);
        QCOMPARE(int(PLC_driver.errorFlag), 0);
    }
};

QTEST_APPLESS_MAIN(TestResultCodes)
#include "tst_result_codes.moc"
