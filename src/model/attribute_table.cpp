#include "model/attribute.hpp"

#include <algorithm>
#include <cstdio>

#include "env/environment.hpp"
#include "model/attribute_analysis.hpp"
#include "model/attribute_quality.hpp"
#include "model/attribute_writers.hpp"

namespace zorvex {

namespace {

// --- readers: one value of the model, one value per object, names ---
template <auto Get>
void scalar(ZLPmodel& model, const Attribute&, const ObjectSet&, void* values) {
  using T = decltype(Get(model));
  *static_cast<T*>(values) = Get(model);
}

template <auto Get>
void each(ZLPmodel& model, const Attribute&, const ObjectSet& objects, void* values) {
  using T = decltype(Get(model, 0));
  for (int k = 0; k < objects.count; ++k) static_cast<T*>(values)[k] = Get(model, objects[k]);
}

// The texts of unnamed objects are the generic names the file writers use.
void read_names(const NameList& names, std::vector<std::string>& defaults, char letter, const ObjectSet& objects,
                void* values) {
  for (int k = 0; k < objects.count; ++k) {
    const int i = objects[k];
    const char*& text = static_cast<const char**>(values)[k];
    text = names[i].c_str();
    if (*text != '\0') continue;
    if (defaults.empty()) defaults.resize(static_cast<std::size_t>(names.size()));
    if (defaults[i].empty()) {
      char generic[16];
      std::snprintf(generic, sizeof generic, "%c%07d", letter, i);
      defaults[i] = generic;
    }
    text = defaults[i].c_str();
  }
}

void read_var_names(ZLPmodel& model, const Attribute&, const ObjectSet& objects, void* values) {
  read_names(model.data.var_names, model.default_names.var, 'C', objects, values);
}

void read_constr_names(ZLPmodel& model, const Attribute&, const ObjectSet& objects, void* values) {
  read_names(model.data.constr_names, model.default_names.constr, 'R', objects, values);
}

// --- values of the model ---
int num_constrs(const ZLPmodel& model) { return model.data.num_rows(); }
int num_vars(const ZLPmodel& model) { return model.data.num_cols(); }
int num_sos(const ZLPmodel& model) { return static_cast<int>(model.data.sos.size()); }
int num_nzs(const ZLPmodel& model) { return static_cast<int>(model.data.matrix.num_nonzeros()); }
int num_qnzs(const ZLPmodel& model) { return static_cast<int>(model.data.quadratic.size()); }
int num_int_vars(const ZLPmodel& model) {
  const std::vector<char>& types = model.data.vtype;
  return static_cast<int>(
      std::count_if(types.begin(), types.end(), [](char type) { return type != 'C' && type != 'S'; }));
}
int num_bin_vars(const ZLPmodel& model) {
  return static_cast<int>(std::count(model.data.vtype.begin(), model.data.vtype.end(), 'B'));
}
const char* model_name(const ZLPmodel& model) { return model.data.name.c_str(); }
int model_sense(const ZLPmodel& model) { return model.data.sense; }
double obj_con(const ZLPmodel& model) { return model.data.obj_con; }
int is_mip(const ZLPmodel& model) { return model.data.is_mip() ? 1 : 0; }
int is_qp(const ZLPmodel& model) { return model.data.quadratic.empty() ? 0 : 1; }
int infeas_var(const ZLPmodel& model) { return model.solution.infeas_var; }
int unbd_var(const ZLPmodel& model) { return model.solution.unbd_var; }
double farkas_proof(const ZLPmodel& model) { return model.solution.farkas_proof; }
double runtime(const ZLPmodel& model) { return model.solution.runtime; }
int has_dual_norm(const ZLPmodel& model) { return model.warm.has_norms() ? 1 : 0; }
int status(const ZLPmodel& model) { return static_cast<int>(model.solution.status); }
int sol_count(const ZLPmodel& model) { return model.solution.solution_count(); }
double obj_val(const ZLPmodel& model) { return model.solution.obj_val; }
double obj_bound(const ZLPmodel& model) { return model.solution.obj_bound; }
double iter_count(const ZLPmodel& model) { return model.solution.iter_count; }
double node_count(const ZLPmodel& model) { return model.solution.node_count; }
int bar_iter_count(const ZLPmodel& model) { return model.solution.bar_iter_count; }

// --- values of variables and constraints ---
double lb(const ZLPmodel& model, int col) { return model.data.lb[col]; }
double ub(const ZLPmodel& model, int col) { return model.data.ub[col]; }
double obj(const ZLPmodel& model, int col) { return model.data.obj[col]; }
char vtype(const ZLPmodel& model, int col) { return model.data.vtype[col]; }
double start(const ZLPmodel& model, int col) {
  return model.warm.start.empty() ? kUndefinedStart : model.warm.start[col];
}
int branch_priority(const ZLPmodel& model, int col) {
  return model.branch_priority.empty() ? 0 : model.branch_priority[col];
}
double rhs(const ZLPmodel& model, int row) { return model.data.user_rhs(row); }
char sense(const ZLPmodel& model, int row) { return model.data.row_sense[row]; }
double x(const ZLPmodel& model, int col) { return model.solution.x[col]; }
double rc(const ZLPmodel& model, int col) { return model.solution.rc[col]; }
double slack(const ZLPmodel& model, int row) { return model.solution.slack[row]; }
double pi(const ZLPmodel& model, int row) { return model.solution.pi[row]; }
double vdual_norm(const ZLPmodel& model, int col) { return model.warm.vnorm[col]; }
double cdual_norm(const ZLPmodel& model, int row) { return model.warm.cnorm[row]; }
int vbasis(const ZLPmodel& model, int col) { return model.warm.vbasis[col]; }
int cbasis(const ZLPmodel& model, int row) { return model.warm.cbasis[row]; }
double farkas_dual(const ZLPmodel& model, int row) { return model.solution.farkas_dual[row]; }
double unbd_ray(const ZLPmodel& model, int col) { return model.solution.unbd_ray[col]; }
// Solution number SolutionNumber, counted from the best one.
double xn(const ZLPmodel& model, int col) {
  const SolutionStore& solution = model.solution;
  return solution.pool.empty() ? solution.x[col] : solution.pool[param<Param::SolutionNumber>(*model.env)].x[col];
}

// --- availability ---
bool never(const ZLPmodel&) { return false; }
bool has_data(const ZLPmodel&) { return true; }
bool is_solved(const ZLPmodel& model) { return model.solution.solved; }
bool has_objective(const ZLPmodel& model) { return model.solution.has_objective; }
bool has_bound(const ZLPmodel& model) { return model.solution.has_bound; }
bool has_x(const ZLPmodel& model) { return !model.solution.x.empty(); }
bool has_xn(const ZLPmodel& model) {
  return param<Param::SolutionNumber>(*model.env) < model.solution.solution_count();
}
bool has_rc(const ZLPmodel& model) { return !model.solution.rc.empty(); }
bool has_slack(const ZLPmodel& model) { return !model.solution.slack.empty(); }
bool has_pi(const ZLPmodel& model) { return !model.solution.pi.empty(); }
bool has_norms(const ZLPmodel& model) { return model.warm.has_norms(); }
bool has_basis(const ZLPmodel& model) { return model.warm.has_basis(); }
bool has_farkas(const ZLPmodel& model) { return !model.solution.farkas_dual.empty(); }
bool has_ray(const ZLPmodel& model) { return !model.solution.unbd_ray.empty(); }

// An attribute without a reader belongs to an analysis that this version does not carry out.
constexpr Attribute kAttributes[] = {
    {"NumConstrs", AttrType::kInt, AttrKind::kModel, scalar<num_constrs>, nullptr, nullptr},
    {"NumVars", AttrType::kInt, AttrKind::kModel, scalar<num_vars>, nullptr, nullptr},
    {"NumSOS", AttrType::kInt, AttrKind::kModel, scalar<num_sos>, nullptr, nullptr},
    {"NumNZs", AttrType::kInt, AttrKind::kModel, scalar<num_nzs>, nullptr, nullptr},
    {"NumQNZs", AttrType::kInt, AttrKind::kModel, scalar<num_qnzs>, nullptr, nullptr},
    {"NumIntVars", AttrType::kInt, AttrKind::kModel, scalar<num_int_vars>, nullptr, nullptr},
    {"NumBinVars", AttrType::kInt, AttrKind::kModel, scalar<num_bin_vars>, nullptr, nullptr},
    {"ModelName", AttrType::kString, AttrKind::kModel, scalar<model_name>, write_model_name, nullptr},
    {"ModelSense", AttrType::kInt, AttrKind::kModel, scalar<model_sense>, write_model_sense, nullptr},
    {"ObjCon", AttrType::kDouble, AttrKind::kModel, scalar<obj_con>, write_obj_con, nullptr},
    {"IsMIP", AttrType::kInt, AttrKind::kModel, scalar<is_mip>, nullptr, nullptr},
    {"IsQP", AttrType::kInt, AttrKind::kModel, scalar<is_qp>, nullptr, nullptr},
    {"IISMinimal", AttrType::kInt, AttrKind::kModel, nullptr, nullptr, nullptr},
    {"InfeasVar", AttrType::kInt, AttrKind::kModel, scalar<infeas_var>, nullptr, nullptr},
    {"UnbdVar", AttrType::kInt, AttrKind::kModel, scalar<unbd_var>, nullptr, nullptr},
    {"FarkasProof", AttrType::kDouble, AttrKind::kModel, scalar<farkas_proof>, nullptr, nullptr},
    {"LB", AttrType::kDouble, AttrKind::kVariable, each<lb>, write_lb, nullptr},
    {"UB", AttrType::kDouble, AttrKind::kVariable, each<ub>, write_ub, nullptr},
    {"Obj", AttrType::kDouble, AttrKind::kVariable, each<obj>, write_obj, nullptr},
    {"VType", AttrType::kChar, AttrKind::kVariable, each<vtype>, write_vtype, nullptr},
    {"Start", AttrType::kDouble, AttrKind::kVariable, each<start>, write_start, nullptr},
    {"BranchPriority", AttrType::kInt, AttrKind::kVariable, each<branch_priority>, write_branch_priority, nullptr},
    {"VarName", AttrType::kString, AttrKind::kVariable, read_var_names, write_var_name, nullptr},
    {"RHS", AttrType::kDouble, AttrKind::kConstraint, each<rhs>, write_rhs, nullptr},
    {"Sense", AttrType::kChar, AttrKind::kConstraint, each<sense>, write_sense, nullptr},
    {"ConstrName", AttrType::kString, AttrKind::kConstraint, read_constr_names, write_constr_name, nullptr},
    {"MaxCoeff", AttrType::kDouble, AttrKind::kModel, read_statistic, nullptr, has_data,
     statistic_detail(CoefficientSet::kMatrix, true)},
    {"MinCoeff", AttrType::kDouble, AttrKind::kModel, read_statistic, nullptr, has_data,
     statistic_detail(CoefficientSet::kMatrix, false)},
    {"MaxBound", AttrType::kDouble, AttrKind::kModel, read_statistic, nullptr, has_data,
     statistic_detail(CoefficientSet::kBounds, true)},
    {"MinBound", AttrType::kDouble, AttrKind::kModel, read_statistic, nullptr, has_data,
     statistic_detail(CoefficientSet::kBounds, false)},
    {"MaxObjCoeff", AttrType::kDouble, AttrKind::kModel, read_statistic, nullptr, has_data,
     statistic_detail(CoefficientSet::kObjective, true)},
    {"MinObjCoeff", AttrType::kDouble, AttrKind::kModel, read_statistic, nullptr, has_data,
     statistic_detail(CoefficientSet::kObjective, false)},
    {"MaxRHS", AttrType::kDouble, AttrKind::kModel, read_statistic, nullptr, has_data,
     statistic_detail(CoefficientSet::kRhs, true)},
    {"MinRHS", AttrType::kDouble, AttrKind::kModel, read_statistic, nullptr, has_data,
     statistic_detail(CoefficientSet::kRhs, false)},
    {"Runtime", AttrType::kDouble, AttrKind::kModel, scalar<runtime>, nullptr, nullptr},
    {"X", AttrType::kDouble, AttrKind::kVariable, each<x>, nullptr, has_x},
    {"Xn", AttrType::kDouble, AttrKind::kVariable, each<xn>, nullptr, has_xn},
    {"RC", AttrType::kDouble, AttrKind::kVariable, each<rc>, nullptr, has_rc},
    {"Slack", AttrType::kDouble, AttrKind::kConstraint, each<slack>, nullptr, has_slack},
    {"Pi", AttrType::kDouble, AttrKind::kConstraint, each<pi>, nullptr, has_pi},
    {"VDualNorm", AttrType::kDouble, AttrKind::kVariable, each<vdual_norm>, write_vdual_norm, has_norms},
    {"CDualNorm", AttrType::kDouble, AttrKind::kConstraint, each<cdual_norm>, write_cdual_norm, has_norms},
    {"HasDualNorm", AttrType::kInt, AttrKind::kModel, scalar<has_dual_norm>, nullptr, nullptr},
    {"VBasis", AttrType::kInt, AttrKind::kVariable, each<vbasis>, write_vbasis, has_basis},
    {"CBasis", AttrType::kInt, AttrKind::kConstraint, each<cbasis>, write_cbasis, has_basis},
    {"Status", AttrType::kInt, AttrKind::kModel, scalar<status>, nullptr, nullptr},
    {"SolCount", AttrType::kInt, AttrKind::kModel, scalar<sol_count>, nullptr, nullptr},
    {"ObjVal", AttrType::kDouble, AttrKind::kModel, scalar<obj_val>, nullptr, has_objective},
    {"ObjBound", AttrType::kDouble, AttrKind::kModel, scalar<obj_bound>, nullptr, has_bound},
    {"IterCount", AttrType::kDouble, AttrKind::kModel, scalar<iter_count>, nullptr, is_solved},
    {"NodeCount", AttrType::kDouble, AttrKind::kModel, scalar<node_count>, nullptr, is_solved},
    {"BarIterCount", AttrType::kInt, AttrKind::kModel, scalar<bar_iter_count>, nullptr, is_solved},
    {"BoundVio", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kBound, QualityAspect::kMax)},
    {"BoundSVio", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kBound, QualityAspect::kMax)},
    {"ConstrVio", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kRow, QualityAspect::kMax)},
    {"ConstrSVio", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kRow, QualityAspect::kMax)},
    {"ConstrResidual", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kRowResidual, QualityAspect::kMax)},
    {"ConstrSResidual", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kRowResidual, QualityAspect::kMax)},
    {"DualVio", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kDual, QualityAspect::kMax)},
    {"DualSVio", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kDual, QualityAspect::kMax)},
    {"DualResidual", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kDualResidual, QualityAspect::kMax)},
    {"DualSResidual", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kDualResidual, QualityAspect::kMax)},
    {"IntVio", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kIntegrality, QualityAspect::kMax)},
    {"ComplVio", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kComplementarity, QualityAspect::kMax)},
    {"BoundVioSum", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kBound, QualityAspect::kSum)},
    {"BoundSVioSum", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kBound, QualityAspect::kSum)},
    {"ConstrVioSum", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kRow, QualityAspect::kSum)},
    {"ConstrSVioSum", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kRow, QualityAspect::kSum)},
    {"ConstrResidualSum", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kRowResidual, QualityAspect::kSum)},
    {"ConstrSResidualSum", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kRowResidual, QualityAspect::kSum)},
    {"DualVioSum", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kDual, QualityAspect::kSum)},
    {"DualSVioSum", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kDual, QualityAspect::kSum)},
    {"DualResidualSum", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kDualResidual, QualityAspect::kSum)},
    {"DualSResidualSum", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kDualResidual, QualityAspect::kSum)},
    {"IntVioSum", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kIntegrality, QualityAspect::kSum)},
    {"ComplVioSum", AttrType::kDouble, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kComplementarity, QualityAspect::kSum)},
    {"Kappa", AttrType::kDouble, AttrKind::kModel, scalar<read_kappa>, nullptr, has_inverse},
    {"N2Kappa", AttrType::kDouble, AttrKind::kModel, scalar<read_n2_kappa>, nullptr, has_inverse},
    {"BoundVioIndex", AttrType::kInt, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kBound, QualityAspect::kIndex)},
    {"BoundSVioIndex", AttrType::kInt, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kBound, QualityAspect::kIndex)},
    {"ConstrVioIndex", AttrType::kInt, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kRow, QualityAspect::kIndex)},
    {"ConstrSVioIndex", AttrType::kInt, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kRow, QualityAspect::kIndex)},
    {"ConstrResidualIndex", AttrType::kInt, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kRowResidual, QualityAspect::kIndex)},
    {"ConstrSResidualIndex", AttrType::kInt, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kRowResidual, QualityAspect::kIndex)},
    {"DualVioIndex", AttrType::kInt, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kDual, QualityAspect::kIndex)},
    {"DualSVioIndex", AttrType::kInt, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kDual, QualityAspect::kIndex)},
    {"DualResidualIndex", AttrType::kInt, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kDualResidual, QualityAspect::kIndex)},
    {"DualSResidualIndex", AttrType::kInt, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kDualResidual, QualityAspect::kIndex)},
    {"IntVioIndex", AttrType::kInt, AttrKind::kModel, read_quality, nullptr, primal_quality_available,
     quality_detail(QualityMeasure::kIntegrality, QualityAspect::kIndex)},
    {"ComplVioIndex", AttrType::kInt, AttrKind::kModel, read_quality, nullptr, dual_quality_available,
     quality_detail(QualityMeasure::kComplementarity, QualityAspect::kIndex)},
    {"SAObjLow", AttrType::kDouble, AttrKind::kVariable, read_limit, nullptr, has_sensitivity,
     limit_detail(SensitivityLimit::kObjLow)},
    {"SAObjUp", AttrType::kDouble, AttrKind::kVariable, read_limit, nullptr, has_sensitivity,
     limit_detail(SensitivityLimit::kObjUp)},
    {"SALBLow", AttrType::kDouble, AttrKind::kVariable, read_limit, nullptr, has_sensitivity,
     limit_detail(SensitivityLimit::kLowerLow)},
    {"SALBUp", AttrType::kDouble, AttrKind::kVariable, read_limit, nullptr, has_sensitivity,
     limit_detail(SensitivityLimit::kLowerUp)},
    {"SAUBLow", AttrType::kDouble, AttrKind::kVariable, read_limit, nullptr, has_sensitivity,
     limit_detail(SensitivityLimit::kUpperLow)},
    {"SAUBUp", AttrType::kDouble, AttrKind::kVariable, read_limit, nullptr, has_sensitivity,
     limit_detail(SensitivityLimit::kUpperUp)},
    {"SARHSLow", AttrType::kDouble, AttrKind::kConstraint, read_limit, nullptr, has_sensitivity,
     limit_detail(SensitivityLimit::kRhsLow)},
    {"SARHSUp", AttrType::kDouble, AttrKind::kConstraint, read_limit, nullptr, has_sensitivity,
     limit_detail(SensitivityLimit::kRhsUp)},
    {"IISLB", AttrType::kInt, AttrKind::kVariable, nullptr, nullptr, never},
    {"IISUB", AttrType::kInt, AttrKind::kVariable, nullptr, nullptr, never},
    {"IISConstr", AttrType::kInt, AttrKind::kConstraint, nullptr, nullptr, never},
    {"IISSOS", AttrType::kInt, AttrKind::kSos, nullptr, nullptr, never},
    {"FarkasDual", AttrType::kDouble, AttrKind::kConstraint, each<farkas_dual>, nullptr, has_farkas},
    {"UnbdRay", AttrType::kDouble, AttrKind::kVariable, each<unbd_ray>, nullptr, has_ray},
};

const NameIndex& name_index() {
  static const NameIndex kIndex = [] {
    NameIndex index;
    int number = 0;
    for (const Attribute& attribute : kAttributes) index.add(attribute.name, number++);
    return index;
  }();
  return kIndex;
}

// Made while the library is loaded: a fork can then never meet it half made by another thread.
[[maybe_unused]] const NameIndex& made_at_load = name_index();

}  // namespace

std::span<const Attribute> attribute_table() { return kAttributes; }

const Attribute* find_attribute(std::string_view name) {
  const int number = name_index().find(name);
  return number < 0 ? nullptr : &kAttributes[number];
}

const char* type_name(AttrType type) {
  static constexpr const char* kNames[] = {"char", "int", "double", "string"};
  return kNames[static_cast<int>(type)];
}

int object_count(const ZLPmodel& model, AttrKind kind) {
  switch (kind) {
    case AttrKind::kVariable:
      return model.data.num_cols();
    case AttrKind::kConstraint:
      return model.data.num_rows();
    case AttrKind::kSos:
      return static_cast<int>(model.data.sos.size());
    default:
      return 1;
  }
}

}  // namespace zorvex
