// Solution text: one line "NAME VALUE" a variable; lines that begin with '#' and blank lines mean nothing.
#pragma once

#include <istream>
#include <string>
#include <vector>

namespace zorvex_cli {

struct SolutionEntry {
  std::string name;
  double value = 0;
  int line = 0;
};

// The value is the last word of its line, so that names may hold blanks. Throws Failure naming the first bad line.
std::vector<SolutionEntry> read_solution(std::istream& stream, const std::string& name);
std::vector<SolutionEntry> read_solution_file(const std::string& path);

// One value a variable. `found` tells which ones the entries named; an unknown or repeated name is a Failure.
struct SolutionValues {
  std::vector<double> value;  // 0 where not found
  std::vector<bool> found;
  int missing = 0;
};
SolutionValues match_names(const std::vector<SolutionEntry>& entries, const std::vector<std::string>& names,
                           const std::string& file);

}  // namespace zorvex_cli
