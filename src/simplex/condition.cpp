#include "simplex/condition.hpp"

#include <algorithm>
#include <cmath>

#include "base/random_stream.hpp"

namespace zorvex {

namespace {

constexpr int kMaxEstimatorSteps = 5;
constexpr int kMaxPowerSteps = 500;
constexpr double kSettled = 1e-6;  // relative change of a step that ends the power iteration

template <class Real>
Scattered<Real> dense_vector(const std::vector<Real>& values) {
  Scattered<Real> vector;
  vector.value = values;
  vector.dense = true;
  return vector;
}

// The vector with every entry meant, whatever the solve said of its pattern.
template <class Real>
std::vector<Real>& dense_values(Scattered<Real>& vector) {
  vector.dense = true;
  return vector.value;
}

template <class Real>
std::vector<Real> solved(BasisInverse<Real>& inverse, const std::vector<Real>& values, bool transposed) {
  Scattered<Real> vector = dense_vector(values);
  if (transposed) {
    inverse.btran(vector);
  } else {
    inverse.ftran(vector);
  }
  return std::move(dense_values(vector));
}

// B x, or B'y.
template <class Real>
std::vector<Real> product(const BasisInverse<Real>& inverse, const std::vector<Real>& values, bool transposed) {
  const Index m = inverse.num_rows();
  Scattered<Real> result;
  result.resize(m);
  result.dense = true;
  if (!transposed) {
    for (Index position = 0; position < m; ++position) {
      if (values[position] != 0) inverse.add_column(inverse.head()[position], values[position], result);
    }
    return std::move(result.value);
  }
  const Scattered<Real> rows = dense_vector(values);
  for (Index position = 0; position < m; ++position) {
    result.value[position] = inverse.column_dot(inverse.head()[position], rows);
  }
  return std::move(result.value);
}

template <class Real>
Real sum_of_magnitudes(const std::vector<Real>& values) {
  using std::abs;
  Real sum = 0;
  for (const Real v : values) sum += abs(v);
  return sum;
}

template <class Real>
Real norm1_of_basis(const BasisInverse<Real>& inverse) {
  using std::abs;
  Real largest = 0;
  Scattered<Real> column;
  column.resize(inverse.num_rows());
  for (const Index var : inverse.head()) {
    inverse.add_column(var, Real(1), column);
    Real sum = 0;
    for (const Index row : column.index) sum += abs(column.value[row]);
    largest = std::max<Real>(largest, sum);
    column.clear();
  }
  return largest;
}

// Section 3 of the paper: the gradient of ||B^-1 x||_1 tells the unit vector to try next.
template <class Real>
Real norm1_of_inverse(BasisInverse<Real>& inverse) {
  using std::abs;
  const auto m = static_cast<std::size_t>(inverse.num_rows());
  std::vector<Real> x(m, Real(1) / static_cast<Real>(m));
  Real estimate = 0;
  for (int step = 0; step < kMaxEstimatorSteps; ++step) {
    std::vector<Real> y = solved(inverse, x, false);
    const Real norm = sum_of_magnitudes(y);
    if (step > 0 && norm <= estimate) break;
    estimate = norm;
    for (Real& v : y) v = v >= 0 ? Real(1) : Real(-1);
    const std::vector<Real> gradient = solved(inverse, y, true);
    const auto larger = [](Real a, Real b) { return abs(a) < abs(b); };
    const auto best = std::max_element(gradient.begin(), gradient.end(), larger) - gradient.begin();
    Real along = 0;
    for (std::size_t k = 0; k < m; ++k) along += gradient[k] * x[k];
    if (step > 0 && abs(gradient[best]) <= along) break;
    std::fill(x.begin(), x.end(), Real(0));
    x[best] = 1;
  }
  // A vector that catches what cancels for the others.
  for (std::size_t k = 0; k < m; ++k) {
    const Real growing = 1 + (m > 1 ? static_cast<Real>(k) / static_cast<Real>(m - 1) : Real(0));
    x[k] = k % 2 == 0 ? growing : -growing;
  }
  const Real alternative = 2 * sum_of_magnitudes(solved(inverse, x, false)) / (3 * static_cast<Real>(m));
  return std::max<Real>(estimate, alternative);
}

// Norm of v, which is divided by it.
template <class Real>
Real normalise(std::vector<Real>& v) {
  using std::sqrt;
  Real sum = 0;
  for (const Real entry : v) sum += entry * entry;
  const Real norm = sqrt(sum);
  if (norm > 0) {
    for (Real& entry : v) entry /= norm;
  }
  return norm;
}

// Largest singular value of the operator apply(v, transposed).
template <class Real, class Apply>
Real largest_singular_value(std::size_t size, Apply apply) {
  using std::abs;
  RandomStream random(0, "power iteration");
  std::vector<Real> v(size);
  for (Real& entry : v) entry = Real(0.5 + random.uniform());
  normalise(v);
  Real value = 0;
  for (int step = 0; step < kMaxPowerSteps; ++step) {
    std::vector<Real> image = apply(v, false);
    const Real now = normalise(image);
    v = apply(image, true);
    normalise(v);
    const bool settled = abs(now - value) <= Real(kSettled) * now;
    value = std::max<Real>(value, now);
    if (settled) break;
  }
  return value;
}

}  // namespace

template <class Real>
double condition_1norm(BasisInverse<Real>& inverse) {
  if (inverse.num_rows() == 0) return 1;
  return std::max(1.0, static_cast<double>(norm1_of_basis(inverse) * norm1_of_inverse(inverse)));
}

template <class Real>
double condition_2norm(BasisInverse<Real>& inverse) {
  if (inverse.num_rows() == 0) return 1;
  const auto m = static_cast<std::size_t>(inverse.num_rows());
  const Real largest = largest_singular_value<Real>(
      m, [&](const std::vector<Real>& v, bool transposed) { return product(inverse, v, transposed); });
  const Real inverse_smallest = largest_singular_value<Real>(
      m, [&](const std::vector<Real>& v, bool transposed) { return solved(inverse, v, transposed); });
  return std::max(1.0, static_cast<double>(largest * inverse_smallest));
}

template double condition_1norm(BasisInverse<double>&);
template double condition_1norm(BasisInverse<Extended>&);
template double condition_2norm(BasisInverse<double>&);
template double condition_2norm(BasisInverse<Extended>&);

}  // namespace zorvex
