// Mixed-integer rounding of one aggregated row: bound substitution, complementing, scaling, rounding.
//   Source   H. Marchand, L. Wolsey, "Aggregation and mixed integer rounding to solve MIPs", Oper. Res. 49 (2001)
//            363-371, sections 3 and 4.
#pragma once

#include <vector>

#include "mip/separator.hpp"

namespace zorvex {

// Bounds of continuous columns by integer ones, from the rows with two entries and those implied.
class VariableBounds {
 public:
  explicit VariableBounds(const SearchModel& model);

  // The tightest at x; of < 0 when the column has none.
  [[nodiscard]] VariableBound tightest(Index col, bool upper, const std::vector<double>& x) const;

 private:
  void take(const SearchModel& model, Index row, Index continuous_pos, double side, bool is_upper_side);

  struct Entry {
    Index col;
    VariableBound bound;
  };
  std::vector<std::vector<VariableBound>> upper_, lower_;  // by column
};

// sum coef[j] x_j + sum slack = rhs, built from multiples of LP rows; each inequality row enters with its slack on the
// side the relaxation is nearer to.
class AggregatedRow {
 public:
  struct Slack {
    Index row;
    bool upper;  // s = upper - a'x, else a'x - lower
    double coef;
    double value;  // at x
    bool integer;
  };

  AggregatedRow(const SearchModel& model, const LpRows& rows, const std::vector<double>& x);

  void clear();
  void add(Index row, double multiplier);

  [[nodiscard]] double coef(Index col) const { return coef_[col]; }
  [[nodiscard]] const std::vector<Index>& support() const { return support_; }
  [[nodiscard]] const std::vector<Slack>& slacks() const { return slacks_; }
  [[nodiscard]] double rhs() const { return rhs_; }

 private:
  [[nodiscard]] bool integer_slack(Index row, double side) const;

  const SearchModel& model_;
  const LpRows& rows_;
  const std::vector<double>& x_;
  std::vector<double> coef_;  // num_cols, zero outside support_
  std::vector<Index> support_;
  std::vector<char> in_support_;
  std::vector<Slack> slacks_;
  double rhs_ = 0;
};

class MirCutter {
 public:
  MirCutter(const SearchModel& model, const LpRows& rows, const VariableBounds& variable_bounds,
            const std::vector<double>& x);

  // Appends the most violated cut over the candidate scales for the row, and for its negative: with `both_signs` in any
  // case, else only when the row itself gives none. Returns whether any was violated.
  bool separate(const AggregatedRow& row, CutType type, bool both_signs, std::vector<Cut>& found);

 private:
  enum class Kind : char { kLower, kUpper, kFree };
  struct Term {  // a nonnegative variable t standing for a column or a slack
    Index col;   // -1: slack
    std::size_t slack;
    Kind kind;
    VariableBound bound;  // continuous columns substituted by a variable bound; of < 0: simple bound
    double coef;
    double value;
    double range;  // integer columns: upper - lower
  };

  bool substitute(const AggregatedRow& row, double sign);
  bool substitute_continuous(Index col, double coef);
  bool substitute_integer(Index col, double coef);
  void add_integer_coef(Index col, double coef);
  [[nodiscard]] double efficacy(double scale) const;
  double best_scale();
  void complement(Term& term);
  void improve_by_complementing(double& scale, double& best);
  void build(const AggregatedRow& row, double scale, Cut& cut);
  void put(Index col, double coef);
  void clear_output();

  const SearchModel& model_;
  const LpRows& rows_;
  const VariableBounds& variable_bounds_;
  const std::vector<double>& x_;
  std::vector<Term> integers_, continuous_;
  double rhs_ = 0;
  std::vector<double> integer_coef_;  // num_cols
  std::vector<Index> integer_cols_;
  std::vector<char> integer_seen_;
  std::vector<double> out_;  // num_cols
  std::vector<Index> out_cols_;
  std::vector<char> out_seen_;
};

}  // namespace zorvex
