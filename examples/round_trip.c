/* round_trip: the shortest tour through some cities, with constraints added while the model is solved.
 *
 * Every city has two edges of the tour. That alone allows several small tours instead of one; the constraints that
 * forbid them, "of the edges within a set of cities at most as many as cities less one", are far too many to write
 * down. The callback looks at every solution the search finds, follows its tours, and adds the constraint of each tour
 * that is too short. PreCrush 1 tells the solver to expect that.
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <zorvex.h>

enum { kCities = 16, kEdges = kCities * (kCities - 1) / 2 };

static const double kX[kCities] = {12, 18, 25, 14, 21, 80, 88, 75, 84, 91, 43, 52, 47, 40, 55, 49};
static const double kY[kCities] = {10, 22, 13, 31, 35, 12, 21, 28, 34, 8, 70, 78, 64, 85, 66, 90};

static void require(ZLPmodel* model, int error) {
  if (error == 0) return;
  fprintf(stderr, "error %d: %s\n", error, ZLPgetmerrormsg(model));
  exit(1);
}

/* Edges are numbered row by row: 0-1, 0-2, ..., 1-2, ... */
static int edge(int a, int b) { return a < b ? a * kCities - a * (a + 1) / 2 + b - a - 1 : edge(b, a); }

/* Follows the tour of `start`; marks its cities in `member` and returns how many there are. */
static int follow(const double* x, int start, int* member) {
  int here = start, before = -1, size = 0;
  for (int city = 0; city < kCities; ++city) member[city] = 0;
  do {
    int next = -1;
    member[here] = 1;
    ++size;
    for (int city = 0; city < kCities && next < 0; ++city) {
      if (city != here && city != before && x[edge(here, city)] > 0.5) next = city;
    }
    before = here;
    here = next;
  } while (here >= 0 && !member[here]);
  return size;
}

/* The user data: how often a solution fell apart, and how many constraints that took. */
struct counts {
  int broken, constraints;
};

static int on_event(ZLPmodel* model, ZLPcbdata* cbdata, int where, void* user) {
  struct counts* counts = user;
  double x[kEdges], value[kEdges];
  int member[kCities], seen[kCities] = {0}, index[kEdges], error;
  (void)model;
  if (where != ZLP_WHERE_MIP_SOLUTION) return 0;
  error = ZLPcbget(cbdata, where, ZLP_WHAT_SOLUTION, x);
  if (error != 0) return error;
  for (int start = 0; start < kCities; ++start) {
    int count = 0, size;
    if (seen[start]) continue;
    size = follow(x, start, member);
    if (size == kCities) return 0;
    if (start == 0) ++counts->broken;
    for (int a = 0; a < kCities; ++a) {
      seen[a] |= member[a];
      for (int b = a + 1; b < kCities; ++b) {
        if (!member[a] || !member[b]) continue;
        index[count] = edge(a, b);
        value[count++] = 1;
      }
    }
    error = ZLPcbcut(cbdata, count, index, value, ZLP_LESS_EQUAL, size - 1);
    if (error != 0) return error;
    ++counts->constraints;
  }
  return 0;
}

static void build(ZLPenv* env, ZLPmodel** model) {
  double length[kEdges], upper[kEdges], ones[kCities];
  char type[kEdges];
  int index[kCities];
  for (int a = 0; a < kCities; ++a) {
    ones[a] = 1;
    for (int b = a + 1; b < kCities; ++b) {
      length[edge(a, b)] = floor(10 * hypot(kX[a] - kX[b], kY[a] - kY[b]) + 0.5) / 10;
      upper[edge(a, b)] = 1;
      type[edge(a, b)] = ZLP_BINARY;
    }
  }
  if (ZLPnewmodel(env, model, "round trip", kEdges, length, NULL, upper, type, NULL) != 0) {
    fprintf(stderr, "%s\n", ZLPgeterrormsg(env));
    exit(1);
  }
  for (int city = 0; city < kCities; ++city) {
    int count = 0;
    for (int other = 0; other < kCities; ++other) {
      if (other != city) index[count++] = edge(city, other);
    }
    require(*model, ZLPaddconstr(*model, count, index, ones, ZLP_EQUAL, 2, NULL));
  }
}

int main(void) {
  ZLPenv* env = NULL;
  ZLPmodel* model = NULL;
  struct counts counts = {0, 0};
  double x[kEdges], length = 0;
  int member[kCities], status = 0;

  if (ZLPloadenv(&env, NULL) != 0) return 1;
  if (ZLPsetintparam(env, "OutputFlag", 0) != 0 || ZLPsetintparam(env, "PreCrush", 1) != 0) return 1;
  if (ZLPsetdblparam(env, "MIPGap", 0) != 0) return 1;
  build(env, &model);
  require(model, ZLPsetcallbackfunc(model, on_event, &counts));
  require(model, ZLPoptimize(model));

  require(model, ZLPgetintattr(model, "Status", &status));
  require(model, ZLPgetdblattr(model, "ObjVal", &length));
  require(model, ZLPgetdblattrarray(model, "X", 0, kEdges, x));
  printf("status %d, one tour through %d of %d cities, length %.1f\n", status, follow(x, 0, member), kCities, length);
  printf("solutions fell apart: %s, constraints were added: %s\n", counts.broken > 0 ? "yes" : "no",
         counts.constraints > 0 ? "yes" : "no");

  ZLPfreemodel(model);
  ZLPfreeenv(env);
  return 0;
}
