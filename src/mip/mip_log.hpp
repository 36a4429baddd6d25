// The text of the branch-and-cut log: number formats, node lines, solution lines, root report, cut summary.
//   Units    objectives come in minimisation form and are multiplied by the sense when printed; times in seconds.
//   Clock    none: every call is given the elapsed time, so that the lines are a function of their arguments.
#pragma once

#include <array>
#include <string>

#include "base/log_sink.hpp"
#include "base/status.hpp"

namespace zorvex {

// What became of a node, as the log shows it. Codes 0 and 6 show nothing.
enum class NodeDisplay : int {
  kNothing = 0,
  kIncumbent = 1,
  kSolved = 2,
  kPostponed = 3,
  kInfeasible = 4,
  kCutoff = 5,
  kQuiet = 6,
  kExploded = 7,
};

struct NodeLine {
  NodeDisplay display = NodeDisplay::kNothing;
  bool root = false;
  int depth = 0;
  double objective = 0;   // of the relaxation
  int fractional = 0;     // integer variables
  int violated_sets = 0;  // SOS constraints
};

// The search as one progress line sees it.
struct Progress {
  double explored = 0;
  double unexplored = 0;
  double incumbent = 1e100;
  double bound = -1e100;
  double iterations = 0;       // total
  double root_iterations = 0;  // of the root relaxation
  double elapsed = 0;          // seconds, time offset included
};

inline constexpr int kNumCutTypes = 15;

// `value` is printed as given: multiply by the sense first.
std::string format_width10(double value);
std::string format_width12(double value);
// Gap column of a node line, from internal values; "- " when none can be shown.
std::string format_gap(double incumbent, double bound);

class MipLog {
 public:
  MipLog(LogSink& sink, int sense, bool sub_mip) : sink_(sink), sense_(sense), sub_mip_(sub_mip) {}

  // Opens a (resumed) search: `explored` is the number of nodes explored so far.
  void begin_call(double explored, int display_interval);
  void set_depth_offset(int offset) { depth_offset_ = offset; }

  // Prints the node if its turn has come; returns whether it did.
  bool node(const NodeLine& line, const Progress& progress);
  // A solution found outside the node relaxations.
  void heuristic_solution(const Progress& progress, bool root_solved);
  // Sign of life inside long root computations.
  void elapsed(double seconds);
  void root_relaxation(SolveStatus status, double objective, double iterations, double seconds, double elapsed);
  void cut_summary(const std::array<int, kNumCutTypes>& counts);

  void start_loaded(double objective);
  void start_failed();
  // What a quadratic problem makes of the parameters Method and NodeMethod.
  void quadratic_methods(int root_method, int node_method);
  void variable_types(int continuous, int integer, int binary);
  void fixed_variables(int fixed, int total);
  void continuing();
  void improvement_phase();
  void unknown_termination();

  [[nodiscard]] bool header_printed() const { return header_printed_; }
  [[nodiscard]] double last_printed() const { return last_printed_; }

 private:
  [[nodiscard]] bool due(const NodeLine& line, const Progress& progress) const;
  [[nodiscard]] bool interval_passed(double seconds) const;
  [[nodiscard]] double shown(double value) const;
  [[nodiscard]] std::string bound_text(double bound) const;
  void header();

  LogSink& sink_;
  int sense_;
  bool sub_mip_;
  bool header_printed_ = false;
  double last_printed_ = 0;       // elapsed time of the last progress line
  double explored_at_start_ = 0;  // of the current optimize call
  int display_interval_ = 5;
  int depth_offset_ = 0;
};

}  // namespace zorvex
