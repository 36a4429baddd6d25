# cmake -Dtable=FILE -Doutput=FILE -P: a C++ source that defines parameter_help() from the rows
# INT(name, ..., "meaning") of the parameter table, in its order.
file(READ "${table}" text)
string(REPLACE ";" "," text "${text}")  # a semicolon would split CMake's lists
string(REGEX MATCHALL "(INT|DBL|STR)\\([A-Za-z_0-9]+,[^\n]*\"\\)" rows "${text}")
set(lines)
foreach(row IN LISTS rows)
  string(REGEX REPLACE "^...\\(([A-Za-z_0-9]+),.*, (\"[^\"]*\")\\)$" "    {\"\\1\", \\2},\n" line "${row}")
  string(APPEND lines "${line}")
endforeach()
file(WRITE "${output}" "#include \"parameter_help.hpp\"

namespace zorvex_cli {

std::span<const ParameterHelp> parameter_help() {
  static constexpr ParameterHelp kHelp[] = {
${lines}  };
  return kHelp;
}

}  // namespace zorvex_cli
")
