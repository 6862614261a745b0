// SPDX-License-Identifier: MIT
#include "host/report/ReportSignal.h"

namespace Quillmere::Host {

double ReportSignal::getRowsApart() const {
    const std::size_t elements = curves.getColumns().size() + curves.getLeftOut();
    if (rowsApart > 0.0 || !(rowRate > 0.0) || elements == 0) return rowsApart;
    return rowRate / (2.0 * static_cast<double>(elements));
}

} // namespace Quillmere::Host
