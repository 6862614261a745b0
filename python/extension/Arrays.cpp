// SPDX-License-Identifier: MIT
#include "python/extension/Arrays.h"

#include "python/extension/Errors.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace py = pybind11;

namespace Python {

namespace {
constexpr std::size_t kSmall = 4096; ///< Elements that are sooner copied than handed over.

std::string describeArray(const py::array& array) {
    return "an array of " + std::string(py::str(array.dtype())) + " with " + std::to_string(array.ndim()) +
           (array.ndim() == 1 ? " axis" : " axes");
}

/// Whether a mask says of some of the numbers that they are none.
bool getIsMasked(py::handle given) {
    const auto* const plain = reinterpret_cast<PyTypeObject*>(py::detail::npy_api::get().PyArray_Type_);
    return py::isinstance<py::array>(given) && Py_TYPE(given.ptr()) != plain && py::hasattr(given, "filled");
}

/// The numbers, and not-a-number for what the mask hides.
py::object withoutMasked(py::handle array) {
    return array.attr("astype")("float64").attr("filled")(std::numeric_limits<double>::quiet_NaN());
}

/// Numbers in one piece, copied only where they lie otherwise. Texts and objects are none, whatever NumPy
/// would make of them.
py::array_t<double> numbersOf(py::handle given, const std::string& what, const std::string& expected) {
    const py::array array = py::array::ensure(given);
    if (!array) {
        PyErr_Clear();
        refuse("something that is no array for " + what, expected);
    }
    if (std::string("biuf").find(array.dtype().kind()) == std::string::npos)
        refuse(describeArray(array) + " for " + what, expected);
    py::array_t<double> numbers = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(
        getIsMasked(given) ? withoutMasked(given) : py::object(array));
    if (!numbers) throw py::error_already_set();
    return numbers;
}

/// Without what a constructor of pybind11 does besides, which costs more than a block's step.
py::object toFewRows(SampleStore& samples) {
    using NumPy = py::detail::npy_api;
    static const NumPy& api = NumPy::get();
    static PyObject* const doubles = api.PyArray_DescrFromType_(NumPy::NPY_DOUBLE_);
    const SampleStore::Run& run = samples.getRuns().front();
    const Py_intptr_t shape[2] = {static_cast<Py_intptr_t>(run.count), run.columns};
    Py_INCREF(doubles); // taken over
    PyObject* const array =
        api.PyArray_NewFromDescr_(api.PyArray_Type_, doubles, 2, shape, nullptr, nullptr, 0, nullptr);
    if (array == nullptr) throw py::error_already_set();
    auto* const data = reinterpret_cast<double*>(py::detail::array_proxy(array)->data);
    Quillmere::Core::Private::copyElements(data, samples.getData(),
                                           static_cast<Eigen::Index>(samples.getElements()));
    samples.clear();
    return py::reinterpret_steal<py::object>(array);
}
} // namespace

TakenSamples TakenSamples::of(py::handle given, const std::string& what, bool mayBeNumber) {
    const std::string expected = "numbers with time down the rows, as (n, channels)";
    const py::array_t<double> numbers = numbersOf(given, what, expected);
    TakenSamples taken;
    taken.axes = static_cast<int>(numbers.ndim());
    if (taken.axes > 3 || (taken.axes == 0 && !mayBeNumber))
        refuse(describeArray(numbers) + " for " + what, expected);
    taken.rows.data = numbers.data();
    taken.rows.count = taken.axes == 0 ? 1 : static_cast<std::size_t>(numbers.shape(0));
    if (taken.axes == 3) taken.rows.rows = numbers.shape(1);
    if (taken.axes > 1) taken.rows.columns = numbers.shape(taken.axes - 1);
    taken.owner = numbers;
    return taken;
}

py::array_t<double> takeNumbers(py::handle given, const std::string& what) {
    const std::string expected = "one number for each row";
    py::array_t<double> numbers = numbersOf(given, what, expected);
    if (numbers.ndim() != 1) refuse(describeArray(numbers) + " for " + what, expected);
    return numbers;
}

py::array_t<double> toArray(SampleStore::Memory memory, const std::vector<Py_ssize_t>& shape) {
    double* const data = memory.get();
    const py::capsule owner(memory.release(), [](void* held) { std::free(held); });
    return py::array_t<double>(shape, data, owner);
}

py::array_t<double> toArray(const std::vector<double>& numbers) {
    return py::array_t<double>(static_cast<Py_ssize_t>(numbers.size()), numbers.data());
}

py::object toSamples(SampleStore& samples, int axes, Eigen::Index columns) {
    const auto& runs = samples.getRuns();
    if (runs.size() > 1) {
        py::list list;
        const double* next = samples.getData();
        for (const SampleStore::Run& run : runs)
            for (std::size_t i = 0; i < run.count; ++i, next += run.rows * run.columns)
                list.append(py::array_t<double>({run.rows, run.columns}, next));
        samples.clear();
        return list;
    }
    if (runs.size() == 1 && runs.front().rows == 1 && axes == 2 && samples.getElements() <= kSmall)
        return toFewRows(samples);
    const SampleStore::Run run = runs.empty() ? SampleStore::Run{0, 1, columns} : runs.front();
    std::vector<Py_ssize_t> shape{static_cast<Py_ssize_t>(run.count)};
    if (run.rows != 1) shape.push_back(run.rows);
    if (axes != 1 || run.rows != 1 || (run.columns != 1 && run.count > 0)) shape.push_back(run.columns);
    const std::size_t used = samples.getElements();
    if (used > kSmall && samples.getCapacity() - used <= used / 4)
        return toArray(samples.takeMemory(), shape);
    py::array_t<double> array(shape);
    std::copy_n(samples.getData(), used, array.mutable_data());
    // Rather given back than kept for a call that may never come.
    if (used > kSmall)
        (void)samples.takeMemory();
    else
        samples.clear();
    return array;
}

} // namespace Python
