// What the driver costs by itself: one whole exchange, a read of the cache, a rebuild of the list.
// The argument of each benchmark is the number of variables.
#include "driver/driver_object.h"
#include "driver/entry_points.h"

#include <benchmark/benchmark.h>

namespace
{

int ignoreOnceRead(int, int, int, int)
{
    return 0;
}

void ignoreOwner(QList<RW_VAR> *, int, int) {}

QString addressOf(int area, int index)
{
    const QString command = QString::number(index / 32);
    const QString nibble = QString::number(index / 2 % 16);
    const QString selector = QString::number(index % 2);
    // A block of area C takes 70 elements, so the blocks are numbered, not the elements.
    return area == AREA_C ? QStringLiteral("0.%1.%2.0").arg(index / 2).arg(selector)
                          : QStringLiteral("%1.%2.%3").arg(command, nibble, selector);
}

QList<HOST_VAR> hostVars(int area, int count)
{
    QList<HOST_VAR> list;
    for (int i = 0; i < count; ++i) {
        HOST_VAR var;
        var.areaType = static_cast<quint8>(area);
        var.station = 1;
        var.addressText = addressOf(area, i);
        list.append(var);
    }
    return list;
}

QByteArray replyFor(const Protocol &request)
{
    QByteArray reply("\x06"
                     "01");
    reply += QByteArray(request.builderParam2, '7');
    reply += '\r';
    return reply;
}

// Fills the read list and polls it through once, so that the cache holds every value.
class Driver
{
public:
    Driver(int area, int count)
    {
        PLC_driver.extendVars.clear();
        PLC_driver.pendingFrames.clear();
        SetComInfo(&m_info);
        RegistCallBackFuncIntf(ignoreOnceRead, ignoreOwner);
        QList<HOST_VAR> vars = hostVars(area, count);
        m_entries = ReCreatReadVarList(&vars);
        for (int i = 0; i < m_entries; ++i)
            exchange();
    }

    void exchange()
    {
        const Protocol *request = ComCommunication();
        if (m_reply.size() != request->expectedReplyLength)
            m_reply = replyFor(*request);
        benchmark::DoNotOptimize(DataCom(&m_reply, m_reply.size()));
    }

private:
    ComInfo m_info = ComInfo();
    QByteArray m_reply;
    int m_entries = 0;
};

void exchange(benchmark::State &state, int area)
{
    // A block delivers 70 values, so fewer blocks make the same number of cached values.
    const int count = static_cast<int>(state.range(0));
    Driver driver(area, area == AREA_C ? qMax(1, count / BLOCK_ELEMENTS) : count);
    for (auto _ : state)
        driver.exchange();
    state.counters["cached"] = PLC_driver.extendVars.size();
}

void exchangeX(benchmark::State &state)
{
    exchange(state, AREA_X);
}

void exchangeD(benchmark::State &state)
{
    exchange(state, AREA_D);
}

void exchangeC(benchmark::State &state)
{
    exchange(state, AREA_C);
}

void getRegisterData(benchmark::State &state)
{
    const int count = static_cast<int>(state.range(0));
    Driver driver(AREA_D, count);
    QStringList addresses;
    for (int i = 0; i < count; ++i)
        addresses.append(addressOf(AREA_D, i));
    QByteArray out;
    int next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(GetRegisterData(QString(), AREA_D, addresses.at(next), 1, out, 1));
        next = next + 1 < count ? next + 1 : 0;
    }
}

void reCreatReadVarList(benchmark::State &state)
{
    ComInfo info = ComInfo();
    SetComInfo(&info);
    QList<HOST_VAR> vars = hostVars(AREA_D, static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(ReCreatReadVarList(&vars));
}

// A list whose stations are all switched off is turned once by every poll.
void rotation(benchmark::State &state)
{
    const int count = static_cast<int>(state.range(0));
    Driver driver(AREA_D, count);
    EnCommStation(1, 0);
    for (auto _ : state)
        benchmark::DoNotOptimize(ComCommunication());
    EnCommStation(-1, 0);
    state.counters["per_entry"] = benchmark::Counter(static_cast<double>(count),
                                                     benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
}

BENCHMARK(exchangeX)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(exchangeD)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(exchangeC)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(getRegisterData)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(reCreatReadVarList)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(rotation)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000);

} // namespace

BENCHMARK_MAIN();
