/* mip_start: a knapsack with a start that a simple rule found, then solved to the optimum.
 *
 * The greedy rule takes items by value per weight while they fit. Its choice becomes the MIP start, so the search has
 * a solution before its first node.
 */
#include <stdio.h>
#include <stdlib.h>
#include <zorvex.h>

enum { kNumItems = 12 };
static const double kWeight[kNumItems] = {31, 19, 43, 27, 38, 22, 50, 17, 33, 29, 41, 24};
static const double kValue[kNumItems] = {62, 36, 90, 52, 79, 44, 101, 30, 68, 60, 83, 46};
static const double kCapacity = 150;

static void require(ZLPmodel* model, int error) {
  if (error == 0) return;
  fprintf(stderr, "error %d: %s\n", error, ZLPgetmerrormsg(model));
  exit(1);
}

static int by_value_per_weight(const void* a, const void* b) {
  const int i = *(const int*)a, j = *(const int*)b;
  const double difference = kValue[j] / kWeight[j] - kValue[i] / kWeight[i];
  return (difference > 0) - (difference < 0);
}

/* take[i] becomes 1 for the items that the rule packs; returns their value. */
static double pack_greedily(double* take) {
  int order[kNumItems];
  double room = kCapacity, value = 0;
  for (int i = 0; i < kNumItems; ++i) order[i] = i;
  qsort(order, kNumItems, sizeof order[0], by_value_per_weight);
  for (int k = 0; k < kNumItems; ++k) {
    const int item = order[k];
    take[item] = kWeight[item] <= room ? 1 : 0;
    room -= take[item] * kWeight[item];
    value += take[item] * kValue[item];
  }
  return value;
}

static void build(ZLPenv* env, ZLPmodel** model) {
  char type[kNumItems];
  int item[kNumItems];
  for (int i = 0; i < kNumItems; ++i) {
    type[i] = ZLP_BINARY;
    item[i] = i;
  }
  if (ZLPnewmodel(env, model, "knapsack", kNumItems, kValue, NULL, NULL, type, NULL) != 0) {
    fprintf(stderr, "%s\n", ZLPgeterrormsg(env));
    exit(1);
  }
  require(*model, ZLPaddconstr(*model, kNumItems, item, kWeight, ZLP_LESS_EQUAL, kCapacity, "capacity"));
  require(*model, ZLPsetintattr(*model, "ModelSense", ZLP_MAXIMIZE));
  /* Attributes of columns and rows exist once the queued edits are in the model. */
  require(*model, ZLPupdatemodel(*model));
}

int main(void) {
  ZLPenv* env = NULL;
  ZLPmodel* model = NULL;
  double take[kNumItems], best = 0, bound = 0;
  int status = 0;

  if (ZLPloadenv(&env, NULL) != 0) return 1;
  if (ZLPsetintparam(env, "OutputFlag", 0) != 0 || ZLPsetdblparam(env, "MIPGap", 0) != 0) return 1;
  build(env, &model);

  printf("greedy packs %.0f\n", pack_greedily(take));
  require(model, ZLPsetdblattrarray(model, "Start", 0, kNumItems, take));
  require(model, ZLPoptimize(model));

  require(model, ZLPgetintattr(model, "Status", &status));
  require(model, ZLPgetdblattr(model, "ObjVal", &best));
  require(model, ZLPgetdblattr(model, "ObjBound", &bound));
  require(model, ZLPgetdblattrarray(model, "X", 0, kNumItems, take));
  printf("status %d, best packs %.0f, none packs more than %.0f:", status, best, bound);
  for (int i = 0; i < kNumItems; ++i) {
    if (take[i] > 0.5) printf(" %d", i);
  }
  printf("\n");

  ZLPfreemodel(model);
  ZLPfreeenv(env);
  return 0;
}
