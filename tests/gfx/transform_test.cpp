#include "gfx/transform.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

using namespace KAV::GFX;

namespace {

struct SPlace {
    double x = 0;
    double y = 0;
    double z = 0;
};

/// One step after the other, as the contract lists them.
SPlace Reference(SPlace p, const SRect& rect, const STransform& t) {
    const auto radians = [](float degrees) { return static_cast<double>(degrees) * std::numbers::pi / 180; };
    const double centreX = static_cast<double>(rect.fL) + std::round(static_cast<double>(rect.fW) / 2);
    const double centreY = static_cast<double>(rect.fT) + std::round(static_cast<double>(rect.fH) / 2);
    p = {p.x - centreX, p.y - centreY, p.z};
    p = {
        p.x + static_cast<double>(t.fMX), p.y + static_cast<double>(t.fMY), p.z + static_cast<double>(t.fMZ)};
    const double aboutZ = radians(t.fRZ);
    p = {p.x * std::cos(aboutZ) - p.y * std::sin(aboutZ), p.x * std::sin(aboutZ) + p.y * std::cos(aboutZ),
        p.z};
    const double aboutY = radians(t.fRY);
    p = {p.x * std::cos(aboutY) + p.z * std::sin(aboutY), p.y,
        p.z * std::cos(aboutY) - p.x * std::sin(aboutY)};
    const double aboutX = radians(t.fRX);
    p = {p.x, p.y * std::cos(aboutX) - p.z * std::sin(aboutX),
        p.y * std::sin(aboutX) + p.z * std::cos(aboutX)};
    p = {
        p.x * static_cast<double>(t.fSX), p.y * static_cast<double>(t.fSY), p.z * static_cast<double>(t.fSZ)};
    return {p.x + centreX, p.y + centreY, p.z};
}

SPlace Applied(const Matrix& m, const SPlace& p) {
    const auto column = [&](std::size_t n) {
        return p.x * static_cast<double>(m[0][n]) + p.y * static_cast<double>(m[1][n]) +
               p.z * static_cast<double>(m[2][n]) + static_cast<double>(m[3][n]);
    };
    EXPECT_EQ(column(3), 1.0);
    return {column(0), column(1), column(2)};
}

void ExpectNear(const SPlace& p, const SPlace& expected, double tolerance) {
    EXPECT_NEAR(p.x, expected.x, tolerance);
    EXPECT_NEAR(p.y, expected.y, tolerance);
    EXPECT_NEAR(p.z, expected.z, tolerance);
}

constexpr SRect Square{10, 20, 40, 60}; // centre 30, 50
// Entries of the matrix are floats: 2^-24 of a shift or of an entry times a coordinate below 2000.
constexpr double Tolerance = 0.01;

} // namespace

TEST(Transform, MovesEveryPointAsItsStepsDoOneAfterTheOther) {
    std::mt19937 random(11);
    const auto within = [&random](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    for (int i = 0; i < 1000; ++i) {
        const SRect rect{within(-50, 800), within(-50, 600), within(0, 400), within(0, 400)};
        const STransform transform{within(-3, 3), within(-3, 3), within(-3, 3), within(-360, 360),
            within(-360, 360), within(-360, 360), within(-200, 200), within(-200, 200), within(-200, 200)};
        const Matrix matrix = MatrixOf(rect, transform);
        for (const SPlace& p : {SPlace{0, 0, 0}, {754, 553, 0}, {100, 0, 0}, {0, 100, 0}, {33, 44, 55}})
            ExpectNear(Applied(matrix, p), Reference(p, rect, transform), Tolerance);
    }
}

TEST(Transform, MovesNothingWhenItIsNeutral) {
    const Matrix matrix = MatrixOf(Square, {});
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column)
            EXPECT_EQ(matrix[row][column], row == column ? 1.0f : 0.0f);
    }
}

TEST(Transform, TurnsAboutZFromXToY) {
    STransform turn;
    turn.fRZ = 90;
    ExpectNear(Applied(MatrixOf(Square, turn), {40, 50, 0}), {30, 60, 0}, 1e-4);
}

TEST(Transform, TurnsAboutYFromZToX) {
    STransform turn;
    turn.fRY = 90;
    ExpectNear(Applied(MatrixOf(Square, turn), {30, 50, 10}), {40, 50, 0}, 1e-4);
}

TEST(Transform, TurnsAboutXFromYToZ) {
    STransform turn;
    turn.fRX = 90;
    ExpectNear(Applied(MatrixOf(Square, turn), {30, 60, 0}), {30, 50, 10}, 1e-4);
}

TEST(Transform, ShiftsBeforeItTurnsAndScalesAfterIt) {
    STransform transform;
    transform.fMX = 10;
    transform.fRZ = 90;
    transform.fSY = 2;
    // The centre goes 10 to the right, from there to below the centre, and there twice as far away.
    ExpectNear(Applied(MatrixOf(Square, transform), {30, 50, 0}), {30, 70, 0}, 1e-4);
}

TEST(Transform, TakesACentreOfWholePixelsFromTheEdge) {
    STransform twice;
    twice.fSX = twice.fSY = 2;
    // 5 / 2 is rounded to 3 and 4.8 / 2 to 2: the point at the centre stays.
    ExpectNear(Applied(MatrixOf({0.25f, 0.5f, 5, 4.8f}, twice), {3.25, 2.5, 0}), {3.25, 2.5, 0}, 1e-6);
}

TEST(FlatPart, MovesPointsOfAPictureAsTheMatrixDoes) {
    const STransform transform{1.5f, 0.5f, 2, 20, 30, 40, 5, 6, 7};
    const Matrix matrix = MatrixOf(Square, transform);
    const SFlatMatrix flat = FlatPart(matrix);
    for (const SPlace& p : {SPlace{0, 0, 0}, {100, 0, 0}, {0, 100, 0}, {31, 47, 0}}) {
        const auto expected = Applied(matrix, p);
        EXPECT_NEAR(p.x * static_cast<double>(flat.m11) + p.y * static_cast<double>(flat.m21) +
                        static_cast<double>(flat.dx),
            expected.x, 1e-9);
        EXPECT_NEAR(p.x * static_cast<double>(flat.m12) + p.y * static_cast<double>(flat.m22) +
                        static_cast<double>(flat.dy),
            expected.y, 1e-9);
    }
}

TEST(FlatPart, IsALineAfterAQuarterTurnAboutX) {
    STransform turn;
    turn.fRX = 90;
    const SFlatMatrix flat = FlatPart(MatrixOf(Square, turn));
    EXPECT_EQ(flat.m11, 1.0f);
    EXPECT_NEAR(flat.m22, 0.0f, 1e-6f);
    EXPECT_NEAR(flat.m21, 0.0f, 1e-6f);
    EXPECT_NEAR(flat.dy, 50.0f, 1e-4f); // all on the line through the centre
}
