// SPDX-License-Identifier: MIT
#include "spectral/FFTPack.h"

#include "spectral/SpectralKernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

// This file exceeds the usual length: a pass is only understood beside the other passes, which share one
// layout.
//
// Every pass reads the sequence as factor x groups rows of `width` doubles and writes groups x factor rows:
//
//     element i of row (k, j):   in[i + width * (k + groups * j)]   ->   out[i + width * (j + factor * k)]
//
// j counts the factor's branches, k the groups, and i runs fast. A row is one partial spectrum in
// half-complex order: its real sum at i = 0, then pairs (real at odd i, imaginary at the even i after it)
// and, for an even width, the real term at half the rate at i = width - 1. A pass joins the `factor` rows of
// a group into one spectrum of factor * width doubles; a result of negative frequency goes, conjugated, to
// the mirrored place in the row before its own. Branch j's twiddles are cos and sin of the pair's angle, at
// twiddles[i - 1] and twiddles[i] of its own block of `width`.

namespace {

using namespace Spectral;
using Index = std::ptrdiff_t;

constexpr double kTwoPi = 6.283185307179586;
/// cos(pi/4), by which a radix-4 pass turns the terms at half the rate.
constexpr double kHalfRoot = 0.7071067811865476;
/// What is tried first; after these come the odd numbers from 7 on.
constexpr std::array<std::int32_t, 4> kFirstTrials{4, 2, 3, 5};

/// A complex number in one register: real, imaginary.
using Pair = double __attribute__((vector_size(2 * sizeof(double))));

inline Pair load(const double* from) {
    Pair pair;
    std::memcpy(&pair, from, sizeof pair);
    return pair;
}

inline void store(double* to, Pair pair) {
    std::memcpy(to, &pair, sizeof pair);
}

/// The pair at `from`, turned back by its twiddle: the product with (cos, -sin).
inline Pair turned(const double* from, const double* twiddle) {
    const Pair pair = load(from);
    const Pair swapped = __builtin_shufflevector(pair, pair, 1, 0);
    return Pair{twiddle[0], twiddle[0]} * pair + Pair{twiddle[1], -twiddle[1]} * swapped;
}

/// The conjugate of a - b. Like its neighbour it takes both differences and picks, which spares a change of
/// sign.
inline Pair conjugateDifference(Pair a, Pair b) {
    return __builtin_shufflevector(a - b, b - a, 0, 3);
}

/// (a - b) times -i.
inline Pair turnedDifference(Pair a, Pair b) {
    return __builtin_shufflevector(a - b, b - a, 1, 2);
}

/// Divides `n` into factors and gives their number. A 2 that isn't the first moves to the front, as
/// published.
std::int32_t factorise(std::int32_t n, std::int32_t* factors) {
    std::int32_t count = 0;
    std::int32_t trial = kFirstTrials[0];
    for (std::size_t next = 1; n != 1; ++next) {
        for (; n % trial == 0; n /= trial) {
            factors[count++] = trial;
            if (trial != 2 || count == 1) continue;
            std::memmove(factors + 1, factors, static_cast<std::size_t>(count - 1) * sizeof *factors);
            factors[0] = 2;
        }
        trial = next < kFirstTrials.size() ? kFirstTrials[next] : trial + 2;
    }
    return count;
}

/// Fills the twiddles of every factor but the last: the last one's rows are one double wide and need none.
void fillTwiddles(std::int32_t n, const std::int32_t* factors, std::int32_t count, double* block) {
    const double unit = kTwoPi / n;
    std::int32_t product = 1;
    for (std::int32_t f = 0; f + 1 < count; ++f) {
        const std::int32_t width = n / (product * factors[f]);
        for (std::int32_t j = 1; j < factors[f]; ++j, block += width) {
            const double branch = static_cast<double>(j * product) * unit;
            for (std::int32_t fi = 1; 2 * fi < width; ++fi) {
                const double angle = fi * branch;
                block[2 * fi - 2] = std::cos(angle);
                block[2 * fi - 1] = std::sin(angle);
            }
        }
        product *= factors[f];
    }
}

/// Joins rows in twos.
void radix2(Index width, Index groups, const double* in, double* out, const double* twiddles) {
    for (Index k = 0; k < groups; ++k) {
        const double* a = in + width * k;
        const double* b = a + width * groups;
        double* sum = out + width * 2 * k;
        double* difference = sum + width;
        const double a0 = a[0];
        const double b0 = b[0];
        sum[0] = a0 + b0;
        difference[width - 1] = a0 - b0;
        for (Index i = 1; i + 1 < width; i += 2) {
            const Index mirror = width - 2 - i;
            const Pair first = load(a + i);
            const Pair second = turned(b + i, twiddles + i - 1);
            store(sum + i, first + second);
            store(difference + mirror, conjugateDifference(first, second));
        }
        if (width % 2 != 0) continue;
        difference[0] = -b[width - 1];
        sum[width - 1] = a[width - 1];
    }
}

/// Joins rows of one double in fours: the first pass over the data, where the groups lie side by side.
void radix4Narrow(Index groups, const double* __restrict in, double* __restrict out) {
    for (Index k = 0; k < groups; ++k) {
        const double a = in[k];
        const double b = in[k + groups];
        const double c = in[k + 2 * groups];
        const double d = in[k + 3 * groups];
        const double odd = b + d;
        const double even = a + c;
        out[4 * k] = odd + even;
        out[4 * k + 1] = a - c;
        out[4 * k + 2] = d - b;
        out[4 * k + 3] = even - odd;
    }
}

/// Joins rows in fours.
void radix4(Index width, Index groups, const double* __restrict in, double* __restrict out,
            const double* __restrict twiddles) {
    if (width == 1) return radix4Narrow(groups, in, out);
    const double* twiddles2 = twiddles + width;
    const double* twiddles3 = twiddles2 + width;
    for (Index k = 0; k < groups; ++k) {
        const double* a = in + width * k;
        const double* b = a + width * groups;
        const double* c = b + width * groups;
        const double* d = c + width * groups;
        double* out0 = out + width * 4 * k;
        double* out1 = out0 + width;
        double* out2 = out1 + width;
        double* out3 = out2 + width;
        const double realOdd = b[0] + d[0];
        const double realEven = a[0] + c[0];
        out0[0] = realOdd + realEven;
        out1[width - 1] = a[0] - c[0];
        out2[0] = d[0] - b[0];
        out3[width - 1] = realEven - realOdd;
        for (Index i = 1; i + 1 < width; i += 2) {
            const Index mirror = width - 2 - i;
            const Pair first = load(a + i);
            const Pair second = turned(b + i, twiddles + i - 1);
            const Pair third = turned(c + i, twiddles2 + i - 1);
            const Pair fourth = turned(d + i, twiddles3 + i - 1);
            const Pair odd = second + fourth;
            const Pair even = first + third;
            const Pair oddRest = turnedDifference(second, fourth);
            const Pair evenRest = first - third;
            store(out0 + i, odd + even);
            store(out1 + mirror, conjugateDifference(evenRest, oddRest));
            store(out2 + i, oddRest + evenRest);
            store(out3 + mirror, conjugateDifference(even, odd));
        }
        if (width % 2 != 0) continue;
        const Index half = width - 1;
        const double halfIm = -kHalfRoot * (b[half] + d[half]);
        const double halfRe = kHalfRoot * (b[half] - d[half]);
        out0[half] = halfRe + a[half];
        out1[0] = halfIm - c[half];
        out2[half] = a[half] - halfRe;
        out3[0] = halfIm + c[half];
    }
}

/// The first half of a general pass on rows wider than one, in place: turns the branches, then replaces each
/// two of them, j and factor - j, by their sum and by their difference a quarter turn on.
void foldBranches(Index width, Index groups, Index factor, double* data, const double* twiddles) {
    const Index branch = width * groups;
    for (Index j = 1; 2 * j < factor; ++j) {
        double* __restrict lower = data + branch * j;
        double* __restrict upper = data + branch * (factor - j);
        const double* lowerTwiddles = twiddles + width * (j - 1);
        const double* upperTwiddles = twiddles + width * (factor - j - 1);
        for (Index k = 0; k < groups; ++k, lower += width, upper += width) {
            const double first = lower[0];
            lower[0] = first + upper[0];
            upper[0] = upper[0] - first;
            for (Index i = 1; i + 1 < width; i += 2) {
                const Pair a = turned(lower + i, lowerTwiddles + i - 1);
                const Pair b = turned(upper + i, upperTwiddles + i - 1);
                store(lower + i, a + b);
                store(upper + i, turnedDifference(a, b));
            }
        }
    }
}

/// The same for rows of one double, which have nothing to turn, from `in` to `out`.
void foldNarrow(Index groups, Index factor, const double* __restrict in, double* __restrict out) {
    for (Index k = 0; k < groups; ++k)
        out[k] = in[k];
    for (Index j = 1; 2 * j < factor; ++j) {
        const Index lower = groups * j;
        const Index upper = groups * (factor - j);
        for (Index k = 0; k < groups; ++k) {
            out[lower + k] = in[lower + k] + in[upper + k];
            out[upper + k] = in[upper + k] - in[lower + k];
        }
    }
}

/// A rotation by a fixed angle, and how far repeated turns by it have got.
struct Rotor {
    double unitCos;
    double unitSin;
    double cos = 1.0;
    double sin = 0.0;

