// A linear expression with a constant and the terms of brackets, as it is being read. Every variable occurs once: its
// further terms are added to the first.
#pragma once

#include <vector>

#include "io/parsed_model.hpp"

namespace zorvex {

class LpExpression {
 public:
  struct Term {
    Index col;
    double value;
  };

  void clear() {
    ++stamp_;
    terms_.clear();
    quadratic_.clear();
    constant_ = 0;
    has_constant_ = false;
  }

  // Makes ready for add() of that variable.
  void prepare(Index col) {
    if (static_cast<std::size_t>(col) >= place_.size()) place_.resize(static_cast<std::size_t>(col) * 2 + 16);
    __builtin_prefetch(&place_[col]);
  }
  // Behind prepare(). False when the variable had a term before.
  bool add(Index col, double value) {
    Place& place = place_[col];
    if (place.stamp == stamp_) {
      terms_[place.position].value += value;
      return false;
    }
    place = {stamp_, terms_.size()};
    terms_.push_back({col, value});
    return true;
  }
  void add_constant(double value) {
    constant_ += value;
    has_constant_ = true;
  }
  void add_quadratic(Index first, Index second, double value) { quadratic_.push_back({first, second, value}); }

  [[nodiscard]] const std::vector<Term>& terms() const { return terms_; }
  [[nodiscard]] const std::vector<ParsedQuadraticTerm>& quadratic() const { return quadratic_; }
  [[nodiscard]] double constant() const { return constant_; }
  [[nodiscard]] bool has_constant() const { return has_constant_; }
  [[nodiscard]] bool empty() const { return terms_.empty() && quadratic_.empty() && !has_constant_; }

 private:
  struct Place {
    long stamp = 0;  // of the expression that `position` belongs to
    std::size_t position = 0;
  };

  long stamp_ = 1;
  std::vector<Place> place_;  // per column
  std::vector<Term> terms_;
  std::vector<ParsedQuadraticTerm> quadratic_;
  double constant_ = 0;
  bool has_constant_ = false;
};

}  // namespace zorvex
