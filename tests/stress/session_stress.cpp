// A host under threads: one polls a PLC, others read all values and statistics, write and ask for
// readings. Each word is written by one thread alone, and its two bytes are always alike, as are
// those that the PLC begins with. Prints what went wrong; status 1 if anything did. The only
// argument is the number of writes, and of readings asked for.
//
// It is compiled from the sources of host and driver, so that a sanitizer sees all of them.
#include "driver/entry_points.h"
#include "host/poller.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

constexpr int TAGS = 6;
constexpr int PAIRS = 2; // behind them: values of two words, the second being the first once more

/// The host's end of a socket that is there already.
class SocketLine final : public kvt::Line
{
public:
    explicit SocketLine(int socket) : socket_(socket) {}
    kvt::Opening open(QString *) override
    {
        setDescriptor(socket_);
        return kvt::Opening::Done;
    }
    qint64 characterTime_ns() const override { return 0; }
    bool isPaced() const override { return false; }
    QString name() const override { return QStringLiteral("socket"); }

private:
    int socket_;
};

/// Answers requests until the other end is closed: a word holds what was written to it, "0000"
/// before.
void answerRequests(int socket)
{
    std::map<std::string, std::string> words; // by station, command and nibble
    std::string request;
    for (char byte = 0; read(socket, &byte, 1) == 1;) {
        request += byte;
        if (byte != '\r')
            continue;
        const bool isWrite = request.size() == 12;
        std::string &word = words[request.substr(1, 5)];
        if (isWrite)
            word = request.substr(7, 4);
        else if (word.empty())
            word = "0000";
        const std::string reply = "\x06" + request.substr(1, 2) + (isWrite ? "00" : word) + '\r';
        request.clear();
        if (write(socket, reply.data(), reply.size()) < 0)
            return;
    }
}

/// Counts how each request ends. All calls on the polling thread.
class Ends final : public kvt::HostEvents
{
public:
    void writeChanged(const kvt::WriteReport &report) override
    {
        if (report.isFinal())
            noteEnd(report.id);
    }
    void onceReadEnded(int id, int, bool) override { noteEnd(id); }

    std::atomic<int> ended{0};
    std::atomic<int> endedTwice{0};

private:
    void noteEnd(int id)
    {
        const bool isFirst = ++ends_[id] == 1;
        ++(isFirst ? ended : endedTwice);
    }

    std::map<int, int> ends_;
};

QVector<kvt::Tag> plantTags()
{
    QVector<kvt::Tag> tags;
    for (int i = 0; i < TAGS; ++i) {
        kvt::Tag tag;
        tag.name = QStringLiteral("word%1").arg(i);
        tag.address = QStringLiteral("%1.2.0").arg(i + 1);
        tag.station = 1 + i % 2;
        tag.form = kvt::ValueType::U16;
        tags.append(tag);
    }
    for (int i = 0; i < PAIRS; ++i) {
        kvt::Tag tag = tags.at(i);
        tag.name = QStringLiteral("pair%1").arg(i);
        tag.form = kvt::ValueType::U32;
        tags.append(tag);
    }
    return tags;
}

kvt::DriverApi linkedDriver()
{
    kvt::DriverApi api;
    api.SetComInfo = SetComInfo;
    api.FlashLocalRegister = FlashLocalRegister;
    api.RegistCallBackFuncIntf = RegistCallBackFuncIntf;
    api.QueryFinishFlag = QueryFinishFlag;
    api.EnCommStation = EnCommStation;
    api.ComCommunication = ComCommunication;
    api.DataCom = DataCom;
    api.PLCAddressChangeIntef = PLCAddressChangeIntef;
    api.AddListReadVar = AddListReadVar;
    api.ReCreatReadVarList = ReCreatReadVarList;
    api.AddListWriteVar = AddListWriteVar;
    api.AddListOnceReadVar = AddListOnceReadVar;
    api.GetRegisterData = GetRegisterData;
    api.SetRegisterData = SetRegisterData;
    return api;
}

/// True when all bytes of a value are equal, as they are in each that is written.
bool isWhole(const kvt::TagValue &value, bool isPair)
{
    const quint64 byte = value.raw & 0xFF;
    return value.raw == byte * (isPair ? 0x01010101U : 0x0101U);
}

/// Looks at everything that any thread may look at, until `stop`; counts values that are torn.
void look(const kvt::Poller &poller, const std::atomic<bool> &stop, std::atomic<int> *torn)
{
    quint64 exchanges = 0;
    while (!stop) {
        const QVector<kvt::TagValue> values = poller.values();
        for (int tag = 0; tag < values.size(); ++tag)
            *torn += isWhole(values.at(tag), tag >= TAGS) ? 0 : 1;
        const kvt::Statistics statistics = poller.statistics();
        *torn += statistics.total.exchanges >= exchanges ? 0 : 1;
        exchanges = statistics.total.exchanges;
    }
}

// Requests under way at most, so that they meet a poll in all its states and not one long queue.
void waitForEnds(const Ends &ends, int id)
{
    while (ends.ended + 40 < id)
        std::this_thread::yield();
}

void writeWords(kvt::Poller *poller, const Ends &ends, int first, int count)
{
    for (int i = 0; i < count; ++i)
        waitForEnds(ends,
                    poller->write(first + i % (TAGS / 2), QByteArray(2, static_cast<char>(i))));
}

void writePairs(kvt::Poller *poller, const Ends &ends, int count)
{
    for (int i = 0; i < count; ++i)
        waitForEnds(ends, poller->write(TAGS + i % PAIRS, QByteArray(4, static_cast<char>(i))));
}

void askForReadings(kvt::Poller *poller, const Ends &ends, int count)
{
    for (int i = 0; i < count; ++i)
        waitForEnds(ends, poller->readOnce(i % (TAGS + PAIRS)));
}

} // namespace

int main(int argc, char **argv)
{
    const int rounds = argc == 2 ? std::atoi(argv[1]) : 0;
    int sockets[2] = {-1, -1};
    if (rounds < 1 || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
        std::fputs("usage: session_stress ROUNDS\n", stderr);
        return 2;
    }
    std::thread plc(answerRequests, sockets[1]);
    std::atomic<bool> stop{false};
    std::atomic<int> torn{0};
    Ends ends;
    quint64 reads = 0;
    {
        kvt::Poller poller(linkedDriver(), kvt::PollerSettings(), plantTags(),
                           std::make_unique<SocketLine>(sockets[0]), &ends);
        poller.start();
        std::thread looker([&] { look(poller, stop, &torn); });
        std::vector<std::thread> askers;
        for (const int first : {0, TAGS / 2})
            askers.emplace_back([&, first] { writeWords(&poller, ends, first, rounds); });
        askers.emplace_back([&] { writePairs(&poller, ends, rounds); });
        askers.emplace_back([&] { askForReadings(&poller, ends, rounds); });
        for (std::thread &asker : askers)
            asker.join();
        poller.stop();
        stop = true;
        looker.join();
        reads = poller.statistics().total.exchanges;
    }
    shutdown(sockets[1], SHUT_RDWR);
    plc.join();
    close(sockets[1]);
    const int missing = 4 * rounds - ends.ended;
    std::printf("%llu exchanges; %d requests, without an end: %d, ended twice: %d; torn: %d\n",
                static_cast<unsigned long long>(reads), 4 * rounds, missing, ends.endedTwice.load(),
                torn.load());
    return missing == 0 && ends.endedTwice == 0 && torn == 0 && reads > 0 ? 0 : 1;
}
