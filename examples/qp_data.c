/* qp_data: a quadratic objective is entered, read back and written to a file.
 *
 * A portfolio of three papers: least variance 1/2 x'Qx for an expected return of at least 8 percent. The library takes
 * and keeps such models and writes them to files; it cannot solve them yet, ZLPoptimize says so with an error.
 */
#include <stdio.h>
#include <stdlib.h>
#include <zorvex.h>

enum { kNumPapers = 3 };

static void require(ZLPmodel* model, int error) {
  if (error == 0) return;
  fprintf(stderr, "error %d: %s\n", error, ZLPgetmerrormsg(model));
  exit(1);
}

int main(int argc, char** argv) {
  const char* const names[] = {"bonds", "shares", "gold"};
  const double yield[] = {3, 11, 6}, ones[] = {1, 1, 1};
  const int papers[] = {0, 1, 2};
  /* Covariances: the terms are the entries of Q in 1/2 x'Qx, so an entry off the diagonal is given on both sides. */
  const int row[] = {0, 1, 2, 0, 1, 1, 2}, col[] = {0, 1, 2, 1, 0, 2, 1};
  const double covariance[] = {0.5, 6, 3, 0.4, 0.4, -0.7, -0.7};
  int first[16], second[16], count = 0;
  double value[16];
  ZLPenv* env = NULL;
  ZLPmodel* model = NULL;

  if (argc != 2) {
    fprintf(stderr, "usage: %s FILE\n", argv[0]);
    return 1;
  }
  if (ZLPloadenv(&env, NULL) != 0 || ZLPsetintparam(env, "OutputFlag", 0) != 0) return 1;
  if (ZLPnewmodel(env, &model, "portfolio", kNumPapers, NULL, NULL, NULL, NULL, names) != 0) return 1;
  require(model, ZLPaddconstr(model, kNumPapers, papers, ones, ZLP_EQUAL, 1, "all"));
  require(model, ZLPaddconstr(model, kNumPapers, papers, yield, ZLP_GREATER_EQUAL, 8, "return"));
  require(model, ZLPaddqpterms(model, 7, row, col, covariance));
  require(model, ZLPupdatemodel(model));

  /* A first call sizes the arrays, a second one fills them. */
  require(model, ZLPgetq(model, &count, NULL, NULL, NULL));
  printf("%d quadratic terms\n", count);
  require(model, ZLPgetq(model, &count, first, second, value));
  for (int k = 0; k < count; ++k) printf("  %-6s %-6s %4g\n", names[first[k]], names[second[k]], value[k]);

  require(model, ZLPwrite(model, argv[1]));
  printf("written\n");

  ZLPfreemodel(model);
  ZLPfreeenv(env);
  return 0;
}
