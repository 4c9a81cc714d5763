// Counts what an operation asks for: count_driver OPERATION. Without an argument it lists the
// operations, with --tools it says what besides the driver determines the figures.
//
// Prints one line for each size: operation, size, repetitions, allocations. Under
// "valgrind --tool=callgrind --instr-atstart=no" the instructions of the same repetitions are
// dumped under the name "OPERATION SIZE"; the preparations are not counted.
#include "bench/allocation_counter.h"
#include "bench/operations.h"

#include <QString>
#include <QSysInfo>

#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace
{

// Done beforehand, so that buffers have grown to their size and the heap has settled.
constexpr int WARM_UPS = 3;

void repeat(const Operation &operation, int times)
{
    for (int i = 0; i < times; ++i)
        operation();
}

void countAt(const OperationKind &kind, int n)
{
    const Operation operation = kind.prepare(n);
    repeat(operation, WARM_UPS);
    const long before = allocations();
    CALLGRIND_START_INSTRUMENTATION;
    repeat(operation, kind.repeats);
    CALLGRIND_STOP_INSTRUMENTATION;
    const long after = allocations();
    const std::string label = kind.name + (" " + std::to_string(n));
    CALLGRIND_DUMP_STATS_AT(label.c_str());
    std::printf("%s %d %d %ld\n", kind.name, n, kind.repeats, after - before);
}

void printTools()
{
    std::printf("# compiler %s, Qt %s, %s\n", __VERSION__, qVersion(),
                qPrintable(QSysInfo::buildCpuArchitecture()));
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1 && std::strcmp(argv[1], "--tools") == 0) {
        printTools();
        return 0;
    }
    for (const OperationKind &kind : allOperations()) {
        if (argc < 2) {
            std::puts(kind.name);
        } else if (std::strcmp(argv[1], kind.name) == 0) {
            for (const int n : kind.sizes)
                countAt(kind, n);
            return 0;
        }
    }
    return argc < 2 ? 0 : 2;
}
