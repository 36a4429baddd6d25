// The constraint matrix while presolve works on it: every entry is a node in a doubly linked list of its row and one of
// its column, so that entries appear and vanish in constant time.
//   Order    entries of a row or column come in no particular, but reproducible, order.
//   Errors   none; more than 2^31 - 1 entries are the caller's to refuse.
#pragma once

#include <vector>

#include "base/types.hpp"
#include "linalg/sparse_matrix.hpp"

namespace zorvex {

class PresolveMatrix {
 public:
  struct Entry {
    double value;
    Index row, col;
    Index next_in_row, previous_in_row, next_in_col, previous_in_col;  // -1 at the ends
  };

  // Walks a row or column; the entry it stands on may be erased.
  template <Index Entry::*kNext>
  class Range {
   public:
    Range(const std::vector<Entry>& entries, Index first) : entries_(&entries), first_(first) {}
    class Iterator {
     public:
      Iterator(const std::vector<Entry>* entries, Index at) : entries_(entries), at_(at) { look_ahead(); }
      const Entry& operator*() const { return (*entries_)[at_]; }
      Iterator& operator++() {
        at_ = next_;
        look_ahead();
        return *this;
      }
      bool operator!=(const Iterator& other) const { return at_ != other.at_; }
      [[nodiscard]] Index node() const { return at_; }

     private:
      void look_ahead() { next_ = at_ < 0 ? -1 : (*entries_)[at_].*kNext; }
      const std::vector<Entry>* entries_;
      Index at_, next_ = -1;
    };
    [[nodiscard]] Iterator begin() const { return {entries_, first_}; }
    [[nodiscard]] Iterator end() const { return {entries_, -1}; }

   private:
    const std::vector<Entry>* entries_;
    Index first_;
  };
  using RowRange = Range<&Entry::next_in_row>;
  using ColRange = Range<&Entry::next_in_col>;

  explicit PresolveMatrix(const SparseMatrix& matrix);

  [[nodiscard]] RowRange row(Index row) const { return {entries_, row_first_[row]}; }
  [[nodiscard]] ColRange col(Index col) const { return {entries_, col_first_[col]}; }
  [[nodiscard]] Index row_length(Index row) const { return row_length_[row]; }
  [[nodiscard]] Index col_length(Index col) const { return col_length_[col]; }
  [[nodiscard]] const Entry& entry(Index node) const { return entries_[node]; }
  [[nodiscard]] Index first_in_row(Index row) const { return row_first_[row]; }
  [[nodiscard]] Index first_in_col(Index col) const { return col_first_[col]; }
  // At least the largest magnitude the row holds: entries that left may still count.
  [[nodiscard]] double row_magnitude(Index row) const { return row_magnitude_[row]; }

  // May move the entries: references and ranges are void afterwards.
  Index insert(Index row, Index col, double value);
  void erase(Index node);
  void set_value(Index node, double value);

 private:
  void link(Index node);

  std::vector<Entry> entries_;
  std::vector<Index> free_;  // erased nodes
  std::vector<Index> row_first_, col_first_, row_length_, col_length_;
  std::vector<double> row_magnitude_;
};

}  // namespace zorvex
