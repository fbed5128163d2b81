#include "ratios.h"

#include <cstdio>
#include <cstring>
#include <map>
#include <string>

namespace bench {

namespace {

// Prints as the console does, and keeps the medians.
class Medians : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run> &runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run &run : runs)
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median" && !run.error_occurred)
        times_[run.run_name.function_name] = time_of_one(run);
  }

  // In ns, or 0 for a benchmark that did not run.
  double time(const std::string &name) const {
    const auto found = times_.find(name);
    return found == times_.end() ? 0 : found->second;
  }

private:
  static double time_of_one(const Run &run) {
    const double nanoseconds =
        run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9;
    const auto entries = run.counters.find("entries");
    return entries == run.counters.end() ? nanoseconds : nanoseconds / entries->second.value;
  }

  std::map<std::string, double> times_;
};

std::string verdict(double value, double at_most, const char *format) {
  if (at_most == NO_LIMIT)
    return "";
  char text[64];
  snprintf(text, sizeof(text), format, at_most);
  return std::string(" (at most ") + text + (value > at_most ? ") MISSED" : ")");
}

std::string name_of_ours(const Comparison &line) {
  return std::string(line.routine) + "/ours";
}

std::string name_of_theirs(const Comparison &line) {
  return std::string(line.routine) + "/" + line.peer;
}

// Prints a line of the table; whether its limits hold, as they do where its benchmarks did not run.
bool holds(const Medians &medians, const Comparison &line) {
  const double ours = medians.time(name_of_ours(line));
  if (ours == 0)
    return true;
  if (*line.peer == '\0') {
    printf("%-28s %11.1f ns%s\n", line.routine, ours, verdict(ours, line.at_most, "%.0f ns").c_str());
    return ours <= line.at_most;
  }
  const double theirs = medians.time(name_of_theirs(line));
  if (theirs == 0)
    return true;
  printf("%-28s %11.1f ns  %-16s %11.1f ns  ratio %.2f%s", line.routine, ours, line.peer, theirs,
         ours / theirs, verdict(ours / theirs, line.at_most, "%.2f").c_str());
  if (line.more_at_most != NO_LIMIT)
    printf("  %+.1f ns%s", ours - theirs, verdict(ours - theirs, line.more_at_most, "%+.0f ns").c_str());
  printf("\n");
  return ours / theirs <= line.at_most && ours - theirs <= line.more_at_most;
}

// A regular expression for the benchmarks of some comparisons.
std::string filter_for(const std::vector<Comparison> &comparisons) {
  std::string filter;
  for (const Comparison &line : comparisons)
    for (const std::string &name : {name_of_ours(line), name_of_theirs(line)}) {
      filter += filter.empty() ? "^(" : "|";
      for (const char c : name) {
        if (strchr("^$\\.*+?()[]{}|", c) != nullptr)
          filter += '\\';
        filter += c;
      }
    }
  return filter + ")";
}

// Runs the benchmarks that the filter names, or with an empty one those of the command line; the lines whose
// limits are missed.
std::vector<Comparison> missed(const std::vector<Comparison> &comparisons, const std::string &filter) {
  Medians medians;
  if (filter.empty())
    benchmark::RunSpecifiedBenchmarks(&medians);
  else
    benchmark::RunSpecifiedBenchmarks(&medians, filter);
  printf("\n%-28s %14s  beside\n", "routine", "ours");
  std::vector<Comparison> missed_lines;
  for (const Comparison &line : comparisons)
    if (!holds(medians, line))
      missed_lines.push_back(line);
  fflush(stdout);
  return missed_lines;
}

}  // namespace

int run(int argc, char **argv, const std::vector<Comparison> &comparisons) {
  // Those of the command line come last, and count.
  std::vector<std::string> words = {argv[0], "--benchmark_repetitions=15", "--benchmark_min_time=0.05",
                                    "--benchmark_enable_random_interleaving=true",
                                    "--benchmark_report_aggregates_only=true"};
  words.insert(words.end(), argv + 1, argv + argc);
  std::vector<char *> arguments;
  for (std::string &word : words)
    arguments.push_back(word.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
    return 1;

  std::vector<Comparison> lines = missed(comparisons, "");
  if (!lines.empty()) {
    printf("\nmissed limits are tried once more\n");
    lines = missed(lines, filter_for(lines));
  }
  for (const Comparison &line : lines)
    printf("LIMIT MISSED TWICE: %s%s%s\n", line.routine, *line.peer == '\0' ? "" : " beside ", line.peer);
  return lines.empty() ? 0 : 1;
}

}  // namespace bench
