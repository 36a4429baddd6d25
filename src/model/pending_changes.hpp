// Changes queued by the building functions and attribute writers until the next update.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/types.hpp"
#include "model/model_data.hpp"

namespace zorvex {

template <class T>
struct ValueChange {
  Index index;
  T value;
};

// One mark word per stored object, made at the first deletion; bit 0: delete at the next update.
struct DeletionMarks {
  static constexpr std::uint32_t kDelete = 1;
  std::vector<std::uint32_t> word;
  Index count = 0;  // marked objects

  void mark(Index i) {
    if ((word[i] & kDelete) == 0) ++count;
    word[i] |= kDelete;
  }
  [[nodiscard]] bool marked(Index i) const { return count > 0 && (word[i] & kDelete) != 0; }
};

struct CoefficientChange {
  Index row, col;
  double value;  // user form
};

// One index space for everything in here: rows, columns and sets of the stored model keep their numbers, added ones
// follow behind in the order they were added. Deletions are applied last, so they never shift an index in the queue.
// All values are in the user's form. A later change of the same thing wins.
struct PendingChanges {
  PendingChanges(Index rows, Index cols, Index sets) : num_rows(rows), num_cols(cols), num_sos(sets) {}

  Index num_rows, num_cols, num_sos;  // of the stored model
  DeletionMarks del_rows, del_cols, del_sos;

  struct Columns {
    std::vector<double> obj, lb, ub;
    std::vector<char> vtype;
    NameList names;
    CompressedVectors entries;  // row numbers
  } new_cols;
  struct Rows {
    std::vector<char> sense;
    std::vector<double> rhs, range_lower;
    NameList names;
    CompressedVectors entries;  // column numbers
  } new_rows;
  std::vector<SosConstraint> new_sos;
  bool drop_quadratic = false;  // the stored terms go; new_quadratic came after
  std::vector<QuadraticTerm> new_quadratic;

  std::vector<CoefficientChange> coefficients;
  std::vector<ValueChange<double>> obj, lb, ub, rhs;
  std::vector<ValueChange<char>> vtype, sense;
  std::vector<ValueChange<std::string>> var_names, constr_names;
  std::optional<double> obj_con;
  std::optional<int> model_sense;
  std::optional<std::string> model_name;

  [[nodiscard]] Index total_rows() const { return num_rows + static_cast<Index>(new_rows.rhs.size()); }
  [[nodiscard]] Index total_cols() const { return num_cols + static_cast<Index>(new_cols.obj.size()); }
  [[nodiscard]] bool adds() const { return !new_cols.obj.empty() || !new_rows.rhs.empty() || !new_sos.empty(); }
  [[nodiscard]] bool deletes() const { return del_rows.count > 0 || del_cols.count > 0 || del_sos.count > 0; }
  // Anything but names: solutions of the old model are then void.
  [[nodiscard]] bool changes_problem() const {
    return adds() || deletes() || drop_quadratic || !new_quadratic.empty() || !coefficients.empty() || !obj.empty() ||
           !lb.empty() || !ub.empty() || !rhs.empty() || !vtype.empty() || !sense.empty() || obj_con || model_sense;
  }
  [[nodiscard]] bool empty() const {
    return !changes_problem() && var_names.empty() && constr_names.empty() && !model_name;
  }

  // Workspace of duplicate checks: stamp[i] == last_stamp when index i was seen in the current list.
  std::vector<std::uint64_t> stamp;
  std::uint64_t last_stamp = 0;
};

}  // namespace zorvex
