// The postsolve stack: one record per applied step, written in order, undone in reverse. A record is a run of indices
// and a run of reals that only the reduction that wrote it can read.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "base/types.hpp"

namespace zorvex {

struct Reduction;

// A sparse row or column as it was when recorded.
struct RecordedEntries {
  std::span<const Index> index;
  std::span<const double> value;

  template <class Vector>
  [[nodiscard]] Extended dot(const Vector& dense) const {
    Extended sum = 0;
    for (std::size_t k = 0; k < index.size(); ++k) sum += Extended(value[k]) * dense[index[k]];
    return sum;
  }
};

// Reads one record front to back.
class UndoReader {
 public:
  UndoReader(const Index* index, const double* real) : index_(index), real_(real) {}
  Index index() { return *index_++; }
  double real() { return *real_++; }
  RecordedEntries entries() {
    const auto count = static_cast<std::size_t>(index());
    const RecordedEntries result{{index_, count}, {real_, count}};
    index_ += count;
    real_ += count;
    return result;
  }

 private:
  const Index* index_;
  const double* real_;
};

class UndoLog {
 public:
  // Starts a record; the values appended next belong to it.
  UndoLog& begin(const Reduction& reduction) {
    records_.push_back({&reduction, index_.size(), real_.size()});
    return *this;
  }
  UndoLog& index(Index value) {
    index_.push_back(value);
    return *this;
  }
  UndoLog& real(double value) {
    real_.push_back(value);
    return *this;
  }
  // The entries of a matrix range, under the indices that `key` picks (&Entry::row or &Entry::col), without `skip`.
  template <class Range, class Entry>
  UndoLog& entries(const Range& range, Index Entry::*key, Index skip = -1) {
    const std::size_t count_at = index_.size();
    index_.push_back(0);
    for (const Entry& entry : range) {
      if (entry.*key == skip) continue;
      index_.push_back(entry.*key);
      real_.push_back(entry.value);
    }
    index_[count_at] = static_cast<Index>(index_.size() - count_at - 1);
    return *this;
  }

  [[nodiscard]] std::size_t size() const { return records_.size(); }
  [[nodiscard]] const Reduction& reduction(std::size_t record) const { return *records_[record].reduction; }
  [[nodiscard]] UndoReader reader(std::size_t record) const {
    return {index_.data() + records_[record].index_begin, real_.data() + records_[record].real_begin};
  }

 private:
  struct Record {
    const Reduction* reduction;
    std::size_t index_begin, real_begin;
  };
  std::vector<Record> records_;
  std::vector<Index> index_;
  std::vector<double> real_;
};

}  // namespace zorvex
