// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>
#include <vxclss/vxclss.h>
#include <vxfoundation/vxfoundation.h>

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

/// A nearest-neighbour tool over n patterns of 16 measurements.
vxClassifierTool makeTool(long n, long seed) {
  vxRandomUniform random(seed);
  std::vector<double> measurements(16);
  vxClassifierDataProviderMemory data;
  for (long i = 0; i < n; ++i) {
    for (double& x : measurements) x = random.next(-1.0, 1.0);
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(measurements, {})),
                 i % 5);
  }
  vxClassifierTool tool;
  tool.train(data, vxClassifierTrainParamsKNN(5));
  return tool;
}

std::vector<double> makeDoubles(long n, long seed) {
  vxRandomUniform random(seed);
  std::vector<double> values(static_cast<std::size_t>(n));
  for (double& x : values) x = random.next(-1.0, 1.0);
  return values;
}

std::vector<long> makeLongs(long n, long seed) {
  vxRandomUniform random(seed);
  std::vector<long> values(static_cast<std::size_t>(n));
  for (long& x : values) x = static_cast<long>(random.next(-1e6, 1e6));
  return values;
}

template <class T>
void store(T& value, std::ostream& stream) {
  vxOutputArchive archive(stream);
  archive || value;
}

template <class T>
void load(T& value, std::istream& stream) {
  vxInputArchive archive(stream);
  archive || value;
}

/// False if a loaded value differs from the stored one.
template <class T>
bool comesBack(T& value, benchmark::State& state) {
  std::stringstream stream;
  T loaded;
  store(value, stream);
  load(loaded, stream);
  const bool equal = loaded == value;
  if (!equal) state.SkipWithError("what was loaded differs from what was stored");
  return equal;
}

template <class T>
void archiveStore(benchmark::State& state, T (*make)(long n, long seed)) {
  T values[] = {make(state.range(0), 1), make(state.range(0), 2)};
  if (!comesBack(values[0], state)) return;
  // Memory streams, written over each time: it is the archive that is measured, not an allocation.
  std::ostringstream stream;
  store(values[0], stream);
  const auto size = static_cast<std::int64_t>(stream.tellp());

  std::size_t turn = 0;
  for (auto _ : state) {
    stream.seekp(0);
    store(values[turn++ % 2], stream);
  }
  state.SetBytesProcessed(state.iterations() * size);
}

template <class T>
void archiveLoad(benchmark::State& state, T (*make)(long n, long seed)) {
  T values[] = {make(state.range(0), 1), make(state.range(0), 2)};
  if (!comesBack(values[0], state)) return;
  std::stringstream streams[2];
  for (const std::size_t i : {0, 1}) store(values[i], streams[i]);
  const auto size = static_cast<std::int64_t>(streams[0].tellp());

  std::size_t turn = 0;
  for (auto _ : state) {
    std::stringstream& stream = streams[turn++ % 2];
    stream.seekg(0);
    T loaded;
    load(loaded, stream);
    benchmark::DoNotOptimize(loaded);
  }
  state.SetBytesProcessed(state.iterations() * size);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("n")->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);
}
BENCHMARK_CAPTURE(archiveStore, tool, &makeTool)->Apply(sizes);
BENCHMARK_CAPTURE(archiveLoad, tool, &makeTool)->Apply(sizes);
BENCHMARK_CAPTURE(archiveStore, doubles, &makeDoubles)->Apply(sizes);
BENCHMARK_CAPTURE(archiveLoad, doubles, &makeDoubles)->Apply(sizes);
BENCHMARK_CAPTURE(archiveStore, longs, &makeLongs)->Apply(sizes);
BENCHMARK_CAPTURE(archiveLoad, longs, &makeLongs)->Apply(sizes);

}  // namespace
