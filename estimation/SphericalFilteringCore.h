// SPDX-License-Identifier: MIT
#pragma once

#include "design/ButterworthComputer_v2.h"
#include "framework/transport/MatrixXd.h"

#include <array>

/// Low-passes the acceleration and the magnetic field that a turning sensor feels, without smearing them with
/// the turning itself: each vector is turned into the Earth-fixed frame with an orientation integrated from
/// the gyroscope, filtered there, and turned back.
///
/// The orientation is a unit quaternion q = (w, x, y, z); with g the angular rate in radians per unit of time
/// and T the time since the step before,
///
///     q = q * (cos h, u sin h),   u = g / |g|,   h = |g| * T / 2
///
/// as a Hamilton product, divided by its norm. R is its rotation matrix; a row vector v goes to the Earth
/// frame as v R', and back as v R. Vectors are in units of gravity and of the Earth's field, each component
/// clipped to +-1.1.
///
/// Each filter is a first-order Butterworth low-pass whose cut-off, relative to the Nyquist frequency, is
/// either imposed or adapted at each step: it grows with the gyroscope's energy and falls when the residual
/// between input and filtered vector jumps, is averaged with the cut-off before it, and rounded to one
/// significant digit, which keeps the number of distinct designs small.
///
/// `reset` forgets the orientation, the filtered vectors and the residuals, and puts the averaging weight
/// back to 0.7; the last vectors, the cut-offs, the filter gain and the sample period stay, so the averaging
/// goes on from the last cut-offs.
///
/// Kept as is: a vector that is not given holds the filtered vector in the Earth frame only, so the one in
/// the sensor frame still turns; the last vectors are compared with the filtered ones before this step's
/// turn.
class SphericalFilteringCore {
public:
    using MatrixXd = Quillmere::Core::MatrixXd;

    SphericalFilteringCore();

    void reset();

    /// The time of a step that does not know its own.
    void setSamplePeriod(double value) { samplePeriod = value; }
    void setFilterGain(double value) { filterGain = value; }

    /// One step. Takes rows or columns of 3 elements; `accelerometer` and `magnetometer` may be null: the
    /// last vector stands in and the filtered one holds. The six outputs become rows of 3: filtered
    /// acceleration and magnetic field in the sensor frame, both unfiltered in the Earth frame, both filtered
    /// in the Earth frame. A negative `deltaTime` stands for the sample period; a `lambda` of -1 keeps the
    /// averaging weight; `magPerturbed` holds the magnetic field; `imposedCutoffs`, 2 elements, may be null:
    /// then the cut-offs adapt. Inputs may be the outputs of the step before.
    void update(const MatrixXd& gyroscope, const MatrixXd* accelerometer, const MatrixXd* magnetometer,
                MatrixXd& aFilteredOut, MatrixXd& mFilteredOut, MatrixXd& aTerreOut, MatrixXd& mTerreOut,
                MatrixXd& aTerreFilteredOut, MatrixXd& mTerreFilteredOut, double deltaTime, double lambda,
                bool magPerturbed, const MatrixXd* imposedCutoffs);

    /// 3 by 3, of the present orientation.
    const MatrixXd& getRotationMatrix() const { return rotation; }
    /// 1 by 2: acceleration, magnetic field; 0 by 0 before the first step.
    const MatrixXd& getCutoffs() const { return cutoffs; }
    /// 5 by 6: absolute residuals of acceleration and magnetic field, newest row first; 0 by 0 until a step
    /// has adapted its cut-offs with a filtered vector at hand.
    const MatrixXd& getTemp() const { return temp; }

private:
    using Vector3 = std::array<double, 3>;

    /// What is kept of one of the two vectors.
    struct Channel {
        Vector3 previous{}; ///< the last vector, clipped; outlives a reset
        Vector3 terre{};    ///< Earth frame
        Vector3 terreFiltered{};
        Vector3 filtered{};       ///< sensor frame
        bool hasPrevious = false; ///< outlives a reset
        bool hold = false;        ///< leave `terreFiltered` as it is in this step
        ButterworthComputer_v2 lowPass;
        MatrixXd lowPassInput; ///< 1 by 3
    };

    static Vector3 choose(const Channel& channel, const MatrixXd* given, const Vector3& fallback);
    void turn(const Vector3& rate, double deltaTime);
    void fillRotation();
    void toTerre(Channel& channel, const Vector3& vector) const;
    static void remember(Channel& channel, const Vector3& vector);
    void impose(double aCutoff, double mCutoff);
    void adaptCutoffs(const Vector3& rate);
    void rememberResiduals();
    double scatter(int firstColumn) const;
    void filter(Channel& channel);

    Channel acceleration;
    Channel magnetic;
    std::array<double, 4> quaternion{1.0, 0.0, 0.0, 0.0}; ///< w, x, y, z
    MatrixXd rotation;
    MatrixXd temp;
    MatrixXd cutoffs;
    double filterGain = 0.001;
    double samplePeriod = 0.01;
    double lambdaGain = 0.7;  ///< weight of a new cut-off against the last one
    bool hasFiltered = false; ///< a step has run since the last reset
};
