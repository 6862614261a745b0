// SPDX-License-Identifier: MIT
#include "spectral/FFTPack.h"

#include "tests/spectral/DirectTransform.h"
#include "tests/support/Allocations.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <new>
#include <numbers>
#include <random>
#include <type_traits>
#include <vector>

using namespace Support;

namespace {

/// Uniform in [-1, 1), the same on every machine: the engine's bits are told by the standard, its
/// distributions' are not.
std::vector<double> noise(std::size_t n, std::uint64_t seed) {
    std::mt19937_64 engine(seed);
    std::vector<double> x(n);
    for (double& value : x)
        value = static_cast<double>(engine() >> 11) * 0x1p-52 - 1.0;
    return x;
}

std::vector<double> transformOf(std::vector<double> x) {
    FFTPack pack;
    pack.setSize(static_cast<std::int32_t>(x.size()));
    pack.forwardTransform(x.data());
    return x;
}

std::vector<std::int32_t> factorsOf(const FFTPack& pack) {
    const std::int32_t* table = pack.getFactorTable();
    return {table + 2, table + 2 + table[1]};
}

template <class Real>
long double norm(const std::vector<Real>& x) {
    long double sum = 0.0L;
    for (const Real value : x)
        sum += static_cast<long double>(value) * static_cast<long double>(value);
    return std::sqrt(sum);
}

template <class Real>
long double relativeError(const std::vector<double>& got, const std::vector<Real>& wanted) {
    if (got.size() != wanted.size()) return std::numeric_limits<long double>::infinity();
    std::vector<long double> difference(got.size());
    for (std::size_t i = 0; i < got.size(); ++i)
        difference[i] = got[i] - static_cast<long double>(wanted[i]);
    return norm(difference) / norm(wanted);
}

/// What rounding may cost a transform of length n, relative in the 2-norm: a little for each doubling, and
/// for each odd factor its size, since the general pass finds its cosines by that many turns.
long double bound(std::int32_t n) {
    FFTPack pack;
    pack.setSize(n);
    long double oddFactors = 0.0L;
    if (n > 1)
        for (const std::int32_t factor : factorsOf(pack))
            if (factor % 2 != 0) oddFactors += static_cast<long double>(factor);
    return 1e-15L * std::log2(static_cast<long double>(n)) + 4e-16L * oddFactors;
}

/// The general pass written down as plainly as it is published: one harmonic after the other, the turns by
/// which every fourth harmonic begins taken afresh. A transform of prime length is this and nothing else.
std::vector<double> plainPrimeTransform(const std::vector<double>& x) {
    const std::size_t n = x.size();
    std::vector<double> result(n);
    result[0] = x[0];
    for (std::size_t j = 1; 2 * j < n; ++j)
        result[0] += x[j] + x[n - j];
    const auto angle = [&](std::size_t l) {
        return static_cast<double>(l) * 6.283185307179586 / static_cast<double>(n);
    };
    double cosOfL = 1.0;
    double sinOfL = 0.0;
    const auto turn = [](double& c, double& s, double byCos, double bySin) {
        const double turned = byCos * c - bySin * s;
        s = byCos * s + bySin * c;
        c = turned;
    };
    for (std::size_t l = 1; 2 * l < n; ++l) {
        turn(cosOfL, sinOfL, std::cos(angle(1)), std::sin(angle(1)));
        if (l % 4 == 0) {
            cosOfL = std::cos(angle(l));
            sinOfL = std::sin(angle(l));
        }
        double c = cosOfL;
        double s = sinOfL;
        double re = x[0] + c * (x[1] + x[n - 1]);
        double im = s * (x[n - 1] - x[1]);
        for (std::size_t j = 2; 2 * j < n; ++j) {
            turn(c, s, cosOfL, sinOfL);
            re += c * (x[j] + x[n - j]);
            im += s * (x[n - j] - x[j]);
        }
        result[2 * l - 1] = re;
        result[2 * l] = im;
    }
    return result;
}

/// The laws below compare two transforms, or a transform with its input: each side brings its own error.
constexpr std::int32_t kLawLengths[] = {2,  3,  4,  5,   6,   7,   8,    12,   15,   16,   27,  30,
                                        49, 60, 64, 100, 121, 243, 1000, 1009, 1024, 2310, 4095};

} // namespace

