// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/MatrixXd.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace Quillmere::Host {

/// Samples one behind the other, in one piece of memory: a value. Each may have a shape of its own, an empty
/// one too.
class QUILLMERE_API SampleSeries {
public:
    struct Shape {
        Eigen::Index rows = 0;
        Eigen::Index columns = 0;
        bool operator==(const Shape&) const = default;
    };

    /// Each row is a sample of one row.
    static SampleSeries ofRows(const Core::MatrixXd& rows);
    static SampleSeries ofSamples(const std::vector<Core::MatrixXd>& samples);

    void append(const Core::MatrixXd& sample);

    std::size_t getSize() const { return size; }
    /// That of all samples; nothing when there are none or several shapes.
    std::optional<Shape> getShape() const;

    /// Requires: `index` is below the size.
    Core::MatrixXd getSample(std::size_t index) const;
    /// The same, into a matrix that is there already.
    void copySample(std::size_t index, Core::MatrixXd& to) const;
    /// A row for each sample, with its elements row by row. Raises `HostException` for samples of several
    /// sizes.
    Core::MatrixXd getRows() const;
    /// All samples from that one on.
    SampleSeries getTail(std::size_t first) const;

private:
    /// Samples of one shape that follow each other.
    struct Run {
        std::size_t first;
        std::size_t offset; ///< In the values.
        Shape shape;
    };
    struct Found {
        const double* values;
        Shape shape;
    };
    Found find(std::size_t index) const;

    std::vector<double> values;
    std::vector<Run> runs;
    std::size_t size = 0;
};

} // namespace Quillmere::Host
