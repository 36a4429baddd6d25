#include "linalg/blas.hpp"

#include <dlfcn.h>

#include <cstdlib>

namespace zorvex {

namespace {

// OpenBLAS under the names that distributions give it, then whatever stands in for the reference library.
constexpr const char* kNames[] = {"libopenblas.so.0", "libopenblas.so", "libopenblasp.so.0", "libblas.so.3",
                                  "libblas.so"};

constexpr double kOne = 1, kMinusOne = -1;
constexpr int kStep = 1;

template <class Function>
bool find(void* handle, const char* symbol, Function& function) {
  function = reinterpret_cast<Function>(dlsym(handle, symbol));
  return function != nullptr;
}

bool bind(void* handle, BlasLibrary& library) {
  if (!find(handle, "dgemm_", library.gemm) || !find(handle, "dgemv_", library.gemv) ||
      !find(handle, "dtrsm_", library.trsm) || !find(handle, "dtrsv_", library.trsv)) {
    return false;
  }
  find(handle, "openblas_get_parallel", library.get_parallel);
  find(handle, "openblas_get_num_threads", library.get_num_threads);
  find(handle, "openblas_set_num_threads", library.set_num_threads);
  return true;
}

// Stays loaded to the end of the process: its threads and fork handlers may outlive any solve.
bool load(const char* name, BlasLibrary& library) {
  void* const handle = dlopen(name, RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) return false;
  if (bind(handle, library)) return true;
  dlclose(handle);
  return false;
}

bool load_any(BlasLibrary& library) {
  if (const char* const chosen = std::getenv("ZORVEX_BLAS")) return *chosen != 0 && load(chosen, library);
  for (const char* const name : kNames) {
    if (load(name, library)) return true;
  }
  return false;
}

// Builds of OpenBLAS that know no threads at all share their scratch memory among all callers.
std::unique_lock<std::mutex> lock_scratch(const BlasLibrary& library) {
  static std::mutex mutex;
  const bool shared = library.get_parallel != nullptr && library.get_parallel() == 0;
  return shared ? std::unique_lock<std::mutex>(mutex) : std::unique_lock<std::mutex>();
}

const double* column(const double* a, Index ld, Index col) { return a + static_cast<Offset>(ld) * col; }
double* column(double* a, Index ld, Index col) { return a + static_cast<Offset>(ld) * col; }

void subtract_multiple(Index count, double factor, const double* source, double* target) {
  for (Index i = 0; i < count; ++i) target[i] -= factor * source[i];
}

double dot(Index count, const double* a, const double* b) {
  double sum = 0;
  for (Index i = 0; i < count; ++i) sum += a[i] * b[i];
  return sum;
}

}  // namespace

const BlasLibrary* blas_library() {
  struct Loaded {
    BlasLibrary entries{};
    bool present = load_any(entries);
  };
  static const Loaded kLoaded;
  return kLoaded.present ? &kLoaded.entries : nullptr;
}

void subtract_product(const BlasLibrary* library, Index m, Index n, Index k, const double* a, Index lda,
                      const double* b, Index ldb, double beta, double* c, Index ldc) {
  if (library != nullptr) {
    const auto lock = lock_scratch(*library);
    library->gemm("N", "T", &m, &n, &k, &kMinusOne, a, &lda, b, &ldb, &beta, c, &ldc);
    return;
  }
  for (Index j = 0; j < n; ++j) {
    double* const target = column(c, ldc, j);
    if (beta != 1) {
      for (Index i = 0; i < m; ++i) target[i] = beta == 0 ? 0 : beta * target[i];
    }
    for (Index p = 0; p < k; ++p) subtract_multiple(m, column(b, ldb, p)[j], column(a, lda, p), target);
  }
}

void solve_from_right(const BlasLibrary* library, Index rows, Index order, const double* l, Index ldl, double* b,
                      Index ldb) {
  if (library != nullptr) {
    const auto lock = lock_scratch(*library);
    library->trsm("R", "L", "T", "U", &rows, &order, &kOne, l, &ldl, b, &ldb);
    return;
  }
  for (Index p = 0; p < order; ++p) {
    for (Index j = p + 1; j < order; ++j) {
      subtract_multiple(rows, column(l, ldl, p)[j], column(b, ldb, p), column(b, ldb, j));
    }
  }
}

void solve_forward(const BlasLibrary* library, Index order, const double* l, Index ldl, double* x, Index rows,
                   const double* a, Index lda, double* y) {
  if (library != nullptr) {
    const auto lock = lock_scratch(*library);
    library->trsv("L", "N", "U", &order, l, &ldl, x, &kStep);
    if (rows > 0) library->gemv("N", &rows, &order, &kMinusOne, a, &lda, x, &kStep, &kOne, y, &kStep);
    return;
  }
  for (Index p = 0; p < order; ++p) {
    subtract_multiple(order - p - 1, x[p], column(l, ldl, p) + p + 1, x + p + 1);
    subtract_multiple(rows, x[p], column(a, lda, p), y);
  }
}

void solve_backward(const BlasLibrary* library, Index order, const double* l, Index ldl, double* x, Index rows,
                    const double* a, Index lda, const double* y) {
  if (library != nullptr) {
    const auto lock = lock_scratch(*library);
    if (rows > 0) library->gemv("T", &rows, &order, &kMinusOne, a, &lda, y, &kStep, &kOne, x, &kStep);
    library->trsv("L", "T", "U", &order, l, &ldl, x, &kStep);
    return;
  }
  for (Index p = order; p-- > 0;) {
    x[p] -= dot(rows, column(a, lda, p), y) + dot(order - p - 1, column(l, ldl, p) + p + 1, x + p + 1);
  }
}

}  // namespace zorvex
