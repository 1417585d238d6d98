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

TEST(PolynomialFit, PointsOfAPolynomialGiveIt) {
  const std::vector<std::vector<double>> polynomials = {{4.0}, {2.0, -3.0, 0.5}, {0.0, 1.0, 0.0, -0.25, 0.125}};
  for (const std::vector<double>& polynomial : polynomials) {
    std::vector<double> x;
    std::vector<double> y;
    for (double at = -4.0; at <= 5.0; at += 0.75) {
      double value = 0.0;
      double power = 1.0;
      for (const double coefficient : polynomial) {
        value += coefficient * power;
        power *= at;
      }
      x.push_back(at);
      y.push_back(value);
    }
    const Fit fit(x, y, polynomial.size() - 1);
    EXPECT_FALSE(fit.singular);
    for (std::size_t k = 0; k < polynomial.size(); ++k) EXPECT_NEAR(fit.coefficients[k], polynomial[k], 1e-9) << k;
  }
}

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
