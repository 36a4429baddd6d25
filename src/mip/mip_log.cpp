#include "mip/mip_log.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "mip/mip_tolerances.hpp"

namespace zorvex {

namespace {

using mip_tol::kNone;

template <class... Args>
std::string text(const char* format, Args... args) {
  char buffer[512];
  const int length = std::snprintf(buffer, sizeof buffer, format, args...);
  return std::string(buffer, static_cast<std::size_t>(std::clamp(length, 0, static_cast<int>(sizeof buffer) - 1)));
}

// Digits before the decimal point, by the truncated decimal logarithm.
double integer_digits(double value) { return std::trunc(std::log10(std::abs(value))) + 1; }

// `width` 10 keeps 5 decimals for short numbers, `width` 12 keeps 7; both let longer numbers fill the width.
std::string format_adaptive(double value, int width) {
  const int short_decimals = width - 5;
  const double digits = value == 0 ? 0 : integer_digits(value);
  if (value == 0 || digits < 4) return text("%.*f", short_decimals, value);
  if (digits < 8) {
    const int decimals = width - 2 - static_cast<int>(digits) + (value > 0 ? 1 : 0);
    return text("%.*f", decimals, value);
  }
  const int exponent_decimals = width - 7;
  std::string result = text("%.*e", exponent_decimals, value);
  if (result.size() < static_cast<std::size_t>(width)) result = text("%.*e", exponent_decimals + 1, value);
  return result;
}

std::string iterations_per_node(const Progress& progress, const char* none) {
  if (progress.explored <= 0) return none;
  const double ratio = (progress.iterations - progress.root_iterations) / progress.explored;
  return ratio < 99.5 ? text("%.1f", ratio) : text("%.0f", ratio);
}

std::string time_text(double elapsed) { return text("%.0fs", std::floor(elapsed)); }

}  // namespace

std::string format_width10(double value) { return format_adaptive(value, 10); }
std::string format_width12(double value) { return format_adaptive(value, 12); }

std::string format_gap(double incumbent, double bound) {
  if (incumbent == kNone) return "- ";
  if (std::abs(incumbent - bound) < mip_tol::kGapZero) return "0.0%";
  if (std::abs(incumbent) < mip_tol::kGapIncumbent || bound == -kNone) return "- ";
  const double gap = std::abs((incumbent - bound) / incumbent);
  if (!(gap < 100)) return "- ";
  if (gap >= 0.995) return text("%.0f%%", 100 * gap);
  if (gap < 0.0995) return text("%.2f%%", 100 * gap);
  return text("%.1f%%", 100 * gap);
}

void MipLog::begin_call(double explored, int display_interval) {
  explored_at_start_ = explored;
  display_interval_ = std::max(1, display_interval);
}

double MipLog::shown(double value) const { return value == 0 ? 0 : value * sense_; }

std::string MipLog::bound_text(double bound) const {
  if (bound == kNone) return "infeasible";
  if (bound == -kNone) return "-";
  return format_width10(shown(bound));
}

bool MipLog::interval_passed(double seconds) const {
  return std::floor(seconds / display_interval_) != std::floor(last_printed_ / display_interval_);
}

bool MipLog::due(const NodeLine& line, const Progress& progress) const {
  if (line.display == NodeDisplay::kIncumbent) return true;
  if (line.root) return progress.explored == 0;
  return progress.explored == explored_at_start_ || progress.explored <= 0 || interval_passed(progress.elapsed);
}

void MipLog::header() {
  if (header_printed_) return;
  sink_.write("\n");
  sink_.write("    Nodes    |    Current Node    |     Objective Bounds      |     Work\n");
  sink_.write(" Expl Unexpl |  Obj  Depth IntInf | Incumbent    BestBd   Gap | It/Node Time\n");
  sink_.write("\n");
  header_printed_ = true;
}

bool MipLog::node(const NodeLine& line, const Progress& progress) {
  if (!due(line, progress)) return false;
  header();
  const int depth = line.depth + depth_offset_;
  const std::string bound = bound_text(progress.bound);
  const std::string gap = format_gap(progress.incumbent, progress.bound);
  const std::string per_node = iterations_per_node(progress, "-");
  const std::string time = time_text(progress.elapsed);
  if (line.display == NodeDisplay::kIncumbent) {
    const std::string incumbent = format_width12(shown(progress.incumbent));
    sink_.print("*%5.0f %5.0f %10s %4d    %12s %10s %6s %5s %5s\n", progress.explored, progress.unexplored, "", depth,
                incumbent.c_str(), bound.c_str(), gap.c_str(), per_node.c_str(), time.c_str());
  } else {
    std::string objective = "-";
    std::string infeasibilities;
    switch (line.display) {
      case NodeDisplay::kSolved:
        objective = format_width10(shown(std::max(line.objective, progress.bound)));
        infeasibilities = text("%3d", line.fractional + line.violated_sets);
        break;
      case NodeDisplay::kPostponed:
        objective = "postponed";
        break;
      case NodeDisplay::kInfeasible:
        objective = "infeasible";
        break;
      case NodeDisplay::kCutoff:
        objective = "cutoff";
        break;
      case NodeDisplay::kExploded:
        objective = "exploded";
        break;
      default:
        break;
    }
    const std::string incumbent = progress.incumbent >= kNone ? "-" : format_width10(shown(progress.incumbent));
    sink_.print(" %5.0f %5.0f %10s %4d %4s %10s %10s %6s %5s %5s\n", progress.explored, progress.unexplored,
                objective.c_str(), depth, infeasibilities.c_str(), incumbent.c_str(), bound.c_str(), gap.c_str(),
                per_node.c_str(), time.c_str());
  }
  last_printed_ = progress.elapsed;
  return true;
}

void MipLog::heuristic_solution(const Progress& progress, bool root_solved) {
  const std::string incumbent = format_width12(shown(progress.incumbent));
  if (!header_printed_ && !root_solved) {
    sink_.print("Found heuristic solution: objective %s\n", incumbent.c_str());
    return;
  }
  header();
  const std::string bound = bound_text(progress.bound);
  const std::string gap = progress.bound == -kNone ? "-" : format_gap(progress.incumbent, progress.bound);
  const std::string per_node = iterations_per_node(progress, " -");
  sink_.print("H%5.0f %5.0f                    %12s %10s %6s %5s %5s\n", progress.explored, progress.unexplored,
              incumbent.c_str(), bound.c_str(), gap.c_str(), per_node.c_str(), time_text(progress.elapsed).c_str());
  last_printed_ = progress.elapsed;
}

void MipLog::elapsed(double seconds) {
  if (header_printed_ || !interval_passed(seconds)) return;
  sink_.print("Total elapsed time = %.2fs\n", seconds);
  last_printed_ = seconds;
}

void MipLog::root_relaxation(SolveStatus status, double objective, double iterations, double seconds, double elapsed) {
  std::string word;
  switch (status) {
    case SolveStatus::kOptimal:
      word = text("objective %.6e", shown(objective));
      break;
    case SolveStatus::kInfeasible:
      word = "infeasible";
      break;
    case SolveStatus::kInfOrUnbd:
      word = "infeasible or unbounded";
      break;
    case SolveStatus::kUnbounded:
      word = "unbounded";
      break;
    case SolveStatus::kCutoff:
      word = "cutoff";
      break;
    case SolveStatus::kIterationLimit:
      word = "iteration limit";
      break;
    case SolveStatus::kTimeLimit:
      word = "time limit";
      break;
    case SolveStatus::kInterrupted:
      word = "interrupted";
      break;
    case SolveStatus::kNumeric:
      word = "numerical trouble";
      break;
    case SolveStatus::kSuboptimal:
      word = "sub-optimal";
      break;
    default:
      word = "unknown termination status";
      break;
  }
  if (sub_mip_) word = text("objective %.6e", shown(objective));
  sink_.print("\nRoot relaxation: %s, %.0f iterations, %.2f seconds\n", word.c_str(), iterations, seconds);
  last_printed_ = elapsed;
}

void MipLog::cut_summary(const std::array<int, kNumCutTypes>& counts) {
  struct Line {
    int type;
    const char* label;
  };
  static constexpr Line kLines[] = {
      {0, "User"},       {1, "Learned"}, {2, "Gomory"},     {3, "Cover"},     {4, "Implied bound"},
      {5, "Clique"},     {6, "MIR"},     {7, "Flow cover"}, {8, "Flow path"}, {9, "GUB cover"},
      {11, "Zero half"}, {14, "Mod-K"},  {13, "Network"},
  };
  int total = 0;
  for (const int count : counts) total += count;
  if (total == 0) return;
  sink_.write("\n");
  sink_.write("Cutting planes:\n");
  for (const Line& line : kLines) {
    if (counts[static_cast<std::size_t>(line.type)] != 0) {
      sink_.print("  %s: %d\n", line.label, counts[static_cast<std::size_t>(line.type)]);
    }
  }
}

void MipLog::start_loaded(double objective) {
  sink_.print("\nLoaded MIP start with objective %g\n\n", shown(objective));
}

void MipLog::start_failed() { sink_.write("\nMIP start did not produce a feasible solution\n\n"); }

void MipLog::quadratic_methods(int root_method, int node_method) {
  constexpr const char* kInstead = "         Using dual simplex\n";
  if (root_method > 1) {
    sink_.print("WARNING: %s not supported for solving MIQP root relaxation\n",
                root_method == 2 ? "Barrier" : "Concurrent");
    sink_.write(kInstead);
  }
  if (node_method == 2) {
    sink_.write("WARNING: Barrier not supported for solving MIQP node relaxations\n");
    sink_.write(kInstead);
  }
}

void MipLog::variable_types(int continuous, int integer, int binary) {
  if (sub_mip_) return;
  sink_.print("Variable types: %d continuous, %d integer (%d binary)\n", continuous, integer, binary);
}

void MipLog::fixed_variables(int fixed, int total) {
  if (fixed != 0) sink_.print("Fixed variables: %d of %d\n", fixed, total);
}

void MipLog::continuing() { sink_.write("\nContinuing optimization...\n\n"); }

void MipLog::improvement_phase() {
  sink_.write("\nResetting heuristic parameters to focus on improving solution\n");
  sink_.write("(using Heuristics=0.5 and RINS=10)...\n\n");
}

void MipLog::unknown_termination() { sink_.write("Unknown termination status!\n"); }

}  // namespace zorvex
