// SPDX-License-Identifier: MIT
#include "math/polynomial_fit.h"

#include <gtest/gtest.h>

#include <vector>

namespace traguardo {
namespace {

struct Fit {
  std::vector<double> coefficients;
  std::vector<double> fitted;
  std::vector<double> residuals;
  std::vector<double> percent;
  bool singular = false;

  Fit(const std::vector<double>& x, const std::vector<double>& y, std::size_t degree)
      : coefficients(degree + 1, 77.0), fitted(x.size(), 77.0), residuals(x.size()), percent(x.size()) {
    CPolyFit().Fit(x.data(), y.data(), x.size(), degree, coefficients.data(), fitted.data(), residuals.data(),
                   percent.data(), &singular);
  }
};

// y = 0, 3, 3, 6 over x = 0 .. 3: slope 1.8, constant 0.3, by the textbook's formulas.
TEST(PolynomialFit, OtherPointsGiveTheLeastSquares) {
  const Fit fit({0, 1, 2, 3}, {0, 3, 3, 6}, 1);
  EXPECT_NEAR(fit.coefficients[0], 0.3, 1e-12);
  EXPECT_NEAR(fit.coefficients[1], 1.8, 1e-12);
  EXPECT_NEAR(fit.fitted[1], 2.1, 1e-12);
  EXPECT_NEAR(fit.residuals[1], -0.9, 1e-12);
  EXPECT_NEAR(fit.percent[1], -0.09, 1e-13);
}

TEST(PolynomialFit, PointsThatDoNotDetermineItAreSingular) {
  const Fit too_few({0, 1, 2}, {1, 2, 3}, 2);
  EXPECT_TRUE(too_few.singular);
  EXPECT_EQ(too_few.coefficients[0], 77.0);
  EXPECT_EQ(too_few.fitted[0], 77.0);
  EXPECT_TRUE(Fit({}, {}, 0).singular);
  EXPECT_TRUE(Fit({2, 2, 2, 2}, {1, 2, 3, 4}, 1).singular);
  EXPECT_TRUE(Fit({1, 2, 1, 2, 1}, {1, 2, 3, 4, 5}, 2).singular);
}

}  // namespace
}  // namespace traguardo