    void turn() {
        const double turnedCos = unitCos * cos - unitSin * sin;
        sin = unitCos * sin + unitSin * cos;
        cos = turnedCos;
    }
};

/// The turns by whole harmonics of a general pass. As published, each harmonic is the one before it, turned
/// by 2*pi/factor; but every fourth is taken afresh, since the terms of a harmonic repeat its error, and
/// turned all the way a large factor would lose its square in roundings.
class Harmonics {
public:
    explicit Harmonics(Index ofFactor) : factor(ofFactor), turning{cosine(1), sine(1)} {}

    /// A rotor by the next harmonic, where its first term stands.
    Rotor next() {
        ++harmonic;
        turning.turn();
        if (harmonic % 4 == 0) {
            turning.cos = cosine(harmonic);
            turning.sin = sine(harmonic);
        }
        return {turning.cos, turning.sin, turning.cos, turning.sin};
    }

private:
    double angle(Index l) const { return static_cast<double>(l) * kTwoPi / static_cast<double>(factor); }
    double cosine(Index l) const { return std::cos(angle(l)); }
    double sine(Index l) const { return std::sin(angle(l)); }

    Index factor;
    Index harmonic = 0;
    Rotor turning;
};

/// `transformBranches` for a factor of 2 * kTerms + 1: the same sums in the same order, so few that they stay
/// in registers.
template <Index kTerms>
void transformFewBranches(Index branch, const double* __restrict folded, double* __restrict out) {
    constexpr Index kFactor = 2 * kTerms + 1;
    double cosines[kTerms][kTerms];
    double sines[kTerms][kTerms];
    Harmonics harmonics(kFactor);
    for (Index l = 0; l < kTerms; ++l) {
        Rotor term = harmonics.next();
        for (Index j = 0; j < kTerms; ++j, term.turn()) {
            cosines[l][j] = term.cos;
            sines[l][j] = term.sin;
        }
    }
    for (Index i = 0; i < branch; ++i) {
        const double first = folded[i];
        double sum = first;
        for (Index j = 0; j < kTerms; ++j)
            sum += folded[branch * (j + 1) + i];
        out[i] = sum;
        for (Index l = 0; l < kTerms; ++l) {
            double re = first + cosines[l][0] * folded[branch + i];
            double im = sines[l][0] * folded[branch * (kFactor - 1) + i];
            for (Index j = 1; j < kTerms; ++j) {
                re += cosines[l][j] * folded[branch * (j + 1) + i];
                im += sines[l][j] * folded[branch * (kFactor - 1 - j) + i];
            }
            out[branch * (l + 1) + i] = re;
            out[branch * (kFactor - 1 - l) + i] = im;
        }
    }
}

/// The core of a general pass: the real transform of length `factor` across the folded branches, eight
/// harmonics abreast. Order matters: each sum grows by rising j.
void transformBranches(Index branch, Index factor, const double* __restrict folded, double* __restrict out) {
    if (factor == 3) return transformFewBranches<1>(branch, folded, out);
    if (factor == 5) return transformFewBranches<2>(branch, folded, out);
    if (factor == 7) return transformFewBranches<3>(branch, folded, out);
    const TransformHarmonics transformHarmonics = spectralKernels().transformHarmonics;
    const Index harmonicCount = (factor - 1) / 2;
    Harmonics harmonics(factor);
    Turns turns{};
    for (Index first = 1; first <= harmonicCount; first += kHarmonicsAbreast) {
        const Index count = std::min(kHarmonicsAbreast, harmonicCount - first + 1);
        for (Index l = 0; l < count; ++l) {
            const Rotor turn = harmonics.next();
            turns.cos[l] = turn.cos;
            turns.sin[l] = turn.sin;
        }
        transformHarmonics({branch, factor, folded, out}, turns, first, count);
    }
    for (Index i = 0; i < branch; ++i)
        out[i] = folded[i];
    for (Index j = 1; 2 * j < factor; ++j)
        for (Index i = 0; i < branch; ++i)
            out[i] += folded[branch * j + i];
}

/// The last part of a general pass: lays the harmonics of each group out as one spectrum.
void unfold(Index width, Index groups, Index factor, const double* __restrict in, double* __restrict out) {
    const Index branch = width * groups;
    for (Index k = 0; k < groups; ++k)
        for (Index i = 0; i < width; ++i)
            out[width * factor * k + i] = in[width * k + i];
    for (Index j = 1; 2 * j < factor; ++j) {
        const double* __restrict re = in + branch * j;
        const double* __restrict im = in + branch * (factor - j);
        double* __restrict before = out + width * (2 * j - 1);
        for (Index k = 0; k < groups; ++k, re += width, im += width, before += width * factor) {
            double* own = before + width;
            before[width - 1] = re[0];
            own[0] = im[0];
            for (Index i = 1; i + 1 < width; i += 2) {
                const Index mirror = width - 2 - i;
                const Pair a = load(re + i);
                const Pair b = load(im + i);
                store(own + i, a + b);
                store(before + mirror, conjugateDifference(a, b));
            }
        }
    }
}
/// The same for rows of one double: a transposition.
void unfoldNarrow(Index groups, Index factor, const double* __restrict in, double* __restrict out) {
    for (Index k = 0; k < groups; ++k) {
        double* __restrict spectrum = out + factor * k;
        spectrum[0] = in[k];
        for (Index j = 1; 2 * j < factor; ++j) {
            spectrum[2 * j - 1] = in[groups * j + k];
            spectrum[2 * j] = in[groups * (factor - j) + k];
        }
    }
}

/// Joins rows by any other factor. Rows of one double are folded into the other array, so their result ends
/// there; wider rows are folded in place, so theirs comes back to where the pass began.
void radixAny(Index width, Index groups, Index factor, double* in, double* other, const double* twiddles) {
    if (width == 1) {
        foldNarrow(groups, factor, in, other);
        std::swap(in, other);
    } else {
        foldBranches(width, groups, factor, in, twiddles);
    }
    transformBranches(width * groups, factor, in, other);
    if (width == 1) return unfoldNarrow(groups, factor, other, in);
    unfold(width, groups, factor, other, in);
}
} // namespace

