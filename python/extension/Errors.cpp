// SPDX-License-Identifier: MIT
#include "python/extension/Errors.h"

#include "host/ends/RecordingException.h"
#include "host/text/CaughtText.h"
#include "host/text/ComplaintJson.h"
#include "host/text/HostException.h"

#include <Poco/Exception.h>

#include <exception>
#include <new>
#include <string_view>
#include <utility>

namespace py = pybind11;

namespace Python {

using namespace Quillmere::Host;

namespace {
/// Python's for a text that may be none.
py::object textOrNone(const std::string& text) {
    if (text.empty()) return py::none();
    return py::reinterpret_steal<py::object>(
        PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace"));
}

py::object numberOrNone(int number) {
    if (number == 0) return py::none();
    return py::int_(number);
}

/// What stands in quotes behind a word of a message: `for 'Order'`. Messages have no other place for it.
std::string quotedBehind(const std::string& text, std::string_view word) {
    const std::string begin = std::string(word) + " '";
    const std::size_t at = text.find(begin);
    if (at == std::string::npos) return {};
    const std::size_t from = at + begin.size();
    const std::size_t to = text.find('\'', from);
    return to == std::string::npos ? std::string() : text.substr(from, to - from);
}

std::string firstOf(const std::string& text, std::initializer_list<std::string_view> words) {
    for (const std::string_view word : words)
        if (std::string found = quotedBehind(text, word); !found.empty()) return found;
    return {};
}

py::object makeError(const std::string& text, const std::vector<Complaint>& complaints) {
    py::dict members;
    py::list parts;
    for (const Complaint& complaint : complaints)
        parts.append(partsOf(complaint));
    members["complaints"] = parts;
    if (!complaints.empty()) {
        const Complaint& first = complaints.front();
        members["block"] = textOrNone(firstOf(first.found, {"of", "block", "the block"}));
        members["property"] = textOrNone(firstOf(first.found, {"for", "property", "setting", "command"}));
        for (const char* const name : {"file", "line", "column", "found", "expected", "nearest"})
            members[name] = parts[0][name];
    }
    const py::object type = py::module_::import("velmarind._errors").attr("Error");
    return type(textOrNone(text), **members);
}

void setError(const std::string& text, const std::vector<Complaint>& complaints) {
    const py::object error = makeError(text, complaints);
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
}

void setErrorOf(const std::exception& exception) {
    const std::string text = wordsOf(exception);
    setError(text, {Complaint::sentence({}, text, {})});
}
} // namespace

py::dict partsOf(const Complaint& complaint) {
    py::dict parts;
    parts["severity"] = "error";
    parts["file"] = textOrNone(complaint.where.file);
    parts["line"] = numberOrNone(complaint.where.line);
    parts["column"] = numberOrNone(complaint.where.column);
    parts["part"] = textOrNone(complaint.part);
    parts["found"] = textOrNone(complaint.found);
    parts["expected"] = textOrNone(complaint.expected);
    parts["nearest"] = textOrNone(complaint.suggestion);
    parts["sentence"] = textOrNone(complaint.getText());
    return parts;
}

void setErrorFromCaught() noexcept {
    try {
        try {
            throw;
        } catch (py::error_already_set& error) {
            error.restore();
        } catch (const py::builtin_exception& exception) {
            exception.set_error();
        } catch (const InterruptedException&) {
            PyErr_SetNone(PyExc_KeyboardInterrupt);
        } catch (const HostException& exception) {
            setError(exception.what(), exception.getComplaints());
        } catch (const Poco::Exception& exception) {
            const std::string text = messageOf(exception);
            setError(text, {Complaint::sentence({}, text, {})});
        } catch (const std::bad_alloc&) {
            PyErr_NoMemory();
        } catch (const std::exception& exception) {
            setErrorOf(exception);
        } catch (...) {
            PyErr_SetString(PyExc_RuntimeError, "a plug-in raised something that is no exception");
        }
    } catch (py::error_already_set& error) {
        error.restore(); // of making the error
    } catch (...) {
        PyErr_NoMemory();
    }
}

void registerErrors() {
    py::register_exception_translator([](std::exception_ptr raised) {
        try {
            if (raised) std::rethrow_exception(std::move(raised));
        } catch (...) {
            setErrorFromCaught();
        }
    });
}

void refuse(const std::string& found, const std::string& expected, const std::string& nearest) {
    throw HostException(Complaint({}, found, expected, nearest));
}

} // namespace Python
