#include "env/parameter_store.hpp"

#include <algorithm>
#include <cstring>

namespace zorvex {

std::string normalise_name(std::string_view name) {
  std::string key;
  key.reserve(name.size());
  std::size_t i = 0;
  for (; i < name.size() && name[i] == '_'; ++i) key.push_back('_');
  for (; i < name.size(); ++i) {
    const char c = name[i];
    if (c == '_') continue;
    key.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c);
  }
  return key;
}

std::size_t NameIndex::bucket_of(const std::string& key) const {
  std::uint32_t hash = 2166136261U;  // FNV-1a
  for (const char c : key) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
  return hash % heads_.size();
}

int NameIndex::find_key(const std::string& key, std::size_t bucket) const {
  for (int node = heads_[bucket]; node >= 0; node = nodes_[node].next) {
    if (nodes_[node].key == key) return nodes_[node].number;
  }
  return -1;
}

void NameIndex::add(std::string_view name, int number) {
  std::string key = normalise_name(name);
  const std::size_t bucket = bucket_of(key);
  if (find_key(key, bucket) >= 0) return;
  nodes_.push_back({std::move(key), number, heads_[bucket]});
  heads_[bucket] = static_cast<int>(nodes_.size()) - 1;
}

int NameIndex::find(std::string_view name) const {
  const std::string key = normalise_name(name);
  return find_key(key, bucket_of(key));
}

namespace {

ParameterDescriptor make_descriptor(int row, int max_threads) {
  const ParameterRow& source = kParameterTable[row];
  const Param param = static_cast<Param>(row);
  ParameterDescriptor descriptor{source.name, source.min, source.max, source.def, "", source.type, 0, 0};
  if (source.default_text != nullptr) descriptor.default_text = source.default_text;
  if (source.type != ParamType::kSeparator) descriptor.position = 1 + slot_of(param);
  if (param == Param::Threads) descriptor.max = max_threads;
  // A switch of the running program rather than a tuning choice: it stays out of saved settings.
  if (param == Param::ZORV_PAR_MASTERENVWARN) descriptor.flag = 1;
  return descriptor;
}

}  // namespace

ParameterStore::ParameterStore(int max_threads) {
  descriptors_.reserve(kNumParameterRows);
  for (int row = 0; row < kNumDescriptors; ++row) {
    descriptors_.push_back(make_descriptor(row, max_threads));
    index_.add(kParameterTable[row].name, row);
  }
}

const ParameterDescriptor* ParameterStore::find(std::string_view name) const {
  const int row = index_.find(name);
  return row < 0 ? nullptr : &descriptors_[row];
}

void ParameterStore::reset_numbers(ParameterValues& values) const {
  for (const ParameterDescriptor& descriptor : descriptors_) {
    if (descriptor.type == ParamType::kInt) {
      values.ints[descriptor.position - 1] = static_cast<std::int32_t>(descriptor.def);
    } else if (descriptor.type == ParamType::kDouble) {
      values.doubles[descriptor.position - 1] = descriptor.def;
    }
  }
}

void ParameterStore::reset_texts(ParameterValues& values) const {
  for (const ParameterDescriptor& descriptor : descriptors_) {
    if (descriptor.type != ParamType::kString) continue;
    copy_parameter_text(values.texts[descriptor.position - 1], descriptor.default_text);
  }
}

void copy_parameter_text(std::array<char, kParameterTextSize>& target, std::string_view text) {
  const std::size_t length = std::min(text.size(), target.size() - 1);
  // memmove: a parameter may be set to its own buffer.
  std::memmove(target.data(), text.data(), length);
  target[length] = '\0';
}

}  // namespace zorvex
