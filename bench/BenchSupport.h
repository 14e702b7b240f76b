// Shared by the benchmark programs: a reporter that keeps, for each benchmark, the best
// time per item over its repetitions, so that a program can print ratios measured in one
// run. A benchmark says how many items one iteration handles in its counter "items".
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace bench {

class BestTimeReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& r : runs) {
      if (r.run_type != Run::RT_Iteration || r.error_occurred || r.iterations == 0) continue;
      double items = 1;
      if (auto it = r.counters.find("items"); it != r.counters.end() && it->second.value > 0) items = it->second.value;
      const double ns = r.cpu_accumulated_time * 1e9 / (static_cast<double>(r.iterations) * items);
      std::string key = r.run_name.function_name;
      if (!r.run_name.args.empty()) key += "/" + r.run_name.args;
      auto [slot, fresh] = best_.try_emplace(key, ns);
      if (!fresh && ns < slot->second) slot->second = ns;
      const double wall = r.real_accumulated_time * 1e9 / (static_cast<double>(r.iterations) * items);
      auto [wslot, wfresh] = bestWall_.try_emplace(key, wall);
      if (!wfresh && wall < wslot->second) wslot->second = wall;
    }
    ConsoleReporter::ReportRuns(runs);
  }
  // Best CPU time per item in nanoseconds, or a negative value when the benchmark
  // did not run (skipped or failed).
  double bestNs(const std::string& key) const {
    auto it = best_.find(key);
    return it == best_.end() ? -1 : it->second;
  }
  // The same in wall-clock time.
  double bestWallNs(const std::string& key) const {
    auto it = bestWall_.find(key);
    return it == bestWall_.end() ? -1 : it->second;
  }

 private:
  std::map<std::string, double> best_;
  std::map<std::string, double> bestWall_;
};

// Removes "--name=value" from the arguments and returns the value, or `fallback`.
inline double takeOption(int& argc, char** argv, const char* name, double fallback) {
  const std::string prefix = std::string("--") + name + "=";
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], prefix.c_str(), prefix.size()) == 0) {
      const double v = std::atof(argv[i] + prefix.size());
      for (int j = i; j + 1 < argc; ++j) argv[j] = argv[j + 1];
      --argc;
      return v;
    }
  }
  return fallback;
}

}  // namespace bench
