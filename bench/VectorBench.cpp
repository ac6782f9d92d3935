// Value-type throughput: normalising and crossing vectors in bulk.
#include <benchmark/benchmark.h>

#include <vector>

#include <zol/core/Vector3.h>

static void BM_NormaliseCross(benchmark::State& state) {
    std::vector<ZOL::Vector3> v(static_cast<size_t>(state.range(0)), ZOL::Vector3(1, 2, 3));
    for (auto _ : state) {
        ZOL::Vector3 sum;
        for (size_t i = 1; i < v.size(); ++i) {
            ZOL::Vector3 c = v[i].CrossProduct(v[i - 1] + ZOL::Vector3(0, 0, 1));
            c.Normalise();
            sum += c;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_NormaliseCross)->Arg(1 << 20);

BENCHMARK_MAIN();
