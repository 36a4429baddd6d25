// Update of the stored model. Two phases: everything that may run out of memory first, without touching the model; then
// the changes themselves, none of which allocates.
#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "env/log_channel.hpp"
#include "model/grow.hpp"
#include "model/matrix_update.hpp"
#include "model/model.hpp"

namespace zorvex {

namespace {

template <class T>
void append(std::vector<T>& vector, const std::vector<T>& added) {
  vector.insert(vector.end(), added.begin(), added.end());
}

class Update {
 public:
  Update(ZLPmodel& model, PendingChanges& changes)
      : model_(model),
        data_(model.data),
        changes_(changes),
        new_cols_(changes.new_cols.obj.size()),
        new_rows_(changes.new_rows.rhs.size()) {}

  void prepare() {
    const bool rebuild = new_rows_ > 0 || changes_.del_rows.count > 0 || changes_.del_cols.count > 0 ||
                         !changes_.coefficients.empty() || !changes_.sense.empty();
    if (rebuild) {
      plan_ = plan_renumbering(data_, changes_);
      matrix_ = rebuild_matrix(data_.matrix, changes_, *plan_);
    } else {
      make_room(data_.matrix.start, new_cols_);
      make_room(data_.matrix.index, changes_.new_cols.entries.index.size());
      make_room(data_.matrix.value, changes_.new_cols.entries.value.size());
    }
    prepare_columns();
    prepare_rows();
    make_room(data_.sos, changes_.new_sos.size());
    make_room(data_.quadratic, changes_.new_quadratic.size());
  }

  void apply() {
    apply_values();
    append_columns();
    append_rows();
    for (SosConstraint& set : changes_.new_sos) data_.sos.push_back(std::move(set));
    if (changes_.drop_quadratic) data_.quadratic.clear();
    append(data_.quadratic, changes_.new_quadratic);
    if (plan_) data_.matrix = std::move(matrix_);
    extend_warm_start();
    if (changes_.deletes()) delete_marked();
  }

  [[nodiscard]] bool basis_dropped() const { return basis_dropped_; }
  [[nodiscard]] bool matrix_changed() const { return plan_.has_value() || new_cols_ > 0; }

 private:
  // --- phase 1 ---
  void prepare_columns() {
    if (!changes_.var_names.empty()) data_.var_names.materialise();
    if (new_cols_ == 0) return;
    make_room(data_.obj, new_cols_);
    make_room(data_.lb, new_cols_);
    make_room(data_.ub, new_cols_);
    make_room(data_.vtype, new_cols_);
    data_.var_names.reserve_for(changes_.new_cols.names);
    WarmStart& warm = model_.warm;
    if (warm.has_basis()) make_room(warm.vbasis, new_cols_);
    if (warm.has_norms()) make_room(warm.vnorm, new_cols_);
    if (!warm.start.empty()) make_room(warm.start, new_cols_);
    if (!model_.branch_priority.empty()) make_room(model_.branch_priority, new_cols_);
  }

  void prepare_rows() {
    if (!changes_.constr_names.empty()) data_.constr_names.materialise();
    if (new_rows_ == 0) return;
    make_room(data_.row_sense, new_rows_);
    make_room(data_.rhs, new_rows_);
    data_.constr_names.reserve_for(changes_.new_rows.names);
    for (const double side : changes_.new_rows.range_lower) adds_range_ = adds_range_ || side > -kStoredInfinity;
    if (data_.range_lower.empty() && adds_range_) {
      data_.range_lower.reserve(data_.rhs.size() + new_rows_);
    } else if (!data_.range_lower.empty()) {
      make_room(data_.range_lower, new_rows_);
    }
    if (model_.warm.has_basis()) make_room(model_.warm.cbasis, new_rows_);
    if (model_.warm.has_norms()) make_room(model_.warm.cnorm, new_rows_);
  }

