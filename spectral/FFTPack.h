// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>

/// Replaces n doubles by their discrete Fourier transform: forward, real, in place, of any length n >= 1,
/// unnormalised.
///
/// For x[0..n-1] and X[k] = sum over j of x[j] * exp(-2*pi*i*j*k/n) the n doubles hold afterwards, in
/// half-complex order,
///
///     Re X[0], Re X[1], Im X[1], Re X[2], Im X[2], ...   and, for an even n, Re X[n/2] as the last one.
///
/// The algorithm is the published FFTPACK one (P. N. Swarztrauber, "Vectorizing the FFTs", in Parallel
/// Computations, Academic Press 1982): order of the factors, layout of the twiddles, radix-2, radix-4 and
/// general-radix passes between two arrays. Kept as is: there is no pass for 3 and none for 5, both go
/// through the general pass, which takes the sine and cosine of 2*pi/factor anew at each call; a large prime
/// factor costs its square in time.
///
/// Remembered: the plan (factors and twiddles) of the size in force, which only another size replaces. A
/// transform allocates nothing. One transform at a time per object, since the second array is a member.
class FFTPack {
public:
    /// Unsized: no tables yet. [any]
    FFTPack() = default;
    virtual ~FFTPack();
    FFTPack(const FFTPack&) = delete;
    FFTPack& operator=(const FFTPack&) = delete;

    /// Prepares for sequences of `n` doubles; for the size in force it does nothing at all. Raises
    /// `std::bad_alloc` when there is no memory or the work array would take 2^32 bytes or more; the object
    /// is then unsized. Requires: n >= 1. [run]
    void setSize(std::int32_t n);

    /// Replaces `data[0..n-1]` by its transform; a single double stays as it is, and so does everything while
    /// unsized. Requires: room for n doubles at `data`, none of them inside this object's work array. [run]
    void forwardTransform(double* data);

    /// The size in force, 0 while unsized. [run]
    std::int32_t getSize() const { return size; }

    /// n, the number of factors, then the factors as stored; null while unsized, unfilled for n = 1. Owned by
    /// this object; it stays at its address until another size is set. [run]
    const std::int32_t* getFactorTable() const { return factorTable.get(); }

    /// 3n + 15 doubles: n of scratch, then the twiddles; null while unsized. Owned like the factor table.
    /// [run]
    const double* getWorkArray() const { return workArray.get(); }

private:
    std::unique_ptr<std::int32_t[]> factorTable;
    std::unique_ptr<double[]> workArray;
    std::int32_t size = 0;
};
