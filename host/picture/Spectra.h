// SPDX-License-Identifier: MIT
#pragma once

#include "host/picture/Picture.h"

namespace Quillmere::Host {

/// Adds a panel with the rows of a heat map at the wished times, each as a curve over its columns.
void addSpectra(Picture& picture, const PictureWishes& wishes, const Panel& heat);

} // namespace Quillmere::Host