TEST(FFTPackTest, StartsUnsizedAndOwnsItsTablesAlone) {
    const FFTPack pack;
    EXPECT_EQ(pack.getSize(), 0);
    EXPECT_EQ(pack.getFactorTable(), nullptr);
    EXPECT_EQ(pack.getWorkArray(), nullptr);
    EXPECT_TRUE(std::has_virtual_destructor_v<FFTPack>);
    EXPECT_FALSE(std::is_copy_constructible_v<FFTPack>);
    EXPECT_FALSE(std::is_copy_assignable_v<FFTPack>);
}

TEST(FFTPackTest, ConstructionAllocatesNothing) {
    const AllocationCounter counter;
    const FFTPack pack;
    EXPECT_EQ(counter.count(), 0u);
}

TEST(FFTPackTest, StoresTheFactorsInTheOrderOfTheTrials) {
    const struct {
        std::int32_t n;
        std::vector<std::int32_t> factors;
    } rows[] = {
        {.n = 2, .factors = {2}},
        {.n = 3, .factors = {3}},
        {.n = 4, .factors = {4}},
        {.n = 5, .factors = {5}},
        {.n = 6, .factors = {2, 3}},
        {.n = 7, .factors = {7}},
        {.n = 8, .factors = {2, 4}},
        {.n = 9, .factors = {3, 3}},
        {.n = 10, .factors = {2, 5}},
        {.n = 12, .factors = {4, 3}},
        {.n = 15, .factors = {3, 5}},
        {.n = 16, .factors = {4, 4}},
        {.n = 18, .factors = {2, 3, 3}},
        {.n = 24, .factors = {2, 4, 3}},
        {.n = 30, .factors = {2, 3, 5}},
        {.n = 32, .factors = {2, 4, 4}},
        {.n = 45, .factors = {3, 3, 5}},
        {.n = 49, .factors = {7, 7}},
        {.n = 60, .factors = {4, 3, 5}},
        {.n = 77, .factors = {7, 11}},
        {.n = 100, .factors = {4, 5, 5}},
        {.n = 120, .factors = {2, 4, 3, 5}},
        {.n = 143, .factors = {11, 13}},
        {.n = 225, .factors = {3, 3, 5, 5}},
        {.n = 1000, .factors = {2, 4, 5, 5, 5}},
        {.n = 1009, .factors = {1009}},
        {.n = 1024, .factors = {4, 4, 4, 4, 4}},
        {.n = 2048, .factors = {2, 4, 4, 4, 4, 4}},
        {.n = 6561, .factors = {3, 3, 3, 3, 3, 3, 3, 3}},
        {.n = 10007, .factors = {10007}},
        {.n = 65536, .factors = {4, 4, 4, 4, 4, 4, 4, 4}},
        {.n = 100000, .factors = {2, 4, 4, 5, 5, 5, 5, 5}},
    };
    for (const auto& row : rows) {
        FFTPack pack;
        pack.setSize(row.n);
        EXPECT_EQ(pack.getFactorTable()[0], row.n);
        EXPECT_EQ(pack.getFactorTable()[1], static_cast<std::int32_t>(row.factors.size())) << "n = " << row.n;
        EXPECT_EQ(factorsOf(pack), row.factors) << "n = " << row.n;
    }
}

TEST(FFTPackTest, FactorsOfEveryLengthMultiplyBackAndFitTheTable) {
    for (std::int32_t n = 2; n <= 4096; ++n) {
        FFTPack pack;
        pack.setSize(n);
        const auto room = static_cast<std::int32_t>(std::log10(n) / std::log10(2.0) + 2.0);
        EXPECT_LE(pack.getFactorTable()[1] + 2, room) << "n = " << n;
        std::int32_t product = 1;
        for (const std::int32_t factor : factorsOf(pack))
            product *= factor;
        EXPECT_EQ(product, n);
    }
}

