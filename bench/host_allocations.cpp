// What an exchange asks of the heap while a host goes on polling: the driver's part and the host's,
// on a clock of its own, from a PLC that answers every word at once. The exit status is 0 only if
// the host's is none.
#include "bench/allocation_counter.h"
#include "rig/plant.h"
#include "rig/rig.h"

#include <QTextStream>

namespace
{

using namespace kvt;

constexpr int WORDS = 100;
constexpr qint64 WARM_UP = 10000; // exchanges
constexpr qint64 COUNTED = 10000;
constexpr qint64 TURN_ns = microseconds(500);

DriverApi driver;     // as loaded
long ofDriver = 0;    // allocations
qint64 exchanges = 0; // replies that the driver took

/// Calls the driver, and notes what it allocates.
template <typename Function, typename... Arguments>
auto counted(Function function, Arguments... arguments)
{
    const long before = allocations();
    const auto result = function(arguments...);
    ofDriver += allocations() - before;
    return result;
}

Protocol *nextRequest()
{
    return counted(driver.ComCommunication);
}

RW_VAR *judge(QByteArray *reply, int length)
{
    ++exchanges;
    return counted(driver.DataCom, reply, length);
}

int queueRead(RW_VAR *request, int flag)
{
    return counted(driver.AddListOnceReadVar, request, flag);
}

struct Plant {
    const char *name;
    const char *type;
    const char *interval; // of every other tag
};
constexpr Plant PLANTS[] = {
    {"words", "u16", ""},
    {"words, half of them at intervals", "u16", "100ms"},
    {"values of two words", "u32", ""},
    {"values of two words, half of them at intervals", "u32", "200ms"},
    {"values of four words, half of them at intervals", "f64", "500ms"},
};

QVector<Tag> tagsOf(const Plant &plant)
{
    QVector<Tag> tags;
    ValueForm form;
    parseForm(QLatin1String(plant.type), &form);
    const int words = elementCount(form, Area::D);
    const QVector<Tag> all = makePlant({1, WORDS, 0, 0});
    for (int i = 0; i < WORDS; i += words) {
        Tag tag = all.at(i);
        tag.form = form;
        if (i / words % 2 == 0)
            tag.watch[WatchColumn::Interval] = QLatin1String(plant.interval);
        tags.append(tag);
    }
    return tags;
}

/// Answers the requests of an engine until the driver has judged so many more replies.
void poll(ExchangeEngine *engine, qint64 *now_ns, qint64 count)
{
    static const char REPLY[] = "\x06"
                                "010001\r";
    static QByteArray request;
    const qint64 end = exchanges + count;
    while (exchanges < end) {
        if (engine->takeRequest(&request)) {
            engine->sent(*now_ns);
            *now_ns += TURN_ns;
            engine->received(*now_ns, REPLY, sizeof REPLY - 1);
        } else {
            *now_ns = std::max(*now_ns, engine->deadline_ns());
            engine->deadlineReached(*now_ns);
        }
    }
}

/// Prints a row. Returns whether the host has asked for nothing.
bool measure(const Plant &plant, QTextStream &out)
{
    DriverLibrary library;
    QString error;
    if (!library.load(QStringLiteral(KVT_LIBRARY), &error))
        qFatal("%s", qPrintable(error));
    driver = library.api();
    DriverApi api = driver;
    api.ComCommunication = nextRequest;
    api.DataCom = judge;
    api.AddListOnceReadVar = queueRead;
    HostEvents events;
    HostSession session(api, SessionSettings(), tagsOf(plant), &events);
    qint64 now_ns = seconds(1);
    session.engine().lineUp(now_ns);
    poll(&session.engine(), &now_ns, WARM_UP);
    ofDriver = 0;
    const long before = allocations();
    poll(&session.engine(), &now_ns, COUNTED);
    const long all = allocations() - before;
    out << QStringLiteral("| %1 | %2 | %3 |\n")
               .arg(QLatin1String(plant.name))
               .arg(static_cast<double>(ofDriver) / COUNTED, 0, 'f', 2)
               .arg(static_cast<double>(all - ofDriver) / COUNTED, 0, 'f', 2);
    session.stop();
    return all == ofDriver;
}

} // namespace

int main()
{
    QTextStream out(stdout);
    out << "| Tags | driver | host |\n|---|---:|---:|\n";
    bool good = true;
    for (const Plant &plant : PLANTS)
        good = measure(plant, out) && good;
    return good ? 0 : 1;
}
