// SPDX-License-Identifier: MIT
// Compiled once for each kind of processor: processor/Kernels.h tells what may stand here.
#include "design/CascadeKernels.h"
#include "design/SectionRow.h"
#include "processor/Lanes.h"

namespace Design::VELMARIND_KERNELS {

namespace {

/// The first `count` lanes, the others 0: the last one may be missing.
template <int width, int count>
[[gnu::always_inline]] inline Lanes<width> loadFirst(const double* from) {
    if constexpr (count == width)
        return loadLanes<width>(from);
    else if constexpr (width == 4)
        return Lanes<width>{from[0], from[1], from[2], 0.0};
    else
        return Lanes<width>{from[0], 0.0};
}

template <int width, int count>
[[gnu::always_inline]] inline void storeFirst(double* to, Lanes<width> lanes) {
    if constexpr (count == width) {
        storeLanes<width>(to, lanes);
    } else {
        for (int i = 0; i < width - 1; ++i)
            to[i] = lanes[i];
    }
}

/// The sections of one element wait for each other, those of its neighbours don't: several run at once.
template <int elements>
[[gnu::always_inline]] inline void stepGroup(const double* __restrict c, int sections, bool complement,
                                             Octet* states, int firstLane, const double* in, double* out) {
    // Wide registers pay only where elements fill them.
    constexpr int kWidth = elements >= 8 ? kWidest : elements >= 2 ? 2 : 1;
    constexpr int kCount = (elements + kWidth - 1) / kWidth;
    constexpr int kLast = kCount - 1;
    constexpr int kInLast = elements - kLast * kWidth;

    Lanes<kWidth> u[kCount];
    for (int p = 0; p < kLast; ++p)
        u[p] = loadLanes<kWidth>(in + p * kWidth);
    u[kLast] = loadFirst<kWidth, kInLast>(in + kLast * kWidth);
    for (int k = 0; k < sections; ++k, ++c, states += 2) {
        double* const delayed1 = states[0].lanes + firstLane;
        double* const delayed2 = states[1].lanes + firstLane;
        for (int p = 0; p < kCount; ++p) {
            const Lanes<kWidth> s1 = loadLanes<kWidth>(delayed1 + p * kWidth);
            const Lanes<kWidth> s2 = loadLanes<kWidth>(delayed2 + p * kWidth);
            // Order matters: each lane does the sums of its element in the order written.
            const Lanes<kWidth> w = u[p] + c[kA1 * sections] * s1 + c[kA2 * sections] * s2;
            u[p] = (c[kB1 * sections] * s1 + w + c[kB2 * sections] * s2) * c[kGain * sections];
            storeLanes<kWidth>(delayed2 + p * kWidth, s1);
            storeLanes<kWidth>(delayed1 + p * kWidth, w);
        }
    }
    if (complement) {
        for (int p = 0; p < kLast; ++p)
            u[p] = loadLanes<kWidth>(in + p * kWidth) - u[p];
        u[kLast] = loadFirst<kWidth, kInLast>(in + kLast * kWidth) - u[kLast];
    }
    for (int p = 0; p < kLast; ++p)
        storeLanes<kWidth>(out + p * kWidth, u[p]);
    storeFirst<kWidth, kInLast>(out + kLast * kWidth, u[kLast]);
}

template <int fixedSections>
void stepCascade(const double* __restrict coefficients, Octet* states, CascadeShape shape, const double* in,
                 double* out, std::ptrdiff_t count) {
    const int sections = fixedSections > 0 ? fixedSections : shape.sections;
    const bool complement = shape.isComplement;
    for (; count >= 8; count -= 8, in += 8, out += 8, states += 2 * sections)
        stepGroup<8>(coefficients, sections, complement, states, 0, in, out);
    int firstLane = 0;
    if (count >= 4) {
        stepGroup<4>(coefficients, sections, complement, states, 0, in, out);
        count -= 4;
        in += 4;
        out += 4;
        firstLane = 4;
    }
    if (count == 3)
        stepGroup<3>(coefficients, sections, complement, states, firstLane, in, out);
    else if (count == 2)
        stepGroup<2>(coefficients, sections, complement, states, firstLane, in, out);
    else if (count == 1)
        stepGroup<1>(coefficients, sections, complement, states, firstLane, in, out);
}

/// Rows of one group: its delayed values stay where they are at hand, and so do coefficients, until the last
/// row is done. A row waits for the one before it, so even three elements are better off in one wide register
/// than in two.
template <int elements, int sections>
[[gnu::always_inline]] inline void stepRowsOfGroup(const double* __restrict c, bool complement, Octet* states,
                                                   int firstLane, const double* in, double* out,
                                                   std::ptrdiff_t stride, std::ptrdiff_t rows) {
    constexpr int kWidth = elements >= 3 ? kWidest : elements;
    constexpr int kCount = (elements + kWidth - 1) / kWidth;
    constexpr int kLast = kCount - 1;
    constexpr int kInLast = elements - kLast * kWidth;

    Lanes<kWidth> s1[sections][kCount];
    Lanes<kWidth> s2[sections][kCount];
    for (int k = 0; k < sections; ++k)
        for (int p = 0; p < kCount; ++p) {
            s1[k][p] = loadLanes<kWidth>(states[2 * k].lanes + firstLane + p * kWidth);
            s2[k][p] = loadLanes<kWidth>(states[2 * k + 1].lanes + firstLane + p * kWidth);
        }
    for (; rows > 0; --rows, in += stride, out += stride) {
        Lanes<kWidth> x[kCount];
        for (int p = 0; p < kLast; ++p)
            x[p] = loadLanes<kWidth>(in + p * kWidth);
        x[kLast] = loadFirst<kWidth, kInLast>(in + kLast * kWidth);
        Lanes<kWidth> u[kCount];
        for (int p = 0; p < kCount; ++p)
            u[p] = x[p];
        for (int k = 0; k < sections; ++k)
            for (int p = 0; p < kCount; ++p) {
                // Order matters: as in `stepGroup`.
                const Lanes<kWidth> w =
                    u[p] + c[kA1 * sections + k] * s1[k][p] + c[kA2 * sections + k] * s2[k][p];
                u[p] = (c[kB1 * sections + k] * s1[k][p] + w + c[kB2 * sections + k] * s2[k][p]) *
                       c[kGain * sections + k];
                s2[k][p] = s1[k][p];
                s1[k][p] = w;
            }
        if (complement)
            for (int p = 0; p < kCount; ++p)
                u[p] = x[p] - u[p];
        for (int p = 0; p < kLast; ++p)
            storeLanes<kWidth>(out + p * kWidth, u[p]);
        storeFirst<kWidth, kInLast>(out + kLast * kWidth, u[kLast]);
    }
    for (int k = 0; k < sections; ++k)
        for (int p = 0; p < kCount; ++p) {
            storeLanes<kWidth>(states[2 * k].lanes + firstLane + p * kWidth, s1[k][p]);
            storeLanes<kWidth>(states[2 * k + 1].lanes + firstLane + p * kWidth, s2[k][p]);
        }
}

/// Wide rows go one by one: memory is read and written from begin to end then, and not group by group in
/// strides, and one row alone keeps the processor busy.
template <int sections>
[[gnu::always_inline]] inline void stepWideRows(const double* __restrict c, Octet* states, CascadeShape shape,
                                                const double* in, double* out, std::ptrdiff_t count,
                                                std::ptrdiff_t rows) {
    for (; rows > 0; --rows, in += count, out += count)
        stepCascade<sections>(c, states, shape, in, out, count);
}

template <int sections>
void stepCascadeRows(const double* __restrict c, Octet* states, CascadeShape shape, const double* in,
                     double* out, std::ptrdiff_t count, std::ptrdiff_t rows) {
    if (count > 2 * kOctetLanes) return stepWideRows<sections>(c, states, shape, in, out, count, rows);
    const bool complement = shape.isComplement;
    const std::ptrdiff_t stride = count;
    for (; count >= 8; count -= 8, in += 8, out += 8, states += 2 * sections)
        stepRowsOfGroup<8, sections>(c, complement, states, 0, in, out, stride, rows);
    int firstLane = 0;
    if (count >= 4) {
        stepRowsOfGroup<4, sections>(c, complement, states, 0, in, out, stride, rows);
        count -= 4;
        in += 4;
        out += 4;
        firstLane = 4;
    }
    if (count == 3)
        stepRowsOfGroup<3, sections>(c, complement, states, firstLane, in, out, stride, rows);
    else if (count == 2)
        stepRowsOfGroup<2, sections>(c, complement, states, firstLane, in, out, stride, rows);
    else if (count == 1)
        stepRowsOfGroup<1, sections>(c, complement, states, firstLane, in, out, stride, rows);
}

/// Of any number of sections.
template <>
void stepCascadeRows<0>(const double* __restrict c, Octet* states, CascadeShape shape, const double* in,
                        double* out, std::ptrdiff_t count, std::ptrdiff_t rows) {
    stepWideRows<0>(c, states, shape, in, out, count, rows);
}

/// Steps as many neighbouring elements as `width`.
template <int width, Heard heard>
[[gnu::always_inline]] inline void stepMovingLanes(double a1, double gain, double* x1, double* y1,
                                                   const double* in, double* out) {
    const Lanes<width> u = loadLanes<width>(in);
    // Order matters: the feedback, then the gain times the sum of both inputs.
    const Lanes<width> y = a1 * loadLanes<width>(y1) + gain * (loadLanes<width>(x1) + u);
    storeLanes<width>(x1, u);
    storeLanes<width>(y1, y);
    if constexpr (heard != Heard::Not) storeLanes<width>(out, heard == Heard::Complement ? u - y : y);
}

template <Heard heard>
void stepMoving(double a1, double gain, Octet* delayedIn, Octet* delayedOut, const double* in, double* out,
                std::ptrdiff_t count) {
    double* const x1 = delayedIn->lanes;
    double* const y1 = delayedOut->lanes;
    std::ptrdiff_t i = 0;
    for (; i + 2 * kWidest <= count; i += 2 * kWidest) {
        stepMovingLanes<kWidest, heard>(a1, gain, x1 + i, y1 + i, in + i, out + i);
        const std::ptrdiff_t next = i + kWidest;
        stepMovingLanes<kWidest, heard>(a1, gain, x1 + next, y1 + next, in + next, out + next);
    }
    for (; i + 2 <= count; i += 2)
        stepMovingLanes<2, heard>(a1, gain, x1 + i, y1 + i, in + i, out + i);
    if (i < count) stepMovingLanes<1, heard>(a1, gain, x1 + i, y1 + i, in + i, out + i);
}

} // namespace

const CascadeKernels kCascadeKernels = {
    {stepCascade<0>, stepCascade<1>, stepCascade<2>, stepCascade<3>, stepCascade<4>, stepCascade<5>},
    {stepCascadeRows<0>, stepCascadeRows<1>, stepCascadeRows<2>, stepCascadeRows<3>, stepCascadeRows<4>,
     stepCascadeRows<5>},
    {stepMoving<Heard::Not>, stepMoving<Heard::Result>, stepMoving<Heard::Complement>}};

} // namespace Design::VELMARIND_KERNELS
