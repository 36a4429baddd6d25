// What the benches that take model files have in common.
#pragma once

#include <cstdio>
#include <string>

#include "model/model.hpp"
#include "opt/problem_data.hpp"
#include "presolve/presolve.hpp"
#include "zorvex.h"

namespace zorvex {

// Reads a file and calls body(name without directory and extension, model). False, with a message, if it cannot be
// read.
template <class Body>
bool with_model(ZLPenv* env, const std::string& file, const Body& body) {
  ZLPmodel* model = nullptr;
  if (ZLPreadmodel(env, file.c_str(), &model) != 0) {
    std::fprintf(stderr, "%s: %s\n", file.c_str(), ZLPgeterrormsg(env));
    return false;
  }
  const std::string name = file.substr(file.find_last_of('/') + 1);
  body(name.substr(0, name.find(".mps")), *model);
  ZLPfreemodel(model);
  return true;
}

// The same with the presolved linear model, where presolve leaves one.
template <class Body>
bool with_presolved(ZLPenv* env, const std::string& file, const Body& body) {
  return with_model(env, file, [&](const std::string& name, const ZLPmodel& model) {
    const LpData lp = make_lp_data(model.data);
    Presolve presolve(lp, {});
    if (presolve.run({}) == PresolveOutcome::kReduced) body(name, presolve.reduced());
  });
}

}  // namespace zorvex
