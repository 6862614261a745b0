// SPDX-License-Identifier: MIT
#pragma once

#include "host/recording/DataChoice.h"
#include "host/recording/Hdf5Handle.h"

#include <string>
#include <vector>

namespace Quillmere::Host {

/// What an HDF5 file has. Requires of every operation, also of its end: a turn.
class Hdf5File {
public:
    /// Raises `RecordingException` for one that can't be opened.
    Hdf5File(const std::string& path, std::string name);

    /// Every dataset, and groups as what they are, in order of their names.
    std::vector<DataEntry> listEntries() const;
    /// Raises `RecordingException`.
    Hdf5Handle openDataset(const std::string& path) const;

    /// Whether a dimension of the dataset counts its rows, and which; nothing of what has none.
    static bool getIsMatlab(hid_t dataset);
    /// Its dimensions, as the file has them.
    static std::vector<hsize_t> getShape(hid_t dataset);
    /// The dimension that counts the rows.
    static std::size_t getRowDimension(const std::vector<hsize_t>& shape, bool isMatlab);
    /// Of a compound, the members that are numbers.
    static std::vector<std::string> getMembers(hid_t dataset);
    /// The one list of `count` texts that lies beside the dataset `path`; empty where there is none, or
    /// several.
    std::vector<std::string> findNames(const std::vector<DataEntry>& entries, const std::string& path,
                                       std::size_t count) const;
    /// Of the attribute `unit` or `units`.
    static std::string getUnit(hid_t dataset);

    const std::string& getName() const { return name; }
    hid_t getId() const { return file.get(); }

private:
    DataEntry describe(const std::string& path) const;

    std::string name;
    Hdf5Handle file;
};

} // namespace Quillmere::Host
