// The data of one model as its last update left it.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "base/types.hpp"
#include "model/name_list.hpp"

namespace zorvex {

inline constexpr double kStoredInfinity = 1e30;  // column bounds and range sides at or beyond it are infinite
inline constexpr double kUndefinedStart = 1e101;

// Vectors of a sparse matrix, one after the other: the entries of vector k are [start[k], start[k + 1]).
struct CompressedVectors {
  std::vector<Offset> start{0};
  std::vector<Index> index;
  std::vector<double> value;

  [[nodiscard]] Index size() const { return static_cast<Index>(start.size()) - 1; }
  [[nodiscard]] Offset num_nonzeros() const { return start.back(); }
  [[nodiscard]] Offset begin(Index k) const { return start[k]; }
  [[nodiscard]] Offset end(Index k) const { return start[k + 1]; }
};

struct SosConstraint {
  int type = 1;  // 1 or 2
  std::vector<Index> member;
  std::vector<double> weight;  // as many as members
  std::string name = {};       // as a model file gave it, "" for none; LP files carry it on
};

// Adds 1/2 * value * x[first] * x[second] to the objective. A model's terms are the entries of a matrix Q of which only
// the symmetric part counts, kept in the order given, never merged.
struct QuadraticTerm {
  Index first = 0;
  Index second = 0;
  double value = 0;
};

struct Interval {
  double lower = -kInf;  // IEEE infinities
  double upper = kInf;
};

// Columns: obj, lb, ub, vtype, var_names have num_cols() entries. Rows: row_sense, rhs, constr_names have num_rows()
// entries, range_lower has none (no range rows) or num_rows().
//
// A row of sense '>' is stored negated: its coefficients and right-hand side. user_rhs() and row_sign() undo that.
// A range row lower <= a'x <= upper has sense '<' and rhs = upper; its lower side stands in range_lower, which is
// -1e30 for every other row. Range rows are never negated.
// Objective: obj as the user gave it, to be minimised (sense 1) or maximised (sense -1); min_cost() is its
// minimisation form.
struct ModelData {
  std::string name;
  int sense = 1;
  double obj_con = 0;

  std::vector<double> obj, lb, ub;  // infinite bounds are +-1e30
  std::vector<char> vtype;          // 'C', 'B', 'I', 'S', 'N'
  NameList var_names;

  std::vector<char> row_sense;  // '<', '>', '='
  std::vector<double> rhs;
  std::vector<double> range_lower;
  NameList constr_names;

  CompressedVectors matrix;  // one vector per column; no duplicates, no zeros
  std::vector<SosConstraint> sos;
  std::vector<QuadraticTerm> quadratic;

  [[nodiscard]] Index num_cols() const { return static_cast<Index>(obj.size()); }
  [[nodiscard]] Index num_rows() const { return static_cast<Index>(rhs.size()); }

  [[nodiscard]] double row_sign(Index row) const { return row_sense[row] == '>' ? -1.0 : 1.0; }
  [[nodiscard]] double user_rhs(Index row) const { return row_sense[row] == '>' ? -rhs[row] : rhs[row]; }
  [[nodiscard]] double min_cost(Index col) const { return sense < 0 ? -obj[col] : obj[col]; }
  [[nodiscard]] bool is_range(Index row) const { return !range_lower.empty() && range_lower[row] > -kStoredInfinity; }
  // Sides of a row in the user's signs: lower <= a'x <= upper.
  [[nodiscard]] Interval row_sides(Index row) const;
  // Bounds as a solver needs them: binary columns are cut to [0, 1]; for 'S' and 'N' those of the nonzero branch.
  [[nodiscard]] Interval column_bounds(Index col) const;

  [[nodiscard]] bool has_integers() const;  // a column of type 'B', 'I' or 'N'
  [[nodiscard]] bool is_mip() const;        // a column of any type but 'C', or an SOS set
};

// Entry point for data assembled in the user's form: '>' rows not yet negated, possibly with explicit zeros in the
// matrix, names left out altogether. Drops the zeros and negates the '>' rows. Cost O(rows + nonzeros).
void to_stored_form(ModelData& data);

// Stored values of column bounds: a lower bound below -1e20 is -infinity, an upper bound from 1e20 on +infinity. The
// asymmetry at exactly -1e20 is intended.
inline double stored_lower(double bound) { return bound < -1e20 ? -kStoredInfinity : bound; }
inline double stored_upper(double bound) { return bound >= 1e20 ? kStoredInfinity : bound; }

// Sense, right-hand side and stored lower side of the row lower <= a'x <= upper (lower not above upper): one-sided or
// equality where the sides say so. A row without finite sides is '<' with right-hand side 1e30.
struct RowForm {
  char sense;
  double rhs;          // user form
  double range_lower;  // -1e30 unless a true range
};
RowForm range_row_form(double lower, double upper);

inline bool is_valid_sense(char c) { return c == '<' || c == '>' || c == '='; }
inline bool is_valid_vtype(char c) { return c == 'C' || c == 'B' || c == 'I' || c == 'S' || c == 'N'; }

}  // namespace zorvex
