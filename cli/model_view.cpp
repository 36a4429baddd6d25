#include "model_view.hpp"

#include <algorithm>
#include <limits>
#include <numeric>

namespace zorvex_cli {

namespace {

constexpr double kLibraryInfinity = 1e30;  // of stored bounds and sides
constexpr double kInf = std::numeric_limits<double>::infinity();

void unbound(std::vector<double>& bounds) {
  for (double& bound : bounds) {
    if (bound >= kLibraryInfinity) bound = kInf;
    if (bound <= -kLibraryInfinity) bound = -kInf;
  }
}

std::vector<double> fetch_doubles(ZLPmodel* model, const char* attribute, int count) {
  std::vector<double> values(count);
  require(model, ZLPgetdblattrarray(model, attribute, 0, count, values.data()), attribute);
  return values;
}

void fetch_variables(ZLPmodel* model, ModelView& view) {
  const int count = int_attribute(model, "NumVars");
  view.obj = fetch_doubles(model, "Obj", count);
  view.lower = fetch_doubles(model, "LB", count);
  view.upper = fetch_doubles(model, "UB", count);
  unbound(view.lower);
  unbound(view.upper);
  view.type.resize(count);
  require(model, ZLPgetcharattrarray(model, "VType", 0, count, view.type.data()), "VType");
  view.var_name = fetch_names(model, "VarName", count);
  for (int var = 0; var < count; ++var) {
    if (view.type[var] != 'B') continue;
    view.lower[var] = std::max(view.lower[var], 0.0);
    view.upper[var] = std::min(view.upper[var], 1.0);
  }
}

void fetch_rows(ZLPmodel* model, ModelView& view) {
  const int count = int_attribute(model, "NumConstrs");
  view.row_name = fetch_names(model, "ConstrName", count);
  view.row_lower.resize(count);
  view.row_upper.resize(count);
  view.row_start.assign(count + 1, 0);
  if (count == 0) return;
  require(model, ZLPgetconstrsides(model, view.row_lower.data(), view.row_upper.data(), 0, count), "row sides");
  unbound(view.row_lower);
  unbound(view.row_upper);
  int nonzeros = 0;
  require(model, ZLPgetconstrs(model, &nonzeros, nullptr, nullptr, nullptr, 0, count), "rows");
  view.col_index.resize(nonzeros);
  view.value.resize(nonzeros);
  require(model,
          ZLPgetconstrs(model, &nonzeros, view.row_start.data(), view.col_index.data(), view.value.data(), 0, count),
          "rows");
  view.row_start[count] = nonzeros;
}

void fetch_sos(ZLPmodel* model, ModelView& view) {
  const int count = int_attribute(model, "NumSOS");
  if (count == 0) return;
  int members = 0;
  require(model, ZLPgetsos(model, &members, nullptr, nullptr, nullptr, nullptr, 0, count), "SOS constraints");
  std::vector<int> types(count), begin(count + 1), index(members);
  std::vector<double> weight(members);
  require(model, ZLPgetsos(model, &members, types.data(), begin.data(), index.data(), weight.data(), 0, count),
          "SOS constraints");
  begin[count] = members;
  for (int k = 0; k < count; ++k) {
    std::vector<int> order(begin[k + 1] - begin[k]);
    std::iota(order.begin(), order.end(), begin[k]);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return weight[a] < weight[b]; });
    Sos sos{types[k], {}};
    for (const int entry : order) sos.member.push_back(index[entry]);
    view.sos.push_back(std::move(sos));
  }
}

void fetch_quadratic(ZLPmodel* model, ModelView& view) {
  if (int_attribute(model, "NumQNZs") == 0) return;
  int terms = 0;
  require(model, ZLPgetq(model, &terms, nullptr, nullptr, nullptr), "quadratic terms");
  view.q_first.resize(terms);
  view.q_second.resize(terms);
  view.q_value.resize(terms);
  require(model, ZLPgetq(model, &terms, view.q_first.data(), view.q_second.data(), view.q_value.data()),
          "quadratic terms");
}

}  // namespace

bool ModelView::is_binary(int var) const {
  return type[var] == 'B' || (type[var] == 'I' && lower[var] == 0 && upper[var] == 1);
}

std::vector<std::string> fetch_names(ZLPmodel* model, const char* attribute, int count) {
  std::vector<const char*> texts(count);
  require(model, ZLPgetstrattrarray(model, attribute, 0, count, texts.data()), attribute);
  return {texts.begin(), texts.end()};
}

ModelView fetch_model(ZLPmodel* model) {
  ModelView view;
  const char* name = nullptr;
  require(model, ZLPgetstrattr(model, "ModelName", &name), "ModelName");
  view.name = name == nullptr ? "" : name;
  view.sense = int_attribute(model, "ModelSense");
  require(model, ZLPgetdblattr(model, "ObjCon", &view.obj_con), "ObjCon");
  fetch_variables(model, view);
  fetch_rows(model, view);
  fetch_sos(model, view);
  fetch_quadratic(model, view);
  return view;
}

}  // namespace zorvex_cli
