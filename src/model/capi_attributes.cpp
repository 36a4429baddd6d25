// Typed attribute access. One reading and one writing path; the entry points only name type and shape.
#include "model/attribute.hpp"
#include "model/messages.hpp"

namespace zorvex {

namespace {

template <class T>
constexpr AttrType kTypeOf = AttrType::kString;
template <>
constexpr AttrType kTypeOf<char> = AttrType::kChar;
template <>
constexpr AttrType kTypeOf<int> = AttrType::kInt;
template <>
constexpr AttrType kTypeOf<double> = AttrType::kDouble;

enum class Shape { kScalar, kElement, kArray, kList };

// What the caller asked for.
struct Access {
  const char* name;
  AttrType type;
  Shape shape;
  ObjectSet objects;
};

template <class T>
Access scalar_access(const char* name) {
  return {name, kTypeOf<T>, Shape::kScalar, {0, 1, nullptr, true}};
}
template <class T>
Access element_access(const char* name, int index) {
  return {name, kTypeOf<T>, Shape::kElement, {index, 1, nullptr, true}};
}
template <class T>
Access array_access(const char* name, int first, int count) {
  return {name, kTypeOf<T>, Shape::kArray, {first, count, nullptr, false}};
}
template <class T>
Access list_access(const char* name, int count, const int* indices) {
  return {name, kTypeOf<T>, Shape::kList, {0, count, indices, false}};
}

template <class... Arguments>
int fail(ZLPmodel& model, int code, const char* format, Arguments... arguments) {
  set_model_error(&model, code, true, format, arguments...);
  return code;
}

int find_matching(ZLPmodel& model, const Access& access, const Attribute*& attribute) {
  if (access.name == nullptr) return kErrorNullArgument;
  attribute = find_attribute(access.name);
  if (attribute == nullptr) {
    return fail(model, kErrorUnknownAttribute, "Unknown attribute '%s'", access.name);
  }
  if (attribute->type != access.type) {
    return fail(model, kErrorUnknownAttribute, "Requested %s attribute '%s' is of type %s", type_name(access.type),
                attribute->name, type_name(attribute->type));
  }
  const bool is_scalar = attribute->kind == AttrKind::kModel;
  if (is_scalar && access.shape != Shape::kScalar) {
    return fail(model, kErrorUnknownAttribute, "You tried to access scalar attribute '%s' as an array",
                attribute->name);
  }
  if (!is_scalar && access.shape == Shape::kScalar) {
    return fail(model, kErrorUnknownAttribute, "You tried to access array attribute '%s' as a scalar", attribute->name);
  }
  return kOk;
}

int check_range(ZLPmodel& model, const Access& access, const Attribute& attribute) {
  const int length = object_count(model, attribute.kind);
  const ObjectSet& objects = access.objects;
  const Offset first = access.shape == Shape::kList ? 0 : objects.first;
  if (first < 0 || objects.count < 0 || first + objects.count > length) {
    return fail(model, kErrorIndexOutOfRange, "Index out of range for attribute '%s'", attribute.name);
  }
  if (access.shape != Shape::kList) return kOk;
  if (objects.list == nullptr) return kErrorNullArgument;
  for (int k = 0; k < objects.count; ++k) {
    if (objects.list[k] >= 0 && objects.list[k] < length) continue;
    return fail(model, kErrorIndexOutOfRange, "Index %d out of range for attribute '%s'", objects.list[k],
                attribute.name);
  }
  return kOk;
}

int null_values(ZLPmodel& model) { return fail(model, kErrorNullArgument, "NULL 'value' argument supplied"); }

int add_context(ZLPmodel& model, int code, const char* format, const Attribute& attribute) {
  set_model_error(&model, code, false, format, attribute.name);
  return code;
}

int read_values(ZLPmodel* handle, const Access& access, void* values) {
  if (access.objects.count == 0) return kOk;
  return guarded_model(handle, nullptr, [&](ZLPmodel& model) {
    clear_error(model.env);
    const Attribute* attribute = nullptr;
    if (const int code = find_matching(model, access, attribute)) return code;
    if (const int code = check_range(model, access, *attribute)) return code;
    if (!attribute->readable(model)) {
      return add_context(model, kErrorDataNotAvailable, "Unable to retrieve attribute '%s'", *attribute);
    }
    if (values == nullptr) return null_values(model);
    attribute->reader(model, *attribute, access.objects, values);
    return static_cast<int>(kOk);
  });
}

int write_values(ZLPmodel* handle, const Access& access, const void* values) {
  if (access.objects.count == 0) return kOk;
  return guarded_change(handle, nullptr, [&](ZLPmodel& model) {
    clear_error(model.env);
    const Attribute* attribute = nullptr;
    if (const int code = find_matching(model, access, attribute)) return code;
    if (!attribute->settable()) {
      return fail(model, kErrorUnknownAttribute, "Attribute '%s' may not be set", attribute->name);
    }
    if (const int code = check_range(model, access, *attribute)) return code;
    if (values == nullptr) return null_values(model);
    const int code = attribute->writer(model, access.objects, values);
    return code == kOk ? code : add_context(model, code, "Unable to set attribute '%s'", *attribute);
  });
}

template <class T>
int get_scalar(ZLPmodel* model, const char* name, T* value) {
  return read_values(model, scalar_access<T>(name), value);
}
template <class T>
int get_element(ZLPmodel* model, const char* name, int index, T* value) {
  return read_values(model, element_access<T>(name, index), value);
}
template <class T>
int get_array(ZLPmodel* model, const char* name, int first, int count, T* values) {
  return read_values(model, array_access<T>(name, first, count), values);
}
template <class T>
int get_list(ZLPmodel* model, const char* name, int count, const int* indices, T* values) {
  return read_values(model, list_access<T>(name, count, indices), values);
}
template <class T>
int set_scalar(ZLPmodel* model, const char* name, T value) {
  return write_values(model, scalar_access<T>(name), &value);
}
template <class T>
int set_element(ZLPmodel* model, const char* name, int index, T value) {
  return write_values(model, element_access<T>(name, index), &value);
}
template <class T>
int set_array(ZLPmodel* model, const char* name, int first, int count, const T* values) {
  return write_values(model, array_access<T>(name, first, count), values);
}
template <class T>
int set_list(ZLPmodel* model, const char* name, int count, const int* indices, const T* values) {
  return write_values(model, list_access<T>(name, count, indices), values);
}

}  // namespace

}  // namespace zorvex

