// Attributes: named values of a model, its variables, constraints and SOS sets, read and written by name.
#pragma once

#include <span>
#include <string_view>

#include "model/model.hpp"

namespace zorvex {

enum class AttrType : int { kChar = 0, kInt = 1, kDouble = 2, kString = 3 };
enum class AttrKind : int { kModel = 0, kVariable = 1, kConstraint = 2, kSos = 3 };

// Which objects an access means: count of them from `first` on, or those of `list`. All are in range.
struct ObjectSet {
  int first;
  int count;
  const int* list;  // null: consecutive
  bool single;      // a scalar or element access: messages speak of a value, not of an array

  [[nodiscard]] int operator[](int k) const { return list == nullptr ? first + k : list[k]; }
};

struct Attribute {
  // Readers store `objects.count` values of the attribute's type (char, int, double, const char*); writers take as
  // many, and check them all before the first takes effect.
  using Reader = void (*)(ZLPmodel& model, const Attribute& attribute, const ObjectSet& objects, void* values);
  using Writer = int (*)(ZLPmodel& model, const ObjectSet& objects, const void* values);

  const char* name;
  AttrType type;
  AttrKind kind;
  Reader reader;                       // null: the value never exists
  Writer writer;                       // null: read-only
  bool (*available)(const ZLPmodel&);  // null: the value always exists
  int detail = 0;                      // tells the attributes of one shared reader apart

  [[nodiscard]] bool settable() const { return writer != nullptr; }
  [[nodiscard]] bool may_be_unavailable() const { return available != nullptr; }
  [[nodiscard]] bool readable(const ZLPmodel& model) const {
    return reader != nullptr && (available == nullptr || available(model));
  }
};

// All attributes in the order of the interface.
std::span<const Attribute> attribute_table();

// Names match in any case and with underscores anywhere but in front. Null when there is no such attribute.
const Attribute* find_attribute(std::string_view name);

const char* type_name(AttrType type);

// Number of objects of a kind; 1 for model attributes.
int object_count(const ZLPmodel& model, AttrKind kind);

}  // namespace zorvex