  // --- phase 2 ---
  void apply_values() {
    for (const auto& [col, value] : changes_.obj) data_.obj[col] = value;
    for (const auto& [col, value] : changes_.lb) data_.lb[col] = value;
    for (const auto& [col, value] : changes_.ub) data_.ub[col] = value;
    for (const auto& [col, value] : changes_.vtype) data_.vtype[col] = value;
    for (auto& [col, value] : changes_.var_names) data_.var_names.set(col, std::move(value));
    for (auto& [row, value] : changes_.constr_names) data_.constr_names.set(row, std::move(value));
    // A right-hand side moves a range row as a whole; a sense makes it one-sided.
    for (const auto& [row, value] : changes_.rhs) {
      if (data_.is_range(row)) data_.range_lower[row] = value - (data_.rhs[row] - data_.range_lower[row]);
      data_.rhs[row] = data_.row_sign(row) * value;
    }
    for (const auto& [row, value] : changes_.sense) {
      data_.rhs[row] = value == '>' ? -data_.user_rhs(row) : data_.user_rhs(row);
      data_.row_sense[row] = value;
      if (!data_.range_lower.empty()) data_.range_lower[row] = -kStoredInfinity;
    }
    if (changes_.obj_con) data_.obj_con = *changes_.obj_con;
    if (changes_.model_sense) data_.sense = *changes_.model_sense;
    if (changes_.model_name) data_.name = std::move(*changes_.model_name);
  }

  void append_columns() {
    PendingChanges::Columns& added = changes_.new_cols;
    append(data_.obj, added.obj);
    append(data_.lb, added.lb);
    append(data_.ub, added.ub);
    append(data_.vtype, added.vtype);
    data_.var_names.append(std::move(added.names));
    if (plan_) return;  // the new matrix holds the entries already
    CompressedVectors& matrix = data_.matrix;
    const Offset shift = matrix.num_nonzeros();
    for (Index col = 0; col < added.entries.size(); ++col) {
      for (Offset k = added.entries.begin(col); k < added.entries.end(col); ++k) {
        const Index row = added.entries.index[k];
        matrix.index.push_back(row);
        matrix.value.push_back(data_.row_sign(row) * added.entries.value[k]);
      }
      matrix.start.push_back(shift + added.entries.end(col));
    }
  }

  void append_rows() {
    PendingChanges::Rows& added = changes_.new_rows;
    if (adds_range_ || !data_.range_lower.empty()) {
      data_.range_lower.resize(data_.rhs.size(), -kStoredInfinity);
      append(data_.range_lower, added.range_lower);
    }
    append(data_.row_sense, added.sense);
    for (std::size_t k = 0; k < new_rows_; ++k)
      data_.rhs.push_back(added.sense[k] == '>' ? -added.rhs[k] : added.rhs[k]);
    data_.constr_names.append(std::move(added.names));
  }

  // New rows enter the basis with their slack, new columns stay out of it.
  void extend_warm_start() {
    WarmStart& warm = model_.warm;
    if (warm.has_basis()) {
      warm.cbasis.resize(data_.rhs.size(), ZLP_BASIC);
      for (Index col = data_.num_cols() - static_cast<Index>(new_cols_); col < data_.num_cols(); ++col) {
        warm.vbasis.push_back(nonbasic_status(data_, col));
      }
    }
    if (warm.has_norms()) {
      warm.vnorm.resize(data_.obj.size(), 1.0);
      warm.cnorm.resize(data_.rhs.size(), 1.0);
    }
    if (!warm.start.empty()) warm.start.resize(data_.obj.size(), kUndefinedStart);
    if (!model_.branch_priority.empty()) model_.branch_priority.resize(data_.obj.size(), 0);
  }

  void delete_marked() {
    if (changes_.del_cols.count > 0) delete_columns();
    if (changes_.del_rows.count > 0) delete_rows();
    if (changes_.del_sos.count > 0) {
      std::size_t kept = 0;
      for (std::size_t k = 0; k < data_.sos.size(); ++k) {
        if (k < changes_.del_sos.word.size() && changes_.del_sos.marked(static_cast<Index>(k))) continue;
        if (kept != k) data_.sos[kept] = std::move(data_.sos[k]);
        ++kept;
      }
      data_.sos.resize(kept);
    }
    if (model_.warm.has_basis() && !model_.warm.basis_fits(data_)) {
      model_.warm.drop_basis();
      basis_dropped_ = true;
    }
  }

