// what_if: a model is read from a file and solved; then, each time from the last basis, with changes to it: a supply
// that is halved, a cost that doubles, one more row. In C++ over the C interface, with handles that free themselves.
#include <zorvex.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct FreeEnv {
  void operator()(ZLPenv* env) const { ZLPfreeenv(env); }
};
struct FreeModel {
  void operator()(ZLPmodel* model) const { ZLPfreemodel(model); }
};
using Env = std::unique_ptr<ZLPenv, FreeEnv>;
using Model = std::unique_ptr<ZLPmodel, FreeModel>;

void require(const Model& model, int error) {
  if (error != 0) throw std::runtime_error(ZLPgetmerrormsg(model.get()));
}

Env make_env() {
  ZLPenv* env = nullptr;
  if (ZLPloadenv(&env, nullptr) != 0) throw std::runtime_error("no environment");
  Env owner(env);
  if (ZLPsetintparam(env, "OutputFlag", 0) != 0) throw std::runtime_error(ZLPgeterrormsg(env));
  return owner;
}

Model read(const Env& env, const char* file) {
  ZLPmodel* model = nullptr;
  if (ZLPreadmodel(env.get(), file, &model) != 0) throw std::runtime_error(ZLPgeterrormsg(env.get()));
  return Model(model);
}

Model copy(const Model& model) {
  ZLPmodel* made = nullptr;
  require(model, ZLPcopymodel(model.get(), &made));
  return Model(made);
}

void solve(const Model& model, const std::string& what) {
  require(model, ZLPoptimize(model.get()));
  int status = 0;
  double objective = 0;
  require(model, ZLPgetintattr(model.get(), "Status", &status));
  if (status != ZLP_OPTIMAL) {
    std::printf("%-32s status %d\n", what.c_str(), status);
    return;
  }
  require(model, ZLPgetdblattr(model.get(), "ObjVal", &objective));
  std::printf("%-32s cost %.0f\n", what.c_str(), objective);
}

// The number of the row with this name.
int find_row(const Model& model, const std::string& name) {
  int count = 0;
  require(model, ZLPgetintattr(model.get(), "NumConstrs", &count));
  for (int row = 0; row < count; ++row) {
    const char* found = nullptr;
    require(model, ZLPgetstrattrelement(model.get(), "ConstrName", row, &found));
    if (name == found) return row;
  }
  throw std::runtime_error("no row " + name);
}

void run(const char* file) {
  const Env env = make_env();
  const Model model = read(env, file);
  solve(model, "as it is");

  // A copy starts from the basis of the original and leaves it alone.
  const Model scarce = copy(model);
  require(scarce, ZLPsetdblattrelement(scarce.get(), "RHS", find_row(scarce, "supply0"), 43));
  solve(scarce, "with half of supply0");

  // The shipments into one market: row-wise access gives their columns.
  int count = 0, begin = 0;
  const int row = find_row(model, "demand0");
  require(model, ZLPgetconstrs(model.get(), &count, nullptr, nullptr, nullptr, row, 1));
  std::vector<int> cols(static_cast<std::size_t>(count));
  std::vector<double> values(cols.size());
  require(model, ZLPgetconstrs(model.get(), &count, &begin, cols.data(), values.data(), row, 1));
  std::vector<double> cost(cols.size());
  require(model, ZLPgetdblattrlist(model.get(), "Obj", count, cols.data(), cost.data()));
  for (double& c : cost) c *= 2;
  require(model, ZLPsetdblattrlist(model.get(), "Obj", count, cols.data(), cost.data()));
  solve(model, "demand0 twice as far");

  require(model, ZLPaddconstr(model.get(), 1, cols.data(), values.data(), ZLP_GREATER_EQUAL, 40, "contract"));
  solve(model, "and 40 units by contract");
  require(model, ZLPsetdblattrelement(model.get(), "RHS", row, 1000));
  solve(model, "and more than there is");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s MODEL\n", argv[0]);
    return 1;
  }
  try {
    run(argv[1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
