// SPDX-License-Identifier: MIT
#include "framework/properties/ValueProperty.h"

namespace Quillmere::Core {

bool Private::differs(const MatrixXd& a, const MatrixXd& b) {
    if (a.rows() != b.rows() || a.cols() != b.cols()) return true;
    for (Eigen::Index i = 0; i < a.size(); ++i)
        if (a(i) != b(i)) return true;
    return false;
}

template class ValueProperty<bool>;
template class ValueProperty<int>;
template class ValueProperty<unsigned>;
template class ValueProperty<double>;
template class ValueProperty<MatrixXd>;

} // namespace Quillmere::Core
