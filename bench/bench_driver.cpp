// Times every operation at every size: bench_driver [option of Google Benchmark]...
#include "bench/operations.h"

#include <benchmark/benchmark.h>

#include <string>

namespace
{

// A benchmark is called several times over, with ever more repetitions; the driver is prepared for
// the first of these calls alone.
void run(benchmark::State &state, const OperationKind &kind, int n)
{
    static std::string prepared;
    static Operation operation;
    const std::string wanted = kind.name + std::to_string(n);
    if (prepared != wanted) {
        operation = kind.prepare(n);
        prepared = wanted;
    }
    for (auto _ : state)
        operation();
}

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    for (const OperationKind &kind : allOperations()) {
        for (const int n : kind.sizes) {
            const std::string name = kind.name + ("/" + std::to_string(n));
            benchmark::internal::Benchmark *timed = benchmark::RegisterBenchmark(
                name.c_str(), [kind, n](benchmark::State &state) { run(state, kind, n); });
            if (kind.growing)
                timed->Iterations(kind.repeats);
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
