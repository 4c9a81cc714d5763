// The cache under two kinds of threads at once: some read and write through the entry points, with
// the area mutex; one stores replies as the remote path does, without it. Every record exists
// beforehand, and no value is touched from both sides. Prints what went wrong; status 1 if anything
// did. The only argument is the number of rounds of each thread.
//
// It is compiled from the cache's own sources, because an error here may show with one level of
// optimisation and not with another.
#include "cache/value_cache.h"
#include "driver/entry_points.h"
#include "protocol/reply_decoding.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace
{

// Threads, each with words of its own. They go through them in turn, as hosts and scans do.
constexpr int HOSTS = 2;
constexpr int WORDS_EACH = 32;
constexpr int WORDS = (HOSTS + 1) * WORDS_EACH; // the last are the link's

std::atomic<int> wrong(0);

quint8 valueOf(int address)
{
    return static_cast<quint8>(address * 37 + 11);
}

// The word of `address` in both bytes, as the host hands it over.
QByteArray wordOf(int address)
{
    return QByteArray(2, static_cast<char>(valueOf(address)));
}

// Made once: a string that is shared between threads would add a lock of its own.
QString textOf(int address)
{
    return QString::fromLatin1("0.%1.%2").arg(address / 2).arg(address % 2);
}

void useAsHost(int thread, int rounds)
{
    std::vector<QString> texts;
    std::vector<int> addresses;
    for (int i = 0; i < WORDS_EACH; ++i) {
        const int address = thread * WORDS_EACH + i;
        addresses.push_back(address);
        texts.push_back(textOf(address));
    }
    for (int round = 0; round < rounds; ++round) {
        const size_t at = static_cast<size_t>(round) % addresses.size();
        QByteArray value;
        GetRegisterData(QString(), AREA_D, texts[at], 1, value, 1);
        if (value != wordOf(addresses[at]))
            ++wrong;
        if (round % 3 == 0) {
            value = wordOf(addresses[at]);
            SetRegisterData(QString(), AREA_D, texts[at], 1, value, 1, 0, 0);
        }
    }
}

QByteArray replyWith(quint8 value)
{
    const char digits[] = "0123456789ABCDEF";
    QByteArray reply("\x06"
                     "01");
    for (int i = 0; i < 2; ++i)
        reply.append(digits[value >> 4]).append(digits[value & 0x0F]);
    return reply.append('\r');
}

void storeAsLink(int rounds)
{
    std::vector<Protocol> frames;
    std::vector<QByteArray> replies;
    for (int address = HOSTS * WORDS_EACH; address < WORDS; ++address) {
        Protocol frame;
        frame.builderParam1 = 3;
        frame.var.areaType = AREA_D;
        frame.var.station = 1;
        frame.var.address = address;
        frames.push_back(frame);
        replies.push_back(replyWith(valueOf(address)));
    }
    for (int round = 0; round < rounds; ++round) {
        const size_t at = static_cast<size_t>(round) % frames.size();
        PLC_driver.pendingFrames.clear();
        PLC_driver.pendingFrames.append(frames[at]);
        SaveToLocalDataErea(&replies[at]);
    }
}

void createRecords(ComInfo &info)
{
    info.purgeByStation = 1;
    SetComInfo(&info);
    for (int address = 0; address < WORDS; ++address) {
        QByteArray value = wordOf(address);
        SetRegisterData(QString(), AREA_D, textOf(address), 1, value, 1, 0, 0);
    }
}

int recordsLeftWrong()
{
    int count = PLC_driver.extendVars.size() == WORDS ? 0 : 1;
    for (int i = 0; i < PLC_driver.extendVars.size(); ++i) {
        const EXTENDVAR &record = PLC_driver.extendVars.at(i);
        if (record.address != i || record.data != wordOf(record.address))
            ++count;
    }
    return count;
}

} // namespace

int main(int argc, char **argv)
{
    const int rounds = argc == 2 ? std::atoi(argv[1]) : 0;
    if (rounds < 1) {
        std::fputs("usage: cache_stress ROUNDS\n", stderr);
        return 2;
    }
    static ComInfo info = ComInfo();
    createRecords(info);
    std::vector<std::thread> threads;
    for (int i = 0; i < HOSTS; ++i)
        threads.push_back(std::thread(useAsHost, i, rounds));
    threads.push_back(std::thread(storeAsLink, rounds));
    for (size_t i = 0; i < threads.size(); ++i)
        threads[i].join();

    const int left = recordsLeftWrong();
    std::printf("%d reads, wrong: %d; records left wrong: %d\n", HOSTS * rounds, wrong.load(),
                left);
    return wrong == 0 && left == 0 ? 0 : 1;
}
