// SPDX-License-Identifier: MIT
#include "python/extension/PushCall.h"

#include "python/extension/BlockHandle.h"
#include "python/extension/Errors.h"

#include <pybind11/numpy.h>

#include <cstring>

namespace py = pybind11;

namespace Python {

namespace {
using NumPy = py::detail::npy_api;

/// What the quick road asks of NumPy at each call; found once.
struct Found {
    const NumPy& api = NumPy::get();
    PyObject* const arrayType = reinterpret_cast<PyObject*>(api.PyArray_Type_);
    PyObject* const doubles = api.PyArray_DescrFromType_(NumPy::NPY_DOUBLE_);
};
const Found* numpy = nullptr;

constexpr int kPlain = NumPy::NPY_ARRAY_C_CONTIGUOUS_ | NumPy::NPY_ARRAY_ALIGNED_;

/// Whether it is an array of 64-bit numbers in one piece, with an axis of rows and one of channels.
bool getIsPlain(PyObject* given) {
    if (reinterpret_cast<PyObject*>(Py_TYPE(given)) != numpy->arrayType) return false;
    const auto& array = *py::detail::array_proxy(given);
    return array.nd == 2 && array.descr == numpy->doubles && (array.flags & kPlain) == kPlain;
}

/// Null for an object whose own constructor hasn't called that of `Block`.
BlockHandle* handleOf(PyObject* self) {
    const auto* const instance = reinterpret_cast<py::detail::instance*>(self);
    if (!instance->simple_layout) return py::cast<BlockHandle*>(py::handle(self));
    return instance->simple_holder_constructed ? static_cast<BlockHandle*>(instance->simple_value_holder[0])
                                               : nullptr;
}

PyObject* push(PyObject* self, PyObject* const* arguments, Py_ssize_t count) {
    try {
        if (count < 1 || count > 2) {
            PyErr_Format(PyExc_TypeError, "push() takes 1 or 2 positional arguments but %zd were given",
                         count);
            return nullptr;
        }
        BlockHandle* const block = handleOf(self);
        if (block == nullptr) {
            PyErr_SetString(PyExc_TypeError, "Block.__init__() must be called when overriding __init__");
            return nullptr;
        }
        PyObject* const x = arguments[0];
        PyObject* const t = count == 2 ? arguments[1] : Py_None;
        const bool isQuick = getIsPlain(x) && (t == Py_None || PyFloat_CheckExact(t) != 0) &&
                             !block->getInfo().mainInput.empty();
        if (!isQuick) return block->push(x, t).release().ptr();
        const auto& array = *py::detail::array_proxy(x);
        const SampleRows rows{.data = reinterpret_cast<const double*>(array.data),
                              .count = static_cast<std::size_t>(array.dimensions[0]),
                              .rows = 1,
                              .columns = array.dimensions[1]};
        py::object owner;
        return block->pushRows(
            rows, t == Py_None ? block->countedTimes() : block->timesFor(t, rows.count, owner), 2);
    } catch (...) {
        setErrorFromCaught();
        return nullptr;
    }
}

PyMethodDef pushDefinition = {
    "push", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(&push)), METH_FASTCALL,
    "push($self, x, t=None, /)\n--\n\n"
    "Feeds rows and gives back what they made of the main output; what the block remembers stays.\n\n"
    "Row i has the time `t[i]`; where `t` is one number, `t + i / fs`; without `t`, `(rows fed so far + i) / "
    "fs`.\n"
    "For a block without inputs `x` is a number of steps."};
} // namespace

void addPush(py::handle blockClass) {
    static const Found found;
    numpy = &found;
    auto* const type = reinterpret_cast<PyTypeObject*>(blockClass.ptr());
    const auto method = py::reinterpret_steal<py::object>(PyDescr_NewMethod(type, &pushDefinition));
    if (!method) throw py::error_already_set();
    blockClass.attr("push") = method;
}

} // namespace Python
