// One flat JSON object, written member by member in the order given.
#pragma once

#include <optional>
#include <string>

namespace zorvex_cli {

class JsonObject {
 public:
  void add(const std::string& key, const std::string& text);
  void add(const std::string& key, double value) { add(key, std::optional<double>(value)); }
  // A missing, infinite or undefined value becomes null; so does the solver's own infinity, 1e100 and beyond. Whole
  // numbers are written without an exponent as long as they are exact.
  void add(const std::string& key, std::optional<double> value);
  [[nodiscard]] std::string text() const { return "{\n" + members_ + "\n}\n"; }

 private:
  void add_raw(const std::string& key, const std::string& value);

  std::string members_;
};

}  // namespace zorvex_cli
