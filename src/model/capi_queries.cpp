// Queries of the structure of a model, in the user's signs.
#include <algorithm>
#include <bit>
#include <cstdint>

#include "model/messages.hpp"
#include "model/model.hpp"

namespace zorvex {

namespace {

struct Range {
  int first;
  int count;
};

int check_range(ZLPmodel& model, Range range, int length, const char* format) __attribute__((format(printf, 4, 0)));

// `format` takes the first index and the one behind the last.
int check_range(ZLPmodel& model, Range range, int length, const char* format) {
  const Offset behind = Offset(range.first) + range.count;
  if (range.first >= 0 && range.count > 0 && behind <= length) return kOk;
  set_model_error(&model, kErrorIndexOutOfRange, false, format, range.first, static_cast<int>(behind));
  return kErrorIndexOutOfRange;
}

// Entries of the vectors of a range as they are stored; `value` still has the stored signs.
void copy_vectors(const CompressedVectors& vectors, Range range, int* begin, int* index, double* value) {
  const Offset first = vectors.begin(range.first);
  for (int k = 0; k < range.count; ++k) begin[k] = static_cast<int>(vectors.begin(range.first + k) - first);
  const auto count = static_cast<std::size_t>(vectors.end(range.first + range.count - 1) - first);
  std::copy_n(vectors.index.begin() + first, count, index);
  std::copy_n(vectors.value.begin() + first, count, value);
}

// Without branches: senses come in no order that could be predicted.
void restore_signs(const ModelData& data, const int* row, int count, double* value) {
  for (int k = 0; k < count; ++k) {
    const std::uint64_t sign = std::uint64_t{data.row_sense[row[k]] == ZLP_GREATER_EQUAL} << 63;
    value[k] = std::bit_cast<double>(std::bit_cast<std::uint64_t>(value[k]) ^ sign);
  }
}

int get_coefficient(ZLPmodel& model, int row, int col, double* value) {
  if (value == nullptr) return kErrorNullArgument;
  const ModelData& data = model.data;
  if (row < 0 || row >= data.num_rows()) {
    set_model_error(&model, kErrorIndexOutOfRange, false, "Row index %d out of range in coefficient query", row);
    return kErrorIndexOutOfRange;
  }
  if (col < 0 || col >= data.num_cols()) {
    set_model_error(&model, kErrorIndexOutOfRange, false, "Column index %d out of range in coefficient query", col);
    return kErrorIndexOutOfRange;
  }
  *value = 0;
  for (Offset entry = data.matrix.begin(col); entry < data.matrix.end(col); ++entry) {
    if (data.matrix.index[entry] != row) continue;
    *value = data.row_sign(row) * data.matrix.value[entry];
    break;
  }
  return kOk;
}

int get_sos(const ModelData& data, Range range, int* num_members, int* types, int* begin, int* index, double* weight) {
  std::size_t members = 0;
  for (int k = 0; k < range.count; ++k) members += data.sos[range.first + k].member.size();
  *num_members = static_cast<int>(members);
  if (types == nullptr || begin == nullptr || index == nullptr || weight == nullptr) return kOk;
  int out = 0;
  for (int k = 0; k < range.count; ++k) {
    const SosConstraint& set = data.sos[range.first + k];
    types[k] = set.type;
    begin[k] = out;
    for (std::size_t m = 0; m < set.member.size(); ++m) {
      index[out] = set.member[m];
      weight[out++] = set.weight[m];
    }
  }
  return kOk;
}

}  // namespace

}  // namespace zorvex

using namespace zorvex;

