// Optional names of the rows, columns or sets of one model: nothing is stored until the first name is given.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "base/types.hpp"

namespace zorvex {

// An empty text stands for "no name of its own". Invariant: names_ has count_ entries once stored_, none before.
class NameList {
 public:
  [[nodiscard]] Index size() const { return count_; }
  [[nodiscard]] bool any() const { return stored_; }  // some name was given
  [[nodiscard]] const std::string& operator[](Index i) const { return stored_ ? names_[i] : kUnnamed; }

  // Null and "" both mean unnamed.
  void append(const char* name) {
    const bool given = name != nullptr && *name != '\0';
    if (given) materialise();
    if (stored_) names_.emplace_back(given ? name : "");
    ++count_;
  }
  void append_unnamed(Index n) {
    if (stored_) names_.resize(static_cast<std::size_t>(count_) + n);
    count_ += n;
  }
  void set(Index i, std::string name) {
    if (!stored_ && name.empty()) return;
    materialise();
    names_[i] = std::move(name);
  }
  // Moves all names of `other` behind those held here. After reserve_for(other) it allocates nothing.
  void append(NameList&& other) {
    if (other.stored_) materialise();
    if (stored_) {
      names_.resize(static_cast<std::size_t>(count_) + other.count_);
      for (Index i = 0; other.stored_ && i < other.count_; ++i) names_[count_ + i] = std::move(other.names_[i]);
    }
    count_ += other.count_;
    other = NameList();
  }
  void reserve_for(const NameList& other) {
    if (other.stored_) materialise();
    const std::size_t needed = static_cast<std::size_t>(count_) + other.count_;
    if (stored_ && names_.capacity() < needed) names_.reserve(needed + needed / 2);
  }
  // Stores empty names where none are stored yet, so that set() allocates no more than the name it is given.
  void materialise() {
    if (stored_) return;
    names_.resize(static_cast<std::size_t>(count_));
    stored_ = true;
  }
  // Keeps the names with keep[i] != 0.
  void compress(const std::vector<char>& keep) {
    Index kept = 0;
    for (Index i = 0; i < count_; ++i) {
      if (!keep[i]) continue;
      if (stored_ && kept != i) names_[kept] = std::move(names_[i]);
      ++kept;
    }
    if (stored_) names_.resize(static_cast<std::size_t>(kept));
    count_ = kept;
  }

 private:
  inline static const std::string kUnnamed;

  Index count_ = 0;
  bool stored_ = false;
  std::vector<std::string> names_;
};

}  // namespace zorvex
