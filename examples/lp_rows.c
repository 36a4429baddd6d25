/* lp_rows: a linear program built row by row, and what can be read from its solution.
 *
 * A kitchen mixes oats, milk and nuts (units of 100 g) for at least 20 g of protein and 700 kcal with at most 40 g of
 * fat, as cheaply as it can.
 */
#include <stdio.h>
#include <stdlib.h>
#include <zorvex.h>

enum { kOats, kMilk, kNuts, kNumFoods };

static void require(ZLPmodel* model, int error) {
  if (error == 0) return;
  fprintf(stderr, "error %d: %s\n", error, ZLPgetmerrormsg(model));
  exit(1);
}

static void add_nutrient(ZLPmodel* model, const char* name, const double* content, char sense, double amount) {
  const int food[] = {kOats, kMilk, kNuts};
  require(model, ZLPaddconstr(model, kNumFoods, food, content, sense, amount, name));
}

static void report(ZLPmodel* model) {
  const char* name = NULL;
  double cost = 0, value = 0, price = 0;
  int rows = 0, status = 0;
  require(model, ZLPgetintattr(model, "Status", &status));
  if (status != ZLP_OPTIMAL) {
    printf("no optimal mix, status %d\n", status);
    return;
  }
  require(model, ZLPgetdblattr(model, "ObjVal", &cost));
  printf("cheapest mix costs %.4f\n", cost);
  for (int food = 0; food < kNumFoods; ++food) {
    require(model, ZLPgetstrattrelement(model, "VarName", food, &name));
    require(model, ZLPgetdblattrelement(model, "X", food, &value));
    printf("  %-8s %.4f\n", name, value);
  }
  require(model, ZLPgetintattr(model, "NumConstrs", &rows));
  for (int row = 0; row < rows; ++row) {
    require(model, ZLPgetstrattrelement(model, "ConstrName", row, &name));
    require(model, ZLPgetdblattrelement(model, "Pi", row, &price));
    printf("  one more unit of %-8s costs %.4f\n", name, price);
  }
}

int main(void) {
  const char* const foods[] = {"oats", "milk", "nuts"};
  const double cost[] = {0.30, 0.12, 1.10};
  const double energy[] = {380, 64, 620}; /* kcal */
  const double protein[] = {13, 3.4, 18}; /* g */
  const double fat[] = {7, 3.6, 54};      /* g */
  ZLPenv* env = NULL;
  ZLPmodel* model = NULL;

  if (ZLPloadenv(&env, NULL) != 0) return 1;
  if (ZLPsetintparam(env, "OutputFlag", 0) != 0) return 1;
  /* Null bounds mean 0 and infinity, null types continuous. */
  if (ZLPnewmodel(env, &model, "kitchen", kNumFoods, cost, NULL, NULL, NULL, foods) != 0) {
    fprintf(stderr, "%s\n", ZLPgeterrormsg(env));
    return 1;
  }
  add_nutrient(model, "energy", energy, ZLP_GREATER_EQUAL, 700);
  add_nutrient(model, "protein", protein, ZLP_GREATER_EQUAL, 20);
  add_nutrient(model, "fat", fat, ZLP_LESS_EQUAL, 40);
  require(model, ZLPoptimize(model));
  report(model);

  /* Nobody eats more than 120 g of oats: a changed bound, solved again from the last basis. */
  require(model, ZLPsetdblattrelement(model, "UB", kOats, 1.2));
  require(model, ZLPoptimize(model));
  report(model);

  ZLPfreemodel(model);
  ZLPfreeenv(env);
  return 0;
}
