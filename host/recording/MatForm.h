// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/DataChoice.h"
#include "host/recording/RecordingFile.h"
#include "host/recording/RecordingReader.h"

#include <memory>

namespace Quillmere::Host {

/// Opens a variable of a MAT file of version 5, or a field of a struct: `imu/LowerBack/Acc`.
///
/// The rows of a matrix are points of time; a vector is one column, however it lies. Columns have the names
/// of the one cell array of texts beside the matrix that has as many, or numbers from 1. Raises
/// `RecordingException`.
QUILLMERE_API std::unique_ptr<RecordingReader> openMat(std::unique_ptr<RecordingFile> file,
                                                       const DataWish& wish);

} // namespace Quillmere::Host
