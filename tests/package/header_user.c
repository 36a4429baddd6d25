/* Every declaration of the header must compile under the strictest settings, included twice and used as values. */
#include "zorvex.h"
#include "zorvex.h" /* NOLINT(readability-duplicate-include): the guard is what is tested */

int main(void) {
  int (*solve)(ZLPmodel*) = ZLPoptimize;
  void (*release)(ZLPenv*) = ZLPfreeenv;
  ZLPenv* env = 0;
  ZLPmodel* model = 0;
  release(env);
  return solve(model) == ZLP_ERROR_NULL_ARGUMENT ? 0 : 1;
}
