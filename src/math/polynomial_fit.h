// SPDX-License-Identifier: MIT
// A polynomial through points, by least squares.
#pragma once

#include <cstddef>
#include <vector>

namespace traguardo {

class CPolyFit {
 public:
  virtual ~CPolyFit() = default;

  // coefficients: degree + 1 of them, the constant first. fitted, residuals (fitted less y) and residuals_percent
  // (a thousandth of the residual, in percent): `count` of each. singular: the points don't determine the polynomial;
  // with too few points for the degree nothing but it is written.
  void Fit(const double* x, const double* y, std::size_t count, std::size_t degree, double* coefficients,
           double* fitted, double* residuals, double* residuals_percent, bool* singular);

 private:
  void build_design(const double* x, std::size_t count, std::size_t terms);
  void build_normal_equations(const double* y, std::size_t count, std::size_t terms);
  double eliminate(std::size_t terms);
  void swap_rows(std::size_t first, std::size_t second, std::size_t terms);

  std::vector<double> design_;             // A row of powers per point.
  std::vector<double> work_;               // The normal equations, right side last in each row.
  std::vector<std::size_t> pivot_column_;  // Of each row, once it has served.
};

}  // namespace traguardo
