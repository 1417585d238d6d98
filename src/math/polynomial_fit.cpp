// SPDX-License-Identifier: MIT
#include "math/polynomial_fit.h"

#include <algorithm>
#include <cmath>

namespace traguardo {
namespace {

constexpr double kLargestValue = 1e20;
constexpr double kSmallestDeterminant = 1e-7;

double limited(double value) {
  return std::clamp(value, -kLargestValue, kLargestValue);
}

}  // namespace

void CPolyFit::Fit(const double* x, const double* y, std::size_t count, std::size_t degree, double* coefficients,
                   double* fitted, double* residuals, double* residuals_percent, bool* singular) {
  *singular = true;
  if (count < 2 || degree >= count - 1) return;
  const std::size_t terms = degree + 1;
  build_design(x, count, terms);
  build_normal_equations(y, count, terms);
  pivot_column_.assign(terms, terms);
  const double determinant = eliminate(terms);

  std::fill_n(coefficients, terms, 0.0);
  for (std::size_t row = 0; row < terms; ++row) {
    if (pivot_column_[row] < terms) coefficients[pivot_column_[row]] = work_[row * (terms + 1) + terms];
  }
  for (std::size_t i = 0; i < count; ++i) {
    double value = 0.0;
    for (std::size_t k = 0; k < terms; ++k) value += design_[i * terms + k] * coefficients[k];
    fitted[i] = value;
    residuals[i] = value - y[i];
    residuals_percent[i] = residuals[i] / 1000.0 * 100.0;
  }
  *singular = determinant < kSmallestDeterminant;
}

void CPolyFit::build_design(const double* x, std::size_t count, std::size_t terms) {
  design_.assign(count * terms, 1.0);
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t k = 1; k < terms; ++k) design_[i * terms + k] = design_[i * terms + k - 1] * x[i];
  }
}

void CPolyFit::build_normal_equations(const double* y, std::size_t count, std::size_t terms) {
  work_.assign(terms * (terms + 1), 0.0);
  for (std::size_t row = 0; row < terms; ++row) {
    double* equation = &work_[row * (terms + 1)];
    for (std::size_t i = 0; i < count; ++i) {
      const double* powers = &design_[i * terms];
      for (std::size_t column = 0; column < terms; ++column) equation[column] += powers[row] * powers[column];
      equation[terms] += powers[row] * y[i];
    }
  }
}

// Gauss-Jordan with full pivoting; gives the determinant. Rows trade places, columns don't: pivot_column_ tells which
// unknown a row gives. Ends at a matrix without a pivot, with the determinant 0.
double CPolyFit::eliminate(std::size_t terms) {
  const std::size_t stride = terms + 1;
  double determinant = 1.0;
  std::vector<bool> used(terms, false);
  for (std::size_t step = 0; step < terms; ++step) {
    std::size_t pivot_row = terms;
    std::size_t pivot_column = terms;
    double largest = 0.0;
    for (std::size_t row = step; row < terms; ++row) {
      for (std::size_t column = 0; column < terms; ++column) {
        if (used[column] || !(std::fabs(work_[row * stride + column]) > largest)) continue;
        largest = std::fabs(work_[row * stride + column]);
        pivot_row = row;
        pivot_column = column;
      }
    }
    if (pivot_row == terms) return 0.0;
    swap_rows(step, pivot_row, terms);
    used[pivot_column] = true;
    pivot_column_[step] = pivot_column;

    double* pivot_equation = &work_[step * stride];
    const double pivot = pivot_equation[pivot_column];
    // The size alone: of the normal equations it has no other sign, and the trading of rows leaves it alone.
    determinant = limited(determinant * std::fabs(pivot));
    for (std::size_t column = 0; column < stride; ++column) {
      pivot_equation[column] = limited(pivot_equation[column] / pivot);
    }
    for (std::size_t row = 0; row < terms; ++row) {
      if (row == step) continue;
      double* equation = &work_[row * stride];
      const double factor = equation[pivot_column];
      for (std::size_t column = 0; column < stride; ++column) {
        equation[column] = limited(equation[column] - factor * pivot_equation[column]);
      }
    }
  }
  return determinant;
}

void CPolyFit::swap_rows(std::size_t first, std::size_t second, std::size_t terms) {
  if (first == second) return;
  const auto row = [&](std::size_t index) { return work_.begin() + static_cast<std::ptrdiff_t>(index * (terms + 1)); };
  std::swap_ranges(row(first), row(first + 1), row(second));
}

}  // namespace traguardo
