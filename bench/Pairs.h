#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <utility>

namespace bench {

/// Registers two benchmarks whose times `bench/run` divides: what the library takes for `figure`
/// on `payload`, and what the least that must be done takes. Each is a function that does the
/// work once.
template <class Ours, class Reference>
void RegisterPair(const std::string& figure, const std::string& payload, Ours ours,
                  Reference reference) {
    const std::string name = figure + "/" + payload;
    benchmark::RegisterBenchmark((name + "/ours").c_str(), [ours](benchmark::State& state) mutable {
        for (auto _ : state) ours();
    });
    benchmark::RegisterBenchmark((name + "/reference").c_str(),
                                 [reference](benchmark::State& state) mutable {
                                     for (auto _ : state) reference();
                                 });
}

/// Runs what `registerAll` registers for each argument that is not Google Benchmark's own.
template <class RegisterAll>
int RunPairs(int argc, char** argv, RegisterAll registerAll) {
    benchmark::Initialize(&argc, argv);
    for (int i = 1; i < argc; ++i) registerAll(std::string(argv[i]));
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

}  // namespace bench
