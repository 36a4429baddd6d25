/* sensitivity: what the prices of a solution say about changes of the data, and where they stop being true.
 *
 * A workshop makes chairs, tables and shelves from wood, hours and glue. Pi is the change of the profit for one unit
 * more of a resource, RC what a product that is not made lacks. Both are rates at the optimum: a small change obeys
 * them exactly, a large one need not, which the program shows by solving again.
 */
#include <stdio.h>
#include <stdlib.h>
#include <zorvex.h>

enum { kNumProducts = 3, kNumResources = 3, kHours = 1 };

static void require(ZLPmodel* model, int error) {
  if (error == 0) return;
  fprintf(stderr, "error %d: %s\n", error, ZLPgetmerrormsg(model));
  exit(1);
}

static double solve(ZLPmodel* model) {
  double profit = 0;
  require(model, ZLPoptimize(model));
  require(model, ZLPgetdblattr(model, "ObjVal", &profit));
  return profit;
}

int main(void) {
  const char* const products[] = {"chairs", "tables", "shelves"};
  const char* const resources[] = {"wood", "hours", "glue"};
  const double profit[] = {45, 80, 32};
  const double use[kNumResources][kNumProducts] = {{5, 20, 12}, {10, 15, 8}, {2, 1, 3}};
  const double stock[] = {400, 450, 200};
  const int all[] = {0, 1, 2};
  double x[kNumProducts], rc[kNumProducts], pi[kNumResources], slack[kNumResources], best;
  ZLPenv* env = NULL;
  ZLPmodel* model = NULL;

  if (ZLPloadenv(&env, NULL) != 0 || ZLPsetintparam(env, "OutputFlag", 0) != 0) return 1;
  if (ZLPnewmodel(env, &model, "workshop", kNumProducts, profit, NULL, NULL, NULL, products) != 0) return 1;
  for (int row = 0; row < kNumResources; ++row) {
    require(model, ZLPaddconstr(model, kNumProducts, all, use[row], ZLP_LESS_EQUAL, stock[row], resources[row]));
  }
  require(model, ZLPsetintattr(model, "ModelSense", ZLP_MAXIMIZE));
  best = solve(model);
  require(model, ZLPgetdblattrarray(model, "X", 0, kNumProducts, x));
  require(model, ZLPgetdblattrarray(model, "RC", 0, kNumProducts, rc));
  require(model, ZLPgetdblattrarray(model, "Pi", 0, kNumResources, pi));
  require(model, ZLPgetdblattrarray(model, "Slack", 0, kNumResources, slack));
  printf("profit %.2f\n", best);
  for (int j = 0; j < kNumProducts; ++j)
    printf("  %-8s make %6.2f, one more changes profit by %6.2f\n", products[j], x[j], rc[j]);
  for (int i = 0; i < kNumResources; ++i)
    printf("  %-8s left %6.2f, one more changes profit by %6.2f\n", resources[i], slack[i], pi[i]);

  for (double more = 1; more <= 1000; more *= 10) {
    require(model, ZLPsetdblattrelement(model, "RHS", kHours, stock[kHours] + more));
    printf("%5.0f more hours: predicted %9.2f, solved %9.2f\n", more, best + more * pi[kHours], solve(model));
  }
  ZLPfreemodel(model);
  ZLPfreeenv(env);
  return 0;
}
