// SPDX-License-Identifier: MIT
#pragma once

#include "python/extension/BlockEngine.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Python {

/// Samples that somebody gives, read where they lie if they are C-contiguous numbers of 64 bits already.
struct TakenSamples {
    pybind11::object owner; ///< What `rows` lies in.
    SampleRows rows;
    int axes = 2;

    /// Raises `velmarind.Error` for what is no array of numbers with one to three axes; `what` names it. With
    /// `mayBeNumber` a single number is a sample, too.
    static TakenSamples of(pybind11::handle given, const std::string& what, bool mayBeNumber = false);
};

/// One number for each; raises `velmarind.Error`.
pybind11::array_t<double> takeNumbers(pybind11::handle given, const std::string& what);

/// What was collected as an array, or as a list of matrices where shapes differ; nothing is left. Of samples
/// of one element with `axes` 1 one axis. `columns` is the width of an array without rows.
pybind11::object toSamples(SampleStore& samples, int axes, Eigen::Index columns);

pybind11::array_t<double> toArray(const std::vector<double>& numbers);

/// Takes the memory over.
pybind11::array_t<double> toArray(SampleStore::Memory memory, const std::vector<Py_ssize_t>& shape);

} // namespace Python
