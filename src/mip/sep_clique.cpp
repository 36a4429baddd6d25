// Clique cuts: literals that exclude each other pairwise, grown greedily from each fractional one, then extended by
// literals that are false in the relaxation.
//   Source   A. Atamturk, G. Nemhauser, M. Savelsbergh, "Conflict graphs in solving integer programming problems", EJOR
//            121 (2000) 40-55.
#include <algorithm>

#include "mip/separator.hpp"

namespace zorvex {

namespace {

constexpr std::size_t kMaxSeeds = 500;
constexpr std::size_t kMaxExtension = 200;     // literals of value zero added to a clique
constexpr std::int64_t kEffortPerMember = 50;  // of all cliques, in members looked at
constexpr std::int64_t kEffortBase = 1000000;
constexpr double kTrue = 1e-6;  // values above count as not false

class CliqueSearch {
 public:
  explicit CliqueSearch(SeparationContext& context)
      : context_(context),
        table_(context.state.model.cliques),
        common_(static_cast<std::size_t>(2 * context.state.model.num_cols()), 0) {}

  void run();

 private:
  [[nodiscard]] double value(Literal lit) const {
    const double x = context_.relaxation.x[column_of(lit)];
    return is_one(lit) ? x : 1 - x;
  }
  void grow(Literal seed, const std::vector<Literal>& order);
  void take(Literal lit);
  [[nodiscard]] bool fits(Literal lit) const { return common_[lit] == static_cast<Index>(clique_.size()); }
  void extend();
  void emit();

  SeparationContext& context_;
  const CliqueTable& table_;
  std::vector<Index> common_;     // members of the clique that conflict with the literal
  std::vector<Literal> touched_;  // those with common_ > 0
  std::vector<Index> seen_;       // per literal: stamp of the last take()
  Index stamp_ = 0;
  std::vector<Literal> clique_;
  std::int64_t work_ = 0, limit_ = 0;
};

// Adds the literal and counts it for everything it conflicts with.
void CliqueSearch::take(Literal lit) {
  clique_.push_back(lit);
  if (seen_.empty()) seen_.assign(common_.size(), 0);
  ++stamp_;
  seen_[lit] = stamp_;
  for (const Index id : table_.of(lit)) {
    const std::span<const Literal> members = table_.members(id);
    work_ += static_cast<std::int64_t>(members.size());
    for (const Literal other : members) {
      if (seen_[other] == stamp_) continue;
      seen_[other] = stamp_;
      if (common_[other]++ == 0) touched_.push_back(other);
    }
  }
}

void CliqueSearch::grow(Literal seed, const std::vector<Literal>& order) {
  for (const Literal lit : touched_) common_[lit] = 0;
  touched_.clear();
  clique_.clear();
  take(seed);
  double sum = value(seed);
  for (const Literal lit : order) {
    if (work_ > limit_) return;
    if (lit == seed || !fits(lit)) continue;
    sum += value(lit);
    take(lit);
  }
  if (sum <= 1 + mip_tol::kCutViolation || clique_.size() < 2) return;
  extend();
  emit();
}

void CliqueSearch::extend() {
  std::size_t added = 0;
  const std::vector<Literal> candidates = touched_;
  for (const Literal lit : candidates) {
    if (added >= kMaxExtension || work_ > limit_) break;
    if (!fits(lit)) continue;
    take(lit);
    ++added;
  }
}

void CliqueSearch::emit() {
  Cut cut;
  cut.type = CutType::kClique;
  cut.rhs = 1;
  for (const Literal lit : clique_) {
    cut.index.push_back(column_of(lit));
    cut.value.push_back(is_one(lit) ? 1 : -1);
    if (!is_one(lit)) cut.rhs -= 1;
  }
  context_.found.push_back(std::move(cut));
}

void CliqueSearch::run() {
  std::vector<Literal> order;
  for (const Index col : context_.state.model.integer_cols) {
    for (const bool one : {true, false}) {
      const Literal lit = literal(col, one);
      if (value(lit) > kTrue && value(lit) < 1 - kTrue && !table_.of(lit).empty()) order.push_back(lit);
    }
  }
  std::stable_sort(order.begin(), order.end(), [&](Literal a, Literal b) { return value(a) > value(b); });
  limit_ = kEffortBase + kEffortPerMember * static_cast<std::int64_t>(table_.num_members());
  const std::size_t seeds = std::min(order.size(), kMaxSeeds);
  for (std::size_t k = 0; k < seeds && work_ < limit_; ++k) {
    if (context_.state.stop.stop_requested()) return;
    grow(order[k], order);
  }
}

void separate(SeparationContext& context) {
  if (!context.state.model.cliques.empty()) CliqueSearch(context).run();
}

}  // namespace

extern const Separator kCliqueSeparator;
const Separator kCliqueSeparator{"clique", separate};

}  // namespace zorvex
