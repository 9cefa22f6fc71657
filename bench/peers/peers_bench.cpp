// SPDX-License-Identifier: MIT
// Measures this library beside others that a host might pick instead, in turns on one thread.
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "bench/peers/cases.h"
#include "bench/peers/neighbour_peer.h"

namespace {

using peers::Extent;
using peers::Report;

constexpr struct {
  const char* name;
  void (*measure)(const Extent&, Report&);
} kParts[] = {
    {"neighbours", &peers::measureNeighbours}, {"variants", &peers::measureNeighbourVariants},
    {"bayes", &peers::measureBayes},           {"weighting", &peers::measureWeighting},
    {"trees", &peers::measureTrees},           {"rules", &peers::measureRules},
    {"archives", &peers::measureArchives},
};

std::string processor() {
  const std::string key = "model name";
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind(key, 0) == 0) return line.substr(line.find(": ") + 2);
  }
  return "unknown";
}

std::string registers() {
  if (!Report::hasWideRegisters()) return "those of the plain processor";
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx512bw")) return "AVX-512";
  if (__builtin_cpu_supports("avx2")) return "AVX2";
#endif
  return "those of the plain processor";
}

void setUp(const std::string& commit, Report& report) {
  if (!commit.empty()) report.fact("commit", commit);
  report.fact("processor", processor());
  report.fact("registers", registers());
  report.fact("compiler", PEERS_COMPILER);
  peers::setUpFaiss(report);
  peers::setUpOpenCv(report);
  peers::setUpKdTrees(report);
}

}  // namespace

int main(int argc, char** argv) try {
  CLI::App app("Measures vxclss beside other libraries.");
  Extent extent;
  std::vector<std::string> parts;
  std::string json, commit;
  app.add_flag("--quick", extent.isQuick, "Fewer rounds, no sets of 1e5 patterns in the grid");
  app.add_flag("--plots", extent.withPlots, "Also measure how times grow");
  app.add_option("--only", parts, "Of neighbours variants bayes weighting trees rules archives");
  app.add_option("--json", json, "Write everything measured to this file");
  app.add_option("--commit", commit, "What is measured, for the record");
  CLI11_PARSE(app, argc, argv);

  // One thread, in the process that is started for scikit-learn too.
  setenv("OMP_NUM_THREADS", "1", 1);
  setenv("OPENBLAS_NUM_THREADS", "1", 1);
  extent.effort = extent.isQuick ? peers::Effort{5, 1e-3} : peers::Effort{11, 4e-3};
  Report report;
  setUp(commit, report);
  for (const auto& [name, measure] : kParts) {
    if (parts.empty() || std::find(parts.begin(), parts.end(), name) != parts.end()) {
      measure(extent, report);
    }
  }
  report.print(std::cout);
  if (!json.empty()) report.writeJson(json);
  return report.isRight() ? 0 : 1;
} catch (const std::exception& error) {
  std::cerr << "error: " << error.what() << "\n";
  return 1;
} catch (const vxException& error) {
  std::cerr << "error 0x" << std::hex << error.errorNumber() << "\n";
  return 1;
}
