#include "bench/driver_rig.h"
#include "bench/operations.h"
#include "driver/entry_points.h"

namespace
{

constexpr int REPEATS = 1000;

void rebuild(int area, int count)
{
    QList<HOST_VAR> vars = variables(area, count);
    ReCreatReadVarList(&vars);
}

// Once through the whole list, so that everything has grown to its size, and on to its middle:
// there an exchange costs what it does on average.
void scan(int entries)
{
    for (int i = 0; i < entries + entries / 2; ++i)
        exchange();
}

// The values are in the cache already: to meet them one by one would take time in the square of n.
Operation prepareWords(int area, int n)
{
    resetDriver();
    fillCache(area, n);
    rebuild(area, n);
    scan(n);
    return exchange;
}

Operation prepareX(int n)
{
    return prepareWords(AREA_X, n);
}

Operation prepareD(int n)
{
    return prepareWords(AREA_D, n);
}

// A block brings 70 values, so that fewer blocks make `n` cached ones.
void fillWithBlocks(int n)
{
    const int blocks = qMax(1, n / BLOCK_ELEMENTS);
    rebuild(AREA_C, blocks);
    scan(blocks);
}

Operation prepareC(int n)
{
    resetDriver();
    fillWithBlocks(n);
    return exchange;
}

// A block at a station of which nothing is cached yet, another one every time.
void exchangeNewBlock()
{
    ++PLC_driver.readList.first().station;
    exchange();
}

Operation prepareNewBlock(int n)
{
    resetDriver();
    fillWithBlocks(n);
    rebuild(AREA_C, 1);
    return exchangeNewBlock;
}

} // namespace

std::vector<OperationKind> exchangeOperations()
{
    return {{"exchangeX", SIZES, REPEATS, prepareX},
            {"exchangeD", SIZES, REPEATS, prepareD},
            {"exchangeC", SIZES, REPEATS, prepareC},
            {"exchangeCNew", SIZES, 10, prepareNewBlock, true}};
}
