// The built library under all its threads at once: one polls, others read values, queue requests,
// rebuild the list and switch a station, and callbacks call what they may.
#include "tests/support/loaded_host.h"

#include <QtTest>

#include <atomic>
#include <thread>

namespace
{

const int ROUNDS = 4000; // of each thread beside the polling one

/// What the threads and callbacks of the test have counted.
struct Tally {
    std::atomic<int> onceReadsDone{0};
    std::atomic<int> onceReadsFailed{0};
    std::atomic<int> notified{0};
    std::atomic<int> writesAcknowledged{0};
    std::atomic<int> tornValues{0};
    std::atomic<int> threadsAtWork{0};
};

Tally *tally = nullptr;
const LoadedDriver *loaded = nullptr;

/// Notes a value whose two bytes differ: every reply of this test carries the same byte twice.
void readWord(int address)
{
    QByteArray value;
    const QString text = QStringLiteral("%1.0.0").arg(address % 8);
    if (loaded->getRegisterData(QString(), AREA_D, text, 1 + address % 2, value, 1) != 1 ||
        value.size() != 2 || value.at(0) != value.at(1))
        ++tally->tornValues;
}

int countOnceRead(int, int, int, int status)
{
    ++(status == 1 ? tally->onceReadsDone : tally->onceReadsFailed);
    readWord(1);
    return 0;
}

void countNotice(QList<RW_VAR> *, int, int)
{
    ++tally->notified;
    readWord(2);
    loaded->enCommStation(200, 0);
    loaded->plcAddressChangeIntef(AREA_D, QStringLiteral("1.2.3"));
}

QList<HOST_VAR> words(int first, int count)
{
    QList<HOST_VAR> list;
    for (int i = first; i < first + count; ++i)
        list << hostVariable(AREA_D, qPrintable(QStringLiteral("%1.0.0").arg(i)), 1 + i % 2);
    return list;
}

} // namespace

class LibraryThreadsTest : public QObject, private LoadedHost
{
    Q_OBJECT

    Tally counts;

    /// Answers `frame` for the `turn`th time round; every seventh reply is lost.
    void answer(const Protocol &frame, int turn)
    {
        if (turn % 7 == 0) {
            driver->dataCom(nullptr, 0);
            return;
        }
        const bool write = frame.var.rwKind == RW_WRITE;
        const char twice = "0123456789ABCDEF"[turn % 16];
        QByteArray reply = "\x06" + frame.frame.mid(1, 2) + (write ? "00" : QByteArray(4, twice));
        reply.append('\r');
        const int result = driver->dataCom(&reply, reply.size())->result;
        if (result == 1)
            info.retryCount = 0; // each frame has its own attempts, or their sum would fail some
        if (write && result == 1)
            ++tally->writesAcknowledged;
    }

    /// Polls until the other threads have ended and a whole scan has sent cyclic reads only.
    void pollUntilDone()
    {
        int cyclicInARow = 0;
        for (int turn = 1; cyclicInARow < 40; ++turn) {
            const bool othersAtWork = tally->threadsAtWork > 0;
            const Protocol *frame = driver->comCommunication();
            const bool cyclic = frame == nullptr || frame->var.ownerId == 0;
            cyclicInARow = othersAtWork || !cyclic ? 0 : cyclicInARow + 1;
            if (frame != nullptr)
                answer(*frame, turn);
        }
    }

    template <typename Work>
    std::thread atWork(Work work)
    {
        ++tally->threadsAtWork;
        return std::thread([work] {
            for (int round = 0; round < ROUNDS; ++round)
                work(round);
            --tally->threadsAtWork;
        });
    }

private Q_SLOTS:
    void everyRequestEndsOnceAndNoValueIsTorn()
    {
        tally = &counts;
        QVERIFY(load());
        loaded = driver.get();
        driver->registCallBackFuncIntf(countOnceRead, countNotice);
        info.retryLimit = 3;
        info.purgeByStation = 1;
        info.hostWriteMode = 2;
        QCOMPARE(list(words(0, 8)), 8);

        std::vector<std::thread> threads;
        threads.push_back(atWork([](int round) { readWord(round); }));
        threads.push_back(atWork([](int round) { readWord(round + 1); }));
        threads.push_back(atWork([](int) {
            RW_VAR write = queuedWrite(1);
            write.ownerId = 5;
            loaded->addListWriteVar(&write, 1);
        }));
        threads.push_back(atWork([](int round) {
            RW_VAR read = request(AREA_D, "3.0.0", 6);
            read.rwKind = RW_READ;
            read.ownerSubId = round;
            read.address = 96;
            loaded->addListOnceReadVar(&read, 1);
        }));
        threads.push_back(atWork([](int round) {
            QList<HOST_VAR> vars = words(round % 3, 5);
            loaded->reCreatReadVarList(&vars);
        }));
        threads.push_back(atWork([](int round) { loaded->enCommStation(2, round % 2); }));
        pollUntilDone();
        for (std::thread &thread : threads)
            thread.join();

        QCOMPARE(counts.tornValues.load(), 0);
        QCOMPARE(counts.writesAcknowledged.load(), ROUNDS);
        QCOMPARE(counts.onceReadsDone.load(), ROUNDS);
        QCOMPARE(counts.onceReadsFailed.load(), 0);
        QCOMPARE(counts.notified.load(), ROUNDS); // once for each write
    }
};

QTEST_APPLESS_MAIN(LibraryThreadsTest)
#include "tst_library_threads.moc"
