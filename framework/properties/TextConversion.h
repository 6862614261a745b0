// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/MatrixXd.h"

#include <locale>
#include <sstream>
#include <string>

#include <Poco/Exception.h>

/// The text forms of values: what a stream with default settings prints and reads, whatever the program's
/// locale.
namespace Quillmere::Core::Private {

template <class T>
void printValue(std::ostream& out, const T& value) {
    out << value;
}
/// Rows, columns, and the elements by rows, with one blank between each two.
QUILLMERE_API void printValue(std::ostream& out, const MatrixXd& value);

template <class T>
void parseValue(std::istream& in, T& value) {
    in >> value;
}
/// Reads what is printed. Two sizes below 1 leave the matrix empty; a list of elements that ends early leaves
/// the rest at zero; what follows the last element isn't read. Raises what `resizeSample` raises.
QUILLMERE_API void parseValue(std::istream& in, MatrixXd& value);

template <class T>
void valueToText(const T& value, std::string& out) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    printValue(stream, value);
    if (stream.fail()) throw Poco::DataFormatException();
    out = std::move(stream).str();
}

template <class T>
void textToValue(const std::string& text, T& value) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    parseValue(stream, value);
    if (stream.fail()) throw Poco::DataFormatException();
}

} // namespace Quillmere::Core::Private
