// SPDX-License-Identifier: MIT
#include "python/extension/Values.h"

#include "host/description/ValueReader.h"
#include "host/text/Complaint.h"
#include "host/text/Json.h"
#include "python/extension/Errors.h"

#include <pybind11/numpy.h>

#include <cstddef>
#include <cstdint>
#include <variant>

namespace py = pybind11;

namespace Python {

using namespace Quillmere::Host;
using Quillmere::Core::MatrixXd;

namespace {
Value scalarOf(std::string text) {
    Value value;
    value.kind = Value::Kind::Scalar;
    value.isQuoted = text.empty();
    value.text = std::move(text);
    return value;
}

/// Lists and maps are read as the file's text; the rest stands for itself, whatever YAML makes of signs in
/// it.
Value valueOfText(const std::string& text, const std::string& what) {
    const std::size_t first = text.find_first_not_of(" \t\n");
    if (first == std::string::npos || (text[first] != '[' && text[first] != '{')) return scalarOf(text);
    Complaints complaints;
    const auto read = readValueText(text, what, false, complaints);
    return read && complaints.isEmpty() ? *read : scalarOf(text); // who takes it refuses what isn't meant
}

/// One level deeper in lists and maps. Raises Python's RecursionError where there are too many, as in a list
/// that holds itself.
class Deeper {
public:
    Deeper() {
        if (Py_EnterRecursiveCall(" in lists and maps of a setting") != 0) throw py::error_already_set();
    }
    ~Deeper() { Py_LeaveRecursiveCall(); }
    Deeper(const Deeper&) = delete;
    Deeper& operator=(const Deeper&) = delete;
};

Value listOf(const py::sequence& items, const std::string& what) {
    const Deeper deeper;
    Value value;
    value.kind = Value::Kind::List;
    for (const py::handle item : items)
        value.items.push_back(toValue(item, what));
    return value;
}

Value mapOf(const py::dict& map, const std::string& what) {
    const Deeper deeper;
    Value value;
    value.kind = Value::Kind::Map;
    for (const auto& [key, item] : map) {
        Value::Entry& entry = value.entries.emplace_back();
        entry.key = py::str(key);
        entry.value = toValue(item, what);
    }
    return value;
}

/// Whether YAML would take a plain text for something else.
bool getNeedsQuotes(const std::string& text) {
    const bool isParameter = text.starts_with("${") && text.ends_with('}');
    if (isParameter) return false;
    return text.find_first_of("#{}[],&*!|>'\"%@`\n") != std::string::npos ||
           text.find(": ") != std::string::npos || text.ends_with(':') || text.starts_with("- ") ||
           text.starts_with('?') || text.starts_with(' ') || text.ends_with(' ') || text == "~" ||
           text == "null";
}

py::array_t<double> arrayOf(const MatrixXd& matrix) {
    py::array_t<double> array({matrix.rows(), matrix.cols()});
    std::copy_n(matrix.data(), matrix.size(), array.mutable_data());
    return array;
}
} // namespace

Value toValue(py::handle given, const std::string& what) {
    if (given.is_none()) return {}; // as null in a file, which takes a setting away
    if (py::isinstance<py::str>(given)) return valueOfText(given.cast<std::string>(), what);
    if (py::isinstance<py::bool_>(given)) return valueOf(given.cast<bool>());
    if (py::isinstance<py::dict>(given)) return mapOf(py::reinterpret_borrow<py::dict>(given), what);
    if (py::isinstance<py::list>(given) || py::isinstance<py::tuple>(given))
        return listOf(py::reinterpret_borrow<py::sequence>(given), what);
    // NumPy's and pandas' arrays and numbers.
    if (py::hasattr(given, "tolist")) {
        const py::object plain = given.attr("tolist")();
        if (!py::hasattr(plain, "tolist")) return toValue(plain, what);
    }
    if (PyIndex_Check(given.ptr()) != 0) {
        int overflow = 0;
        const auto index = py::reinterpret_steal<py::object>(PyNumber_Index(given.ptr()));
        if (!index) throw py::error_already_set();
        const long long number = PyLong_AsLongLongAndOverflow(index.ptr(), &overflow);
        return overflow != 0 ? scalarOf(py::str(index)) : valueOf(static_cast<std::int64_t>(number));
    }
    if (PyNumber_Check(given.ptr()) != 0 && py::hasattr(given, "__float__")) {
        const double number = PyFloat_AsDouble(given.ptr());
        if (number == -1.0 && PyErr_Occurred() != nullptr) throw py::error_already_set();
        return valueOf(number);
    }
    refuse(std::string(py::str(py::type::handle_of(given).attr("__name__"))) + " for " + what,
           "a text, a number, a flag, an array, or lists and maps of them");
}

std::vector<std::pair<std::string, Value>> toValues(py::handle mapping, const std::string& what) {
    std::vector<std::pair<std::string, Value>> values;
    if (!mapping || mapping.is_none()) return values;
    const py::dict items(py::reinterpret_borrow<py::object>(mapping));
    for (const auto& [name, value] : items) {
        const std::string text = py::str(name);
        values.emplace_back(text, toValue(value, what + " '" + text + "'"));
    }
    return values;
}

std::string flowText(const Value& value) {
    const auto joined = [](const auto& parts, char open, char close, auto textOfPart) {
        std::string text(1, open);
        for (const auto& part : parts) {
            if (text.size() > 1) text += ", ";
            text += textOfPart(part);
        }
        return text + close;
    };
    switch (value.kind) {
    case Value::Kind::List:
        return joined(value.items, '[', ']', [](const Value& item) { return flowText(item); });
    case Value::Kind::Map:
        return joined(value.entries, '{', '}', [](const Value::Entry& entry) {
            return Json::text(entry.key) + ": " + flowText(entry.value);
        });
    case Value::Kind::Scalar:
        return value.isQuoted || getNeedsQuotes(value.text) ? Json::text(value.text) : value.text;
    case Value::Kind::Null:
        break;
    }
    return value.parameter.empty() ? "null" : "${" + value.parameter + "}";
}

py::object heldOf(const PropertyDescription& property) {
    using Kind = PropertyDescription::Kind;
    if (property.kind == Kind::Choice) return textOf(valueText(property));
    if (const auto* const flag = std::get_if<bool>(&property.value)) return py::bool_(*flag);
    if (const auto* const whole = std::get_if<std::int64_t>(&property.value)) return py::int_(*whole);
    if (const auto* const number = std::get_if<double>(&property.value)) return py::float_(*number);
    if (const auto* const matrix = std::get_if<MatrixXd>(&property.value)) return arrayOf(*matrix);
    return py::none();
}

py::object fromJson(const std::string& text) {
    static const py::handle loads = py::object(py::module_::import("json").attr("loads")).release();
    return loads(textOf(text));
}

py::str textOf(const std::string& text) {
    return py::reinterpret_steal<py::str>(
        PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace"));
}

} // namespace Python