TEST(FFTPackTest, LaysTheTwiddlesOutBranchByBranch) {
    // n = 24 has the factors 2, 4, 3. The 2 has one branch of width 12 at angles of 1/24 turn; the 4 has
    // three of width 3 at 2/24, 4/24 and 6/24; the 3 is the last and has none.
    const struct {
        std::size_t place;
        double twentyFourths;
    } pairs[] = {{0, 1}, {2, 2}, {4, 3}, {6, 4}, {8, 5}, {12, 2}, {15, 4}, {18, 6}};
    FFTPack pack;
    pack.setSize(24);
    const double* twiddles = pack.getWorkArray() + 24;
    for (const auto& pair : pairs) {
        // The angle is formed in two products, each rounded; the largest is pi/2.
        const Tolerance nearly = law(1e-15);
        const double angle = 2.0 * std::numbers::pi * pair.twentyFourths / 24.0;
        EXPECT_TRUE(agree(twiddles[pair.place], std::cos(angle), nearly)) << "place " << pair.place;
        EXPECT_TRUE(agree(twiddles[pair.place + 1], std::sin(angle), nearly)) << "place " << pair.place;
    }
}

TEST(FFTPackTest, TransformsTwoToSumAndDifference) {
    EXPECT_EQ(transformOf({3.0, 5.0}), (std::vector<double>{8.0, -2.0}));
}

TEST(FFTPackTest, TransformsFourAndThreeAsWorkedByHand) {
    // 1, 2, 4, 8: the sum 15; (1 - 4) + i (8 - 2); 1 - 2 + 4 - 8.
    EXPECT_EQ(transformOf({1.0, 2.0, 4.0, 8.0}), (std::vector<double>{15.0, -3.0, 6.0, -5.0}));
    // 1, 2, 4: the sum 7; 1 - (2 + 4)/2; (4 - 2) * sqrt(3)/2.
    const std::vector<double> three = transformOf({1.0, 2.0, 4.0});
    EXPECT_TRUE(agree(three[0], 7.0, same));
    EXPECT_TRUE(agree(three[1], -2.0, withinRel(1e-15)));
    EXPECT_TRUE(agree(three[2], std::sqrt(3.0), withinRel(1e-15)));
}

TEST(FFTPackTest, PutsRealAndImaginaryPartsInHalfComplexOrder) {
    // exp(-2*pi*i*k/n): the spectrum of an impulse one sample late shows every place of both layouts.
    for (const std::int32_t n : {9, 10, 11, 12}) {
        std::vector<double> x(static_cast<std::size_t>(n));
        x[1] = 1.0;
        const std::vector<double> got = transformOf(x);
        EXPECT_TRUE(agree(got[0], 1.0, same));
        for (std::int32_t k = 1; 2 * k <= n; ++k) {
            const double angle = 2.0 * std::numbers::pi * k / n;
            const auto place = static_cast<std::size_t>(2 * k);
            EXPECT_TRUE(agree(got[place - 1], std::cos(angle), withinRel(1e-15)))
                << n << ": Re X[" << k << "]";
            if (2 * k == n) continue;
            EXPECT_TRUE(agree(got[place], -std::sin(angle), withinRel(1e-15))) << n << ": Im X[" << k << "]";
        }
    }
}

TEST(FFTPackTest, PrimeLengthsAgreeWithThePlainPassToTheBit) {
    for (const std::size_t n :
         {3UL, 5UL, 7UL, 11UL, 13UL, 17UL, 19UL, 23UL, 29UL, 31UL, 37UL, 41UL, 101UL, 1009UL})
        EXPECT_EQ(transformOf(noise(n, n)), plainPrimeTransform(noise(n, n))) << "n = " << n;
}

TEST(FFTPackTest, AgreesWithTheDefinitionForEveryLengthTo2048) {
    for (std::int32_t n = 1; n <= 2048; ++n) {
        const std::vector<double> x = noise(static_cast<std::size_t>(n), static_cast<std::uint64_t>(n));
        EXPECT_LE(relativeError(transformOf(x), directTransform(x)), bound(n)) << "n = " << n;
    }
}

TEST(FFTPackTest, AgreesWithTheDefinitionForLongSequences) {
    for (const std::int32_t n : {4096, 6561, 10007}) {
        const std::vector<double> x = noise(static_cast<std::size_t>(n), static_cast<std::uint64_t>(n));
        EXPECT_LE(relativeError(transformOf(x), directTransform(x)), bound(n)) << "n = " << n;
    }
    const struct {
        std::size_t rows;
        std::size_t columns;
    } longest[] = {{256, 256}, {250, 400}};
    for (const auto& split : longest) {
        const std::size_t n = split.rows * split.columns;
        const std::vector<double> x = noise(n, n);
        EXPECT_LE(relativeError(transformOf(x), directTransform(x, split.rows, split.columns)),
                  bound(static_cast<std::int32_t>(n)))
            << "n = " << n;
    }
}