  void delete_columns() {
    const std::vector<char>& keep = plan_->keep_col;
    keep_marked(data_.obj, keep);
    keep_marked(data_.lb, keep);
    keep_marked(data_.ub, keep);
    keep_marked(data_.vtype, keep);
    data_.var_names.compress(keep);
    keep_marked(model_.warm.vbasis, keep);
    keep_marked(model_.warm.vnorm, keep);
    keep_marked(model_.warm.start, keep);
    keep_marked(model_.branch_priority, keep);
    for (SosConstraint& set : data_.sos) {
      std::size_t kept = 0;
      for (std::size_t k = 0; k < set.member.size(); ++k) {
        const Index col = plan_->new_col[set.member[k]];
        if (col < 0) continue;
        set.member[kept] = col;
        set.weight[kept++] = set.weight[k];
      }
      set.member.resize(kept);
      set.weight.resize(kept);
    }
    std::size_t kept = 0;
    for (const QuadraticTerm& term : data_.quadratic) {
      const QuadraticTerm moved{plan_->new_col[term.first], plan_->new_col[term.second], term.value};
      if (moved.first >= 0 && moved.second >= 0) data_.quadratic[kept++] = moved;
    }
    data_.quadratic.resize(kept);
  }

  void delete_rows() {
    const std::vector<char>& keep = plan_->keep_row;
    keep_marked(data_.row_sense, keep);
    keep_marked(data_.rhs, keep);
    keep_marked(data_.range_lower, keep);
    data_.constr_names.compress(keep);
    keep_marked(model_.warm.cbasis, keep);
    keep_marked(model_.warm.cnorm, keep);
  }

  ZLPmodel& model_;
  ModelData& data_;
  PendingChanges& changes_;
  std::size_t new_cols_, new_rows_;
  std::optional<Renumbering> plan_;  // present when the matrix is rebuilt
  CompressedVectors matrix_;
  bool adds_range_ = false;
  bool basis_dropped_ = false;
};

}  // namespace

bool WarmStart::basis_fits(const ModelData& data) const {
  if (static_cast<Index>(vbasis.size()) != data.num_cols() || static_cast<Index>(cbasis.size()) != data.num_rows()) {
    return false;
  }
  const auto basic =
      std::count(vbasis.begin(), vbasis.end(), ZLP_BASIC) + std::count(cbasis.begin(), cbasis.end(), ZLP_BASIC);
  return basic == data.num_rows();
}

void WarmStart::drop_basis() {
  for (std::vector<int>* statuses : {&vbasis, &cbasis}) statuses->clear();
  for (std::vector<double>* norms : {&vnorm, &cnorm}) norms->clear();
  precision = BasisPrecision::kUnknown;
}

int nonbasic_status(const ModelData& data, Index col) {
  if (data.lb[col] > -kStoredInfinity) return ZLP_NONBASIC_LOWER;
  return data.ub[col] < kStoredInfinity ? ZLP_NONBASIC_UPPER : ZLP_SUPERBASIC;
}

PendingChanges& pending_changes(ZLPmodel& model) {
  if (model.pending == nullptr) {
    model.pending = std::make_unique<PendingChanges>(model.data.num_rows(), model.data.num_cols(),
                                                     static_cast<Index>(model.data.sos.size()));
  }
  return *model.pending;
}

void discard_results(ZLPmodel& model, bool keep_basis) {
  model.solution = SolutionStore();
  model.solver_state.reset();
  if (!keep_basis) model.warm.drop_basis();
}

void apply_pending_changes(ZLPmodel& model) {
  if (!has_pending_changes(model)) {
    model.pending.reset();
    return;
  }
  Update update(model, *model.pending);
  update.prepare();
  update.apply();
  if (model.pending->changes_problem()) discard_results(model, true);
  if (update.matrix_changed()) model.rows.reset();
  if (model.pending->adds() || model.pending->deletes()) model.default_names = DefaultNames();
  model.pending.reset();
  if (update.basis_dropped()) log_text(model.env, "Warning, invalid warm-start basis discarded\n");
}

const CompressedVectors& row_twin(ZLPmodel& model) {
  if (!model.rows) model.rows = transpose(model.data.matrix, model.data.num_rows());
  return *model.rows;
}

}  // namespace zorvex
