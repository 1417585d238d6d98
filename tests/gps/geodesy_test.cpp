// SPDX-License-Identifier: MIT
#include "geodesy/geodesy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "geodesy/haversine.h"
#include "helpers/gps_records.h"

namespace traguardo {
namespace {

using Conversion = Geodetic (*)(const Ecef&);

struct Place {
  double latitude;
  double longitude;
  double height;
};

std::vector<Place> places_between(double lowest, double highest) {
  std::vector<Place> places;
  for (int quarter = -360; quarter <= 360; ++quarter) {
    for (int i = 0; i <= 8; ++i) {
      places.push_back({quarter * 0.25, -180.0 + i * 40.0 + (quarter + 360) * 0.05,
                        lowest + (highest - lowest) * ((i * 5) % 9) / 8.0});
    }
  }
  return places;
}

double degrees_apart(double a, double b) {
  return std::fabs(std::remainder(a - b, 360.0));
}

struct WorstError {
  double latitude = 0.0;
  double longitude = 0.0;
  double height = 0.0;

  void take(const Place& truth, const Geodetic& result) {
    latitude = std::max(latitude, std::fabs(truth.latitude - result.latitude_deg));
    height = std::max(height, std::fabs(truth.height - result.height_m));
    // At a pole every longitude is right.
    if (std::fabs(truth.latitude) < 89.99) {
      longitude = std::max(longitude, degrees_apart(truth.longitude, result.longitude_deg));
    }
  }
};

struct Accuracy {
  const char* name;
  Conversion conversion;
  double degrees;
  double metres;
};

// The limits of the one-step form were worked out apart, with 40 digits over 10,000 places: 4.2002e-8 degree, 5.549 mm.
const Accuracy kAccuracies[] = {
    {"iteration", geodetic_by_iteration, 1e-8, 0.001},
    {"one step", geodetic_in_one_step, 4.3e-8, 0.0056},
};

TEST(Geodesy, KeepsItsAccuracyAtAllLatitudesFrom1KmBelowTo10KmAboveTheEllipsoid) {
  for (const Accuracy& accuracy : kAccuracies) {
    WorstError worst;
    for (const Place& place : places_between(-1000.0, 10000.0)) {
      worst.take(place, accuracy.conversion(test::gps_position(place.latitude, place.longitude, place.height)));
    }
    EXPECT_LT(worst.latitude, accuracy.degrees) << accuracy.name;
    EXPECT_LT(worst.longitude, 1e-8) << accuracy.name;
    EXPECT_LT(worst.height, accuracy.metres) << accuracy.name;
  }
}

struct SpecialPlace {
  const char* name;
  Ecef position;
  double latitude;
  double longitude;
  double height;
};

void expect_place(const SpecialPlace& special, Conversion conversion) {
  const Geodetic result = conversion(special.position);
  EXPECT_NEAR(result.latitude_deg, special.latitude, 1e-9) << special.name;
  EXPECT_NEAR(result.longitude_deg, special.longitude, 1e-9) << special.name;
  EXPECT_NEAR(result.height_m, special.height, 1e-6) << special.name;
}

constexpr double kPolar = 6356752.314245179;

TEST(Geodesy, KnowsAxisEquatorAndTheMeridiansWhereXIsZero) {
  const SpecialPlace places[] = {
      {"north pole", {0, 0, kPolar + 100}, 90, 0, 100},
      {"south pole", {0, 0, -kPolar - 100}, -90, 0, 100},
      {"equator", {6378237, 0, 0}, 0, 0, 100},
      {"date line", {-6378137, 0, 0}, 0, 180, 0},
      {"x = 0, east", {0, 6378137, 0}, 0, 90, 0},
      {"x = 0, west", {0, -6378137, 0}, 0, -90, 0},
      {"deep on the axis", {0, 0, 1}, 90, 0, 1 - kPolar},
  };
  for (const SpecialPlace& place : places) {
    expect_place(place, geodetic_in_one_step);
    expect_place(place, geodetic_by_iteration);
  }
}

TEST(Geodesy, HasAResultAtTheEarthsCentre) {
  expect_place({"centre in one step", {0, 0, 0}, 90, 0, 0}, geodetic_in_one_step);
  expect_place({"centre by iteration", {0, 0, 0}, 0, 0, -kPolar}, geodetic_by_iteration);
}

// In the equator's plane at 30 km from the axis the nearest point of the ellipsoid lies far from the equator. Its
// distance follows from a search over the meridian.
TEST(Geodesy, MeasuresTheHeightOfAPointNearTheCentreToItsNearestPoint) {
  double nearest = 1e9;
  for (int i = 0; i <= 200000; ++i) {
    const double beta = i * (3.14159265358979323846 / 2.0 / 200000.0);
    nearest = std::min(nearest, std::hypot(6378137.0 * std::cos(beta) - 30000.0, kPolar * std::sin(beta)));
  }
  EXPECT_NEAR(geodetic_by_iteration({30000.0, 0.0, 0.0}).height_m, -nearest, 0.01);
}

TEST(Geodesy, ComesToAnEndForPositionsOfDamagedRecords) {
  // Every mixture of the ends of a 32-bit coordinate, of a centimetre and of zero.
  const double values[] = {-21474836.48, -42697.67, -0.01, 0.0, 0.005, 0.01, 300.0, 42697.68, 6378137.0, 21474836.47};
  for (const double x : values) {
    for (const double y : values) {
      for (const double z : values) {
        const Geodetic result = geodetic_by_iteration({x, y, z});
        EXPECT_TRUE(std::fabs(result.latitude_deg) <= 90.0) << x << ' ' << y << ' ' << z;
        geodetic_in_one_step({x, y, z});
      }
    }
  }
}

TEST(Geodesy, TurnsVectorsToEastNorthAndUp) {
  struct Case {
    const char* name;
    double latitude, longitude;
    Ecef vector;
    Local expected;
  };
  const double root = std::sqrt(0.5);
  const Case cases[] = {
      {"equator", 0, 0, {1, 2, 3}, {2, 3, 1}},
      {"90 degrees east", 0, 90, {1, 2, 3}, {-1, 3, 2}},
      {"north pole", 90, 0, {1, 2, 3}, {2, -1, 3}},
      {"45 degrees north, the axis", 45, 0, {0, 0, 1}, {0, root, root}},
  };
  for (const Case& c : cases) {
    const Local result = LocalAxes(c.latitude, c.longitude).turned(c.vector);
    EXPECT_NEAR(result.east, c.expected.east, 1e-12) << c.name;
    EXPECT_NEAR(result.north, c.expected.north, 1e-12) << c.name;
    EXPECT_NEAR(result.up, c.expected.up, 1e-12) << c.name;
  }
}

TEST(Haversine, MeasuresAlongGreatCircles) {
  const Haversine haversine;
  const double radius = 6372797.560856;
  const double pi = 3.14159265358979323846;
  EXPECT_NEAR(haversine.Distanza(0, 0, 0, 1), radius * pi / 180.0, 1e-6);
  EXPECT_NEAR(haversine.Distanza(10, 20, 100 - 10, 20), radius * pi * 80.0 / 180.0, 1e-6);
  EXPECT_NEAR(haversine.Distanza(0, 0, 90, 77), radius * pi / 2.0, 1e-6);
  // By the cosine rule on the sphere.
  const double a = test::gps_radians(36.12);
  const double b = test::gps_radians(33.94);
  const double angle =
      std::acos(std::sin(a) * std::sin(b) + std::cos(a) * std::cos(b) * std::cos(test::gps_radians(-86.67 + 118.40)));
  EXPECT_NEAR(haversine.Distanza(36.12, -86.67, 33.94, -118.40), radius * angle, 1e-3);
  EXPECT_EQ(haversine.Distanza(45, 9, 45, 9), 0.0);
}

}  // namespace
}  // namespace traguardo