extern "C" {

int ZLPgetcoeff(ZLPmodel* model, int constr, int var, double* value) {
  return guarded_model(model, "Failed to retrieve coefficient",
                       [&](ZLPmodel& valid) { return get_coefficient(valid, constr, var, value); });
}

int ZLPgetvars(ZLPmodel* model, int* num_nz, int* vbeg, int* vind, double* vval, int first, int num) {
  return guarded_model(model, "Failed to retrieve variables", [&](ZLPmodel& valid) {
    if (num_nz == nullptr) return static_cast<int>(kErrorNullArgument);
    const ModelData& data = valid.data;
    if (const int code =
            check_range(valid, {first, num}, data.num_cols(), "Invalid index range for variable query: [%d, %d]")) {
      return code;
    }
    *num_nz = static_cast<int>(data.matrix.end(first + num - 1) - data.matrix.begin(first));
    if (vbeg == nullptr || vind == nullptr || vval == nullptr) return static_cast<int>(kOk);
    copy_vectors(data.matrix, {first, num}, vbeg, vind, vval);
    restore_signs(data, vind, *num_nz, vval);
    return static_cast<int>(kOk);
  });
}

int ZLPgetconstrs(ZLPmodel* model, int* num_nz, int* cbeg, int* cind, double* cval, int first, int num) {
  return guarded_model(model, "Failed to retrieve constraints", [&](ZLPmodel& valid) {
    if (num_nz == nullptr) return static_cast<int>(kErrorNullArgument);
    const ModelData& data = valid.data;
    if (const int code =
            check_range(valid, {first, num}, data.num_rows(), "Invalid index range for constraint query: [%d, %d]")) {
      return code;
    }
    const CompressedVectors& rows = row_twin(valid);
    *num_nz = static_cast<int>(rows.end(first + num - 1) - rows.begin(first));
    if (cbeg == nullptr || cind == nullptr || cval == nullptr) return static_cast<int>(kOk);
    copy_vectors(rows, {first, num}, cbeg, cind, cval);
    for (int k = 0; k < num; ++k) {
      if (data.row_sense[first + k] != ZLP_GREATER_EQUAL) continue;
      const int end = k + 1 < num ? cbeg[k + 1] : *num_nz;
      for (int entry = cbeg[k]; entry < end; ++entry) cval[entry] = -cval[entry];
    }
    return static_cast<int>(kOk);
  });
}

int ZLPgetconstrsides(ZLPmodel* model, double* lower, double* upper, int first, int num) {
  return guarded_model(model, "Failed to retrieve constraints", [&](ZLPmodel& valid) {
    if (const int code = check_range(valid, {first, num}, valid.data.num_rows(),
                                     "Invalid index range for constraint query: [%d, %d]")) {
      return code;
    }
    for (int k = 0; k < num; ++k) {
      const Interval sides = valid.data.row_sides(first + k);
      if (lower != nullptr) lower[k] = std::max(sides.lower, -kStoredInfinity);
      if (upper != nullptr) upper[k] = std::min(sides.upper, kStoredInfinity);
    }
    return static_cast<int>(kOk);
  });
}

int ZLPgetsos(ZLPmodel* model, int* num_members, int* types, int* beg, int* ind, double* weight, int first, int num) {
  return guarded_model(model, "Failed to retrieve SOS constraints", [&](ZLPmodel& valid) {
    if (num_members == nullptr) return static_cast<int>(kErrorNullArgument);
    if (const int code = check_range(valid, {first, num}, static_cast<int>(valid.data.sos.size()),
                                     "Invalid index range for SOS query: [%d, %d]")) {
      return code;
    }
    return get_sos(valid.data, {first, num}, num_members, types, beg, ind, weight);
  });
}

int ZLPgetq(ZLPmodel* model, int* num_terms, int* qrow, int* qcol, double* qval) {
  return guarded_model(model, "Failed to retrieve Q matrix", [&](ZLPmodel& valid) {
    if (num_terms == nullptr) return static_cast<int>(kErrorNullArgument);
    const std::vector<QuadraticTerm>& terms = valid.data.quadratic;
    *num_terms = static_cast<int>(terms.size());
    if (qrow == nullptr || qcol == nullptr || qval == nullptr) return static_cast<int>(kOk);
    for (std::size_t k = 0; k < terms.size(); ++k) {
      qrow[k] = terms[k].first;
      qcol[k] = terms[k].second;
      qval[k] = terms[k].value;
    }
    return static_cast<int>(kOk);
  });
}

}  // extern "C"
