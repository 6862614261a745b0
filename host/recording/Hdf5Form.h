// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/DataChoice.h"
#include "host/recording/RecordingFile.h"
#include "host/recording/RecordingReader.h"

#include <memory>

namespace Quillmere::Host {

/// Opens a dataset of an HDF5 file, or a variable of a MAT file of version 7.3, which is one in HDF5.
///
/// The rows of a dataset are points of time; in a MAT file those of the matrix, as it is there. A dataset of
/// one dimension, or with one row alone, is one column. The columns of a compound are its members that are
/// numbers; others have the names of the one list of texts beside the dataset that has as many, or numbers
/// from 1. An attribute `unit` or `units` holds for all of them. Raises `RecordingException`.
QUILLMERE_API std::unique_ptr<RecordingReader> openHdf5(std::unique_ptr<RecordingFile> file,
                                                        const DataWish& wish);

} // namespace Quillmere::Host
