#include "opt/engine_choice.hpp"

#include "barrier/quadratic_engine.hpp"
#include "barrier/sifting.hpp"
#include "env/processors.hpp"
#include "opt/concurrent.hpp"
#include "opt/solver_options.hpp"
#include "opt/staged_engine.hpp"

namespace zorvex {

namespace {

enum Method { kAutomatic = -1, kPrimal, kDual, kBarrier, kConcurrent, kConcurrentByWork };

std::unique_ptr<LpEngine> concurrent(const ZLPenv& env, const LpDriverOptions& options, double start_time) {
  ConcurrentOptions race;
  race.simplex = options.simplex;
  race.simplex.sense = options.sense;
  race.barrier = make_barrier_options(env, options.sense, start_time);
  const int threads = param<Param::Threads>(env);
  race.threads = threads > 0 ? threads : count_logical_processors();
  race.by_work = options.method == kConcurrentByWork;
  return std::make_unique<ConcurrentEngine>(race);
}

std::unique_ptr<LpEngine> sifting(const ZLPenv& env, const LpDriverOptions& options, double start_time) {
  SiftingOptions sift;
  sift.sifting = param<Param::Sifting>(env);
  sift.sift_method = param<Param::SiftMethod>(env);
  sift.simplex = options.simplex;
  sift.simplex.sense = options.sense;
  sift.barrier = make_barrier_options(env, options.sense, start_time).barrier;
  return std::make_unique<SiftingEngine>(sift);
}

std::unique_ptr<LpEngine> quadratic_simplex(const ZLPenv& env, const LpDriverOptions& options, const Basis& start,
                                            double start_time) {
  SimplexOptions simplex = options.simplex;
  simplex.sense = options.sense;
  return std::make_unique<QuadraticSimplexEngine>(simplex, make_barrier_options(env, options.sense, start_time), start);
}

// Relaxations need a basis, whatever Crossover says.
std::shared_ptr<LpEngine> basis_by_barrier(const ZLPenv& env, const LpDriverOptions& options, double start_time,
                                           bool root) {
  BarrierEngineOptions barrier = make_barrier_options(env, options.sense, start_time);
  barrier.barrier.root_log = barrier.crossover.root_log = root;
  if (barrier.crossover.crossover == 0) barrier.crossover.crossover = -1;
  return std::make_shared<BarrierEngine>(barrier);
}

// Null when no basis is wanted after a barrier: the simplex then has no rival.
std::unique_ptr<LpEngine> staged(const ZLPenv& env, const LpDriverOptions& options, double start_time) {
  StagedOptions stages;
  stages.simplex = options.simplex;
  stages.simplex.sense = options.sense;
  stages.barrier = make_barrier_options(env, options.sense, start_time);
  if (stages.barrier.crossover.crossover == 0) return nullptr;
  return std::make_unique<StagedEngine>(stages);
}

}  // namespace

std::unique_ptr<LpEngine> choose_engine(const ZLPenv& env, const LpData& lp, const LpDriverOptions& options,
                                        const Basis& start, double start_time) {
  if (lp.is_quadratic() && options.method != kAutomatic && options.method != kBarrier) {
    return quadratic_simplex(env, options, start, start_time);
  }
  if (lp.is_quadratic() || options.method == kBarrier) {
    return std::make_unique<BarrierEngine>(make_barrier_options(env, options.sense, start_time));
  }
  if (options.method >= kConcurrent) return concurrent(env, options, start_time);
  const int asked = param<Param::Sifting>(env);
  const bool wanted = sifting_is_wanted(lp, asked) && (asked > 0 || options.method != kPrimal);
  if (wanted && start.empty()) return sifting(env, options, start_time);
  if (options.method == kAutomatic && start.empty()) return staged(env, options, start_time);
  return nullptr;
}

std::shared_ptr<LpEngine> choose_root_engine(const ZLPenv& env, const LpDriverOptions& options, double start_time) {
  if (options.method >= kConcurrent) return concurrent(env, options, start_time);
  return options.method == kBarrier ? basis_by_barrier(env, options, start_time, true) : nullptr;
}

std::shared_ptr<LpEngine> choose_node_engine(const ZLPenv& env, const LpDriverOptions& options, double start_time) {
  if (param<Param::NodeMethod>(env) != kBarrier) return nullptr;
  return basis_by_barrier(env, options, start_time, false);
}

}  // namespace zorvex