TEST(DirectTransformTest, InTwoSummationsIsTheOneSummation) {
    const std::vector<double> x = noise(60, 1);
    const std::vector<long double> whole = directTransform(x);
    for (const std::size_t rows : {4UL, 5UL, 6UL, 15UL}) {
        const std::vector<long double> split = directTransform(x, rows, 60 / rows);
        for (std::size_t i = 0; i < whole.size(); ++i)
            EXPECT_LE(std::fabs(split[i] - whole[i]), 1e-17L) << rows << " rows, place " << i;
    }
}

TEST(FFTPackTest, IsLinear) {
    for (const std::int32_t n : kLawLengths) {
        const std::vector<double> x = noise(static_cast<std::size_t>(n), 1);
        const std::vector<double> y = noise(static_cast<std::size_t>(n), 2);
        std::vector<double> sum(x.size());
        for (std::size_t i = 0; i < sum.size(); ++i)
            sum[i] = 0.75 * x[i] - 3.0 * y[i];
        const std::vector<double> ofX = transformOf(x);
        const std::vector<double> ofY = transformOf(y);
        std::vector<double> wanted(sum.size());
        for (std::size_t i = 0; i < sum.size(); ++i)
            wanted[i] = 0.75 * ofX[i] - 3.0 * ofY[i];
        // Three transforms; the terms may cancel to about half the sum's size.
        EXPECT_LE(relativeError(transformOf(sum), wanted), 6.0L * bound(n)) << "n = " << n;
    }
}

TEST(FFTPackTest, TurnsEachHarmonicByItsShareWhenTheInputIsShifted) {
    for (const std::int32_t n : kLawLengths) {
        const auto length = static_cast<std::size_t>(n);
        const std::vector<double> x = noise(length, 3);
        std::vector<double> later(length);
        for (std::size_t i = 0; i < length; ++i)
            later[(i + 1) % length] = x[i];
        std::vector<double> wanted = transformOf(x);
        for (std::size_t k = 1; 2 * k <= length; ++k) {
            if (2 * k == length) {
                wanted[length - 1] = -wanted[length - 1];
                continue;
            }
            const double angle = 2.0 * std::numbers::pi * static_cast<double>(k) / n;
            const double re = wanted[2 * k - 1];
            const double im = wanted[2 * k];
            wanted[2 * k - 1] = re * std::cos(angle) + im * std::sin(angle);
            wanted[2 * k] = im * std::cos(angle) - re * std::sin(angle);
        }
        // Two transforms and one turn, whose angle carries a few roundings.
        EXPECT_LE(relativeError(transformOf(later), wanted), 2.0L * bound(n) + 1e-15L) << "n = " << n;
    }
}

TEST(FFTPackTest, KeepsTheEnergyAsParsevalSays) {
    for (const std::int32_t n : kLawLengths) {
        const std::vector<double> x = noise(static_cast<std::size_t>(n), 4);
        std::vector<double> spectrum = transformOf(x);
        // All but the real ends stand for a harmonic and its conjugate.
        const std::size_t end = n % 2 == 0 ? spectrum.size() - 1 : spectrum.size();
        for (std::size_t i = 1; i < end; ++i)
            spectrum[i] *= std::numbers::sqrt2;
        const long double ratio = norm(spectrum) / (std::sqrt(static_cast<long double>(n)) * norm(x));
        EXPECT_LE(std::fabs(ratio - 1.0L), bound(n) + 1e-15L) << "n = " << n;
    }
}

