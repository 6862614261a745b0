// SPDX-License-Identifier: MIT
#include "framework/properties/TextConversion.h"

namespace Quillmere::Core::Private {

void printValue(std::ostream& out, const MatrixXd& value) {
    out << value.rows() << ' ' << value.cols();
    for (Eigen::Index i = 0; i < value.size(); ++i)
        out << ' ' << value(i);
}

void parseValue(std::istream& in, MatrixXd& value) {
    int rows = 0;
    int cols = 0;
    in >> rows >> cols;
    resizeSample(value, 0, 0);
    if (rows < 1 && cols < 1) return;
    resizeSample(value, rows, cols);
    Eigen::Index element = 0;
    while (element < value.size() && in.good())
        in >> value(element++);
    while (element < value.size())
        value(element++) = 0.0;
}

} // namespace Quillmere::Core::Private
