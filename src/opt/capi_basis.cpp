// C entry points: questions about the final basis of a continuous model.
#include <algorithm>

#include "model/argument_checks.hpp"
#include "model/messages.hpp"
#include "opt/final_basis.hpp"

namespace {

using namespace zorvex;

// Runs `body` on the final basis; 10005 when there is none or it has no inverse.
template <class Body>
int ask_basis(ZLPmodel* model, Body body) {
  return guarded_model(model, nullptr, [&](ZLPmodel& valid) {
    auto* basis = dynamic_cast<FinalBasis*>(valid.solution.analysis.get());
    if (basis == nullptr || !basis->has_inverse()) return static_cast<int>(kErrorDataNotAvailable);
    return static_cast<int>(body(valid, *basis));
  });
}

bool lacks_arrays(const ZLPsvec* vector) {
  return vector == nullptr || vector->ind == nullptr || vector->val == nullptr;
}

// An input vector has distinct indices below `size` and finite values.
int check_input(ZLPmodel& model, const ZLPsvec* input, Index size) {
  if (input == nullptr) return kErrorNullArgument;
  if (input->len < 0) return kErrorInvalidArgument;
  if (input->len == 0) return kOk;
  if (lacks_arrays(input)) return kErrorNullArgument;
  const int at_zero = 0;
  PendingChanges workspace(0, 0, 0);
  if (const int code = check_lists({1, input->len, &at_zero, input->ind, size}, workspace)) return code;
  return check_finite(model.env, input->val, input->len);
}

template <class Solve>
int solve_with_basis(ZLPmodel* model, const ZLPsvec* b, ZLPsvec* x, Solve solve) {
  return ask_basis(model, [&](ZLPmodel& valid, FinalBasis& basis) {
    if (lacks_arrays(x)) return static_cast<int>(kErrorNullArgument);
    if (const int code = check_input(valid, b, valid.data.num_rows())) return code;
    const auto length = static_cast<std::size_t>(b->len);
    // A copy: input and output may be the same vector.
    const std::vector<Index> index(b->ind, b->ind + length);
    const std::vector<double> value(b->val, b->val + length);
    solve(basis, SparseEntries{index, value}, *x);
    return static_cast<int>(kOk);
  });
}

// A question about row or position i or, `with_columns`, about variable i.
template <class Answer>
int answer_for(ZLPmodel* model, int i, bool with_columns, ZLPsvec* x, Answer answer) {
  return ask_basis(model, [&](ZLPmodel& valid, FinalBasis& basis) {
    if (lacks_arrays(x)) return kErrorNullArgument;
    const Index count = valid.data.num_rows() + (with_columns ? valid.data.num_cols() : 0);
    if (i < 0 || i >= count) return kErrorIndexOutOfRange;
    answer(basis, *x);
    return kOk;
  });
}

}  // namespace

extern "C" {

int ZLPFSolve(ZLPmodel* model, const ZLPsvec* b, ZLPsvec* x) {
  return solve_with_basis(model, b, x,
                          [](FinalBasis& basis, SparseEntries input, ZLPsvec& output) { basis.solve(input, output); });
}

int ZLPBSolve(ZLPmodel* model, const ZLPsvec* b, ZLPsvec* x) {
  return solve_with_basis(model, b, x, [](FinalBasis& basis, SparseEntries input, ZLPsvec& output) {
    basis.solve_transposed(input, output);
  });
}

int ZLPBinvj(ZLPmodel* model, int j, ZLPsvec* x) {
  return answer_for(model, j, false, x, [j](FinalBasis& basis, ZLPsvec& output) {
    const double one = 1;
    basis.solve({{&j, 1}, {&one, 1}}, output);
  });
}

int ZLPBinvi(ZLPmodel* model, int i, ZLPsvec* x) {
  return answer_for(model, i, false, x, [i](FinalBasis& basis, ZLPsvec& output) {
    const double one = 1;
    basis.solve_transposed({{&i, 1}, {&one, 1}}, output);
  });
}

int ZLPBinvColj(ZLPmodel* model, int j, ZLPsvec* x) {
  return answer_for(model, j, true, x, [j](FinalBasis& basis, ZLPsvec& output) { basis.tableau_column(j, output); });
}

int ZLPBinvRowi(ZLPmodel* model, int i, ZLPsvec* x) {
  return answer_for(model, i, false, x, [i](FinalBasis& basis, ZLPsvec& output) { basis.tableau_row(i, output); });
}

int ZLPgetBasisHead(ZLPmodel* model, int* bhead) {
  return ask_basis(model, [&](ZLPmodel& valid, FinalBasis& basis) {
    if (bhead == nullptr && valid.data.num_rows() > 0) return kErrorNullArgument;
    std::copy(basis.head().begin(), basis.head().end(), bhead);
    return kOk;
  });
}

}  // extern "C"