TEST(FFTPackTest, GivesEvenInputNoImaginaryAndOddInputNoRealPart) {
    for (const std::int32_t n : kLawLengths) {
        const auto length = static_cast<std::size_t>(n);
        const std::vector<double> x = noise(length, 5);
        std::vector<double> even(length);
        std::vector<double> odd(length);
        for (std::size_t i = 0; i < length; ++i) {
            even[i] = x[i] + x[(length - i) % length];
            odd[i] = x[i] - x[(length - i) % length];
        }
        const std::vector<double> ofEven = transformOf(even);
        const std::vector<double> ofOdd = transformOf(odd);
        for (std::size_t k = 1; 2 * k < length; ++k) {
            EXPECT_LE(std::fabs(ofEven[2 * k]), bound(n) * norm(ofEven)) << "n = " << n << ", k = " << k;
            EXPECT_LE(std::fabs(ofOdd[2 * k - 1]), bound(n) * norm(ofOdd)) << "n = " << n << ", k = " << k;
        }
        EXPECT_LE(std::fabs(ofOdd[0]), bound(n) * norm(ofOdd)) << "n = " << n;
    }
}

TEST(FFTPackTest, LeavesASingleValueAlone) {
    FFTPack pack;
    pack.setSize(1);
    EXPECT_EQ(pack.getSize(), 1);
    EXPECT_NE(pack.getFactorTable(), nullptr);
    EXPECT_NE(pack.getWorkArray(), nullptr);
    double value = -0.0;
    pack.forwardTransform(&value);
    EXPECT_TRUE(agree(value, -0.0, same));
}

TEST(FFTPackTest, CarriesNonFiniteValuesIntoEverySum) {
    for (const std::int32_t n : {2, 3, 4, 8, 15, 22}) {
        std::vector<double> x(static_cast<std::size_t>(n), 1.0);
        x.back() = std::numeric_limits<double>::quiet_NaN();
        const std::vector<double> got = transformOf(x);
        EXPECT_TRUE(std::isnan(got.front())) << "n = " << n;
        EXPECT_TRUE(std::isnan(got.back())) << "n = " << n;
        x.back() = std::numeric_limits<double>::infinity();
        EXPECT_TRUE(agree(transformOf(x).front(), x.back(), same)) << "n = " << n;
    }
}

TEST(FFTPackTest, RefusesAWorkArrayBeyond32Bits) {
    // 8 * (3 * 178956966 + 15) bytes are the first beyond 2^32 - 1.
    FFTPack pack;
    pack.setSize(8);
    EXPECT_THROW(pack.setSize(178956966), std::bad_alloc);
    EXPECT_THROW(pack.setSize(std::numeric_limits<std::int32_t>::max()), std::bad_alloc);
    EXPECT_EQ(pack.getSize(), 0);
    std::vector<double> x{1.0, 2.0, 4.0, 8.0};
    pack.forwardTransform(x.data());
    EXPECT_EQ(x, (std::vector<double>{1.0, 2.0, 4.0, 8.0}));
    pack.setSize(4);
    pack.forwardTransform(x.data());
    EXPECT_EQ(x, (std::vector<double>{15.0, -3.0, 6.0, -5.0}));
}

TEST(FFTPackTest, KeepsBothTablesWhereTheyAreForTheSizeInForce) {
    FFTPack pack;
    pack.setSize(12);
    const auto* factors = pack.getFactorTable();
    const auto* work = pack.getWorkArray();
    const AllocationCounter counter;
    pack.setSize(12);
    EXPECT_EQ(pack.getFactorTable(), factors);
    EXPECT_EQ(pack.getWorkArray(), work);
    EXPECT_EQ(counter.count(), 0u);
}

TEST(FFTPackTest, AllocatesNothingInATransform) {
    for (const std::int32_t n : kLawLengths) {
        FFTPack pack;
        pack.setSize(n);
        std::vector<double> x = noise(static_cast<std::size_t>(n), 6);
        const AllocationCounter counter;
        pack.forwardTransform(x.data());
        EXPECT_EQ(counter.count(), 0u) << "n = " << n;
    }
}

TEST(FFTPackTest, RemembersNothingButThePlan) {
    FFTPack used;
    for (const std::int32_t n : kLawLengths) {
        const std::vector<double> x = noise(static_cast<std::size_t>(n), 7);
        const std::vector<double> fresh = transformOf(x);
        used.setSize(n);
        for (int round = 0; round < 3; ++round) {
            std::vector<double> again = x;
            used.forwardTransform(again.data());
            EXPECT_EQ(again, fresh) << "n = " << n << ", round " << round;
        }
    }
}
