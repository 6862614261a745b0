// SPDX-License-Identifier: MIT
#include "design/ButterworthDesigner.h"

void ButterworthDesigner::computePoles() {
    numSPoles = 0;
    appendCirclePoles();
}
