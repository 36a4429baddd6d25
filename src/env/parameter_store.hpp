// What an environment knows about its parameters besides their values: descriptors with the bounds that hold on this
// machine, and the name index. Built once per environment, immutable afterwards, shared with the environment's models.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "env/parameter_table.hpp"

namespace zorvex {

// Normal form of parameter and attribute names: leading underscores as they are, later ones dropped, the rest in lower
// case (ASCII).
std::string normalise_name(std::string_view name);

// Chained hash table from normalised names to numbers.
class NameIndex {
 public:
  explicit NameIndex(int num_buckets = 256) : heads_(static_cast<std::size_t>(num_buckets), -1) {}
  // The name is normalised here. A name given twice keeps its first number.
  void add(std::string_view name, int number);
  // -1 when there is no such name.
  [[nodiscard]] int find(std::string_view name) const;

 private:
  struct Node {
    std::string key;
    int number;
    int next;  // in nodes_, -1 ends the chain
  };
  [[nodiscard]] int find_key(const std::string& key, std::size_t bucket) const;
  [[nodiscard]] std::size_t bucket_of(const std::string& key) const;

  std::vector<int> heads_;
  std::vector<Node> nodes_;
};

struct ParameterDescriptor {
  const char* name;
  double min;
  double max;
  double def;
  const char* default_text;  // empty text for numeric parameters
  ParamType type;
  std::uint32_t flag;  // non-zero: never written to parameter files
  int position;        // 1 + slot in the value block; 0: the row has no value
};

class ParameterStore {
 public:
  // `max_threads` replaces the table's upper bound of Threads.
  explicit ParameterStore(int max_threads);

  // Null when the name is unknown. Separator rows are found and have position 0.
  [[nodiscard]] const ParameterDescriptor* find(std::string_view name) const;
  [[nodiscard]] const std::vector<ParameterDescriptor>& descriptors() const { return descriptors_; }
  [[nodiscard]] int public_count() const { return kNumPublicParameters; }

  // Numeric parameters to their defaults.
  void reset_numbers(ParameterValues& values) const;
  // String parameters to their defaults.
  void reset_texts(ParameterValues& values) const;

 private:
  NameIndex index_;
  std::vector<ParameterDescriptor> descriptors_;
};

// Copies at most kParameterTextSize - 1 bytes and terminates.
void copy_parameter_text(std::array<char, kParameterTextSize>& target, std::string_view text);

}  // namespace zorvex