FFTPack::~FFTPack() = default;

void FFTPack::setSize(std::int32_t n) {
    if (n == size) return;
    size = 0;
    workArray.reset();
    factorTable.reset();
    const std::int64_t doubles = 3 * static_cast<std::int64_t>(n) + 15;
    if (doubles * static_cast<std::int64_t>(sizeof(double)) > std::numeric_limits<std::uint32_t>::max())
        throw std::bad_alloc();
    const auto entries = static_cast<std::size_t>(std::log10(n) / std::log10(2.0) + 2.0);
    workArray = std::make_unique_for_overwrite<double[]>(static_cast<std::size_t>(doubles));
    factorTable = std::make_unique_for_overwrite<std::int32_t[]>(entries);
    size = n;
    if (n == 1) return;
    factorTable[0] = n;
    factorTable[1] = factorise(n, &factorTable[2]);
    fillTwiddles(n, &factorTable[2], factorTable[1], &workArray[static_cast<std::size_t>(n)]);
}

void FFTPack::forwardTransform(double* data) {
    if (size <= 1) return;
    double* current = data;
    double* other = workArray.get();
    // Behind the last twiddle, of which there are n - 1 in all: each pass goes back by its own.
    const double* twiddles = workArray.get() + size + (size - 1);
    Index outer = size;
    const std::int32_t* factors = &factorTable[2];
    for (Index f = factorTable[1]; f-- > 0;) {
        const Index factor = factors[f];
        const Index groups = outer / factor;
        const Index width = size / outer;
        twiddles -= (factor - 1) * width;
        outer = groups;
        const bool isSwapped = factor == 2 || factor == 4 || width == 1;
        if (factor == 4)
            radix4(width, groups, current, other, twiddles);
        else if (factor == 2)
            radix2(width, groups, current, other, twiddles);
        else
            radixAny(width, groups, factor, current, other, twiddles);
        if (isSwapped) std::swap(current, other);
    }
    if (current != data) std::memcpy(data, current, static_cast<std::size_t>(size) * sizeof(double));
}