using namespace zorvex;

extern "C" {

int ZLPgetattrinfo(ZLPmodel* model, const char* name, int* type, int* kind, int* settable) {
  return guarded_model(model, nullptr, [&](ZLPmodel& valid) {
    clear_error(valid.env);
    if (name == nullptr) return static_cast<int>(kErrorNullArgument);
    const Attribute* attribute = find_attribute(name);
    if (attribute == nullptr) return fail(valid, kErrorUnknownAttribute, "Unknown attribute '%s'", name);
    if (type != nullptr) *type = static_cast<int>(attribute->type);
    if (kind != nullptr) *kind = static_cast<int>(attribute->kind);
    if (settable != nullptr) *settable = attribute->settable() ? 1 : 0;
    return static_cast<int>(kOk);
  });
}

int ZLPisattravailable(ZLPmodel* model, const char* name) {
  if (check_model(model) != kOk || name == nullptr) return 0;
  bool available = false;
  const int code = code_of([&] {
    const Attribute* attribute = find_attribute(name);
    available = attribute != nullptr && attribute->readable(*model);
    return static_cast<int>(kOk);
  });
  return code == kOk && available ? 1 : 0;
}

int ZLPgetintattr(ZLPmodel* model, const char* name, int* value) { return get_scalar(model, name, value); }

int ZLPsetintattr(ZLPmodel* model, const char* name, int value) { return set_scalar(model, name, value); }

int ZLPgetintattrelement(ZLPmodel* model, const char* name, int index, int* value) {
  return get_element(model, name, index, value);
}

int ZLPsetintattrelement(ZLPmodel* model, const char* name, int index, int value) {
  return set_element(model, name, index, value);
}

int ZLPgetintattrarray(ZLPmodel* model, const char* name, int first, int count, int* values) {
  return get_array(model, name, first, count, values);
}

int ZLPsetintattrarray(ZLPmodel* model, const char* name, int first, int count, const int* values) {
  return set_array(model, name, first, count, values);
}

int ZLPgetintattrlist(ZLPmodel* model, const char* name, int count, const int* ind, int* values) {
  return get_list(model, name, count, ind, values);
}

int ZLPsetintattrlist(ZLPmodel* model, const char* name, int count, const int* ind, const int* values) {
  return set_list(model, name, count, ind, values);
}

int ZLPgetcharattrelement(ZLPmodel* model, const char* name, int index, char* value) {
  return get_element(model, name, index, value);
}

int ZLPsetcharattrelement(ZLPmodel* model, const char* name, int index, char value) {
  return set_element(model, name, index, value);
}

int ZLPgetcharattrarray(ZLPmodel* model, const char* name, int first, int count, char* values) {
  return get_array(model, name, first, count, values);
}

int ZLPsetcharattrarray(ZLPmodel* model, const char* name, int first, int count, const char* values) {
  return set_array(model, name, first, count, values);
}

int ZLPgetcharattrlist(ZLPmodel* model, const char* name, int count, const int* ind, char* values) {
  return get_list(model, name, count, ind, values);
}

int ZLPsetcharattrlist(ZLPmodel* model, const char* name, int count, const int* ind, const char* values) {
  return set_list(model, name, count, ind, values);
}

int ZLPgetdblattr(ZLPmodel* model, const char* name, double* value) { return get_scalar(model, name, value); }

int ZLPsetdblattr(ZLPmodel* model, const char* name, double value) { return set_scalar(model, name, value); }

int ZLPgetdblattrelement(ZLPmodel* model, const char* name, int index, double* value) {
  return get_element(model, name, index, value);
}

int ZLPsetdblattrelement(ZLPmodel* model, const char* name, int index, double value) {
  return set_element(model, name, index, value);
}

int ZLPgetdblattrarray(ZLPmodel* model, const char* name, int first, int count, double* values) {
  return get_array(model, name, first, count, values);
}

int ZLPsetdblattrarray(ZLPmodel* model, const char* name, int first, int count, const double* values) {
  return set_array(model, name, first, count, values);
}

int ZLPgetdblattrlist(ZLPmodel* model, const char* name, int count, const int* ind, double* values) {
  return get_list(model, name, count, ind, values);
}

int ZLPsetdblattrlist(ZLPmodel* model, const char* name, int count, const int* ind, const double* values) {
  return set_list(model, name, count, ind, values);
}

int ZLPgetstrattr(ZLPmodel* model, const char* name, const char** value) { return get_scalar(model, name, value); }

int ZLPsetstrattr(ZLPmodel* model, const char* name, const char* value) { return set_scalar(model, name, value); }

int ZLPgetstrattrelement(ZLPmodel* model, const char* name, int index, const char** value) {
  return get_element(model, name, index, value);
}

int ZLPsetstrattrelement(ZLPmodel* model, const char* name, int index, const char* value) {
  return set_element(model, name, index, value);
}

int ZLPgetstrattrarray(ZLPmodel* model, const char* name, int first, int count, const char** values) {
  return get_array(model, name, first, count, values);
}

int ZLPsetstrattrarray(ZLPmodel* model, const char* name, int first, int count, const char* const* values) {
  return set_array(model, name, first, count, values);
}

int ZLPgetstrattrlist(ZLPmodel* model, const char* name, int count, const int* ind, const char** values) {
  return get_list(model, name, count, ind, values);
}

int ZLPsetstrattrlist(ZLPmodel* model, const char* name, int count, const int* ind, const char* const* values) {
  return set_list(model, name, count, ind, values);
}

}  // extern "C"
