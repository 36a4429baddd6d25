#include "linalg/gmres.hpp"

#include <cmath>
#include <cstddef>

namespace zorvex {

namespace {

double dot(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0;
  for (std::size_t k = 0; k < a.size(); ++k) sum += a[k] * b[k];
  return sum;
}

void add(std::vector<double>& to, double factor, const std::vector<double>& from) {
  for (std::size_t k = 0; k < to.size(); ++k) to[k] += factor * from[k];
}

// The least-squares problem of the Krylov space, kept triangular by plane rotations.
class RotatedSystem {
 public:
  explicit RotatedSystem(double norm) : rhs_{norm} {}

  // Takes the next column of the Hessenberg matrix; returns the norm of the residual.
  double append(std::vector<double> column) {
    for (std::size_t k = 0; k < cosine_.size(); ++k) {
      const double upper = column[k];
      column[k] = cosine_[k] * upper + sine_[k] * column[k + 1];
      column[k + 1] = cosine_[k] * column[k + 1] - sine_[k] * upper;
    }
    const std::size_t last = cosine_.size();
    const double radius = std::hypot(column[last], column[last + 1]);
    cosine_.push_back(radius > 0 ? column[last] / radius : 1);
    sine_.push_back(radius > 0 ? column[last + 1] / radius : 0);
    column[last] = radius;
    column.pop_back();
    columns_.push_back(std::move(column));
    rhs_.push_back(-sine_[last] * rhs_[last]);
    rhs_[last] *= cosine_[last];
    return std::abs(rhs_.back());
  }

  [[nodiscard]] std::vector<double> solve() const {
    std::vector<double> weights(columns_.size(), 0);
    for (std::size_t k = columns_.size(); k-- > 0;) {
      double sum = rhs_[k];
      for (std::size_t j = k + 1; j < columns_.size(); ++j) sum -= columns_[j][k] * weights[j];
      weights[k] = columns_[k][k] != 0 ? sum / columns_[k][k] : 0;
    }
    return weights;
  }

 private:
  std::vector<std::vector<double>> columns_;
  std::vector<double> rhs_, cosine_, sine_;
};

}  // namespace

double flexible_gmres(const GmresOperators& operators, const std::vector<double>& residual, double goal,
                      int max_iterations, std::vector<double>& x) {
  double norm = std::sqrt(dot(residual, residual));
  if (!(norm > goal) || !std::isfinite(norm)) return norm;
  RotatedSystem system(norm);
  std::vector<std::vector<double>> basis{residual}, directions;
  for (double& value : basis[0]) value /= norm;
  while (norm > goal && static_cast<int>(directions.size()) < max_iterations) {
    std::vector<double> direction, next;
    operators.precondition(basis.back(), direction);
    operators.apply(direction, next);
    std::vector<double> column;
    for (const std::vector<double>& vector : basis) {
      column.push_back(dot(vector, next));
      add(next, -column.back(), vector);
    }
    const double length = std::sqrt(dot(next, next));
    if (!std::isfinite(length)) break;
    column.push_back(length);
    directions.push_back(std::move(direction));
    norm = system.append(std::move(column));
    if (length == 0) break;
    for (double& value : next) value /= length;
    basis.push_back(std::move(next));
  }
  const std::vector<double> weights = system.solve();
  for (std::size_t k = 0; k < directions.size(); ++k) add(x, weights[k], directions[k]);
  return norm;
}

}  // namespace zorvex
