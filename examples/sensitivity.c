/* sensitivity: what the prices of a solution say about changes of the data, and where they stop being true.
 *
 * A workshop makes chairs, tables and shelves from wood, hours and glue. Pi is the change of the profit for one unit
 * more of a resource, RC what a product that is not made lacks. Both are rates at the optimum. SARHSLow and SARHSUp
 * tell between which stocks they hold, SAObjLow and SAObjUp between which profits the plan stays as it is. The program
 * solves again within and beyond a range, and asks the basis what an hour more would change in the plan.
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
  double low[3], up[3], rate[kNumResources];
  int head[kNumResources], position[kNumResources];
  ZLPsvec column = {0, position, rate};
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

  require(model, ZLPgetdblattrarray(model, "SAObjLow", 0, kNumProducts, low));
  require(model, ZLPgetdblattrarray(model, "SAObjUp", 0, kNumProducts, up));
  for (int j = 0; j < kNumProducts; ++j)
    printf("same plan while %-8s bring %7.2f to %7.2f\n", products[j], low[j] < -1e99 ? -9999 : low[j],
           up[j] > 1e99 ? 9999 : up[j]);
  require(model, ZLPgetdblattrarray(model, "SARHSLow", 0, kNumResources, low));
  require(model, ZLPgetdblattrarray(model, "SARHSUp", 0, kNumResources, up));
  for (int i = 0; i < kNumResources; ++i)
    printf("same prices while %-6s number %7.2f to %7.2f\n", resources[i], low[i], up[i] > 1e99 ? 9999 : up[i]);

  /* x_B = B^-1 b: column `hours` of B^-1 is the change of the basic variables for one hour more. */
  require(model, ZLPgetBasisHead(model, head));
  require(model, ZLPBinvj(model, kHours, &column));
  for (int k = 0; k < column.len; ++k) {
    int variable = head[position[k]];
    printf("one hour more: %s%s by %6.3f\n", variable < kNumProducts ? "" : "rest of ",
           variable < kNumProducts ? products[variable] : resources[variable - kNumProducts], rate[k]);
  }

  for (double more = 1; more <= 1000; more *= 10) {
    require(model, ZLPsetdblattrelement(model, "RHS", kHours, stock[kHours] + more));
    printf("%5.0f more hours: predicted %9.2f, solved %9.2f\n", more, best + more * pi[kHours], solve(model));
  }
  ZLPfreemodel(model);
  ZLPfreeenv(env);
  return 0;
}
