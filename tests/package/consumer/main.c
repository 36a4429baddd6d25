/* max x + y with x + 2y <= 4 and 3x + y <= 6: 2.8 at (1.6, 1.2). */
#include <stdio.h>
#include <zorvex.h>

static int solve(ZLPmodel* model, int* status, double* objective) {
  const int columns[] = {0, 1};
  const double first[] = {1, 2};
  const double second[] = {3, 1};
  int error = ZLPaddconstr(model, 2, columns, first, ZLP_LESS_EQUAL, 4, "first");
  if (!error) error = ZLPaddconstr(model, 2, columns, second, ZLP_LESS_EQUAL, 6, "second");
  if (!error) error = ZLPsetintattr(model, "ModelSense", ZLP_MAXIMIZE);
  if (!error) error = ZLPoptimize(model);
  if (!error) error = ZLPgetintattr(model, "Status", status);
  if (!error) error = ZLPgetdblattr(model, "ObjVal", objective);
  return error;
}

int main(void) {
  const double profit[] = {1, 1};
  ZLPenv* env = NULL;
  ZLPmodel* model = NULL;
  int major = 0, minor = 0, technical = 0, status = 0;
  double objective = 0;
  int error = ZLPloadenv(&env, NULL);
  if (!error) error = ZLPsetintparam(env, "OutputFlag", 0);
  if (!error) error = ZLPnewmodel(env, &model, "consumer", 2, profit, NULL, NULL, NULL, NULL);
  if (!error) error = solve(model, &status, &objective);
  ZLPversion(&major, &minor, &technical);
  printf("version %d.%d.%d status %d objective %.10g\n", major, minor, technical, status, objective);
  ZLPfreemodel(model);
  ZLPfreeenv(env);
  return error ? 1 : 0;
}
