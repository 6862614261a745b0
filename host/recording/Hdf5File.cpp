// SPDX-License-Identifier: MIT
#include "host/recording/Hdf5File.h"

#include "host/ends/RecordingException.h"
#include "host/text/Complaint.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <set>
#include <string_view>

namespace Quillmere::Host {

namespace {

constexpr std::size_t kMostEntries = 100'000; // their paths are held in memory
constexpr std::size_t kMostNames = 10'000;    // of columns, in a list of texts
constexpr const char* kWhole = "a file that is whole";

/// An exception must not pass the library's own frames, so it is kept.
struct Listing {
    std::vector<std::string> paths;
    std::exception_ptr failure;
};

herr_t takePath(hid_t, const char* path, const H5L_info_t* info, void* to) {
    Listing& listing = *static_cast<Listing*>(to);
    // What a MAT file has in these is reached through its cells.
    const std::string_view name = path;
    if (info->type != H5L_TYPE_HARD || name.starts_with("#refs#") || name.starts_with("#subsystem#"))
        return 0;
    try {
        listing.paths.emplace_back(name);
    } catch (...) {
        listing.failure = std::current_exception();
        return -1;
    }
    return listing.paths.size() < kMostEntries ? 0 : 1;
}

bool getIsNumber(H5T_class_t kind) {
    return kind == H5T_INTEGER || kind == H5T_FLOAT || kind == H5T_ENUM;
}

Hdf5Handle typeOf(hid_t dataset) {
    return {H5Dget_type(dataset), H5Tclose};
}

/// The text of an attribute; empty where there is none.
std::string attributeText(hid_t object, const char* attribute) {
    if (H5Aexists(object, attribute) <= 0) return {};
    const Hdf5Handle found(H5Aopen(object, attribute, H5P_DEFAULT), H5Aclose);
    if (!found) return {};
    const Hdf5Handle type(H5Aget_type(found.get()), H5Tclose);
    const Hdf5Handle space(H5Aget_space(found.get()), H5Sclose);
    if (H5Tget_class(type.get()) != H5T_STRING || H5Sget_simple_extent_npoints(space.get()) != 1) return {};
    if (H5Tis_variable_str(type.get()) > 0) {
        const Hdf5Handle memory(H5Tcopy(H5T_C_S1), H5Tclose);
        H5Tset_size(memory.get(), H5T_VARIABLE);
        H5Tset_cset(memory.get(), H5Tget_cset(type.get()));
        char* text = nullptr;
        if (H5Aread(found.get(), memory.get(), static_cast<void*>(&text)) < 0 || text == nullptr) return {};
        std::string copy(text);
        H5free_memory(text);
        return copy;
    }
    std::string text(std::min<std::size_t>(H5Tget_size(type.get()), kMostNames), '\0');
    if (text.size() != H5Tget_size(type.get()) || H5Aread(found.get(), type.get(), text.data()) < 0)
        return {};
    text.resize(std::strlen(text.c_str()));
    return text;
}

bool getIsComplex(hid_t type) {
    if (H5Tget_nmembers(type) != 2) return false;
    std::set<std::string> names;
    for (unsigned i = 0; i < 2; ++i) {
        char* const name = H5Tget_member_name(type, i);
        if (name != nullptr) names.insert(name);
        H5free_memory(name);
    }
    return names == std::set<std::string>{"real", "imag"} || names == std::set<std::string>{"r", "i"};
}

/// Why the dataset's elements aren't numbers, or nothing.
std::string elementsUnfit(hid_t dataset) {
    const std::string matlab = attributeText(dataset, "MATLAB_class");
    if (matlab == "char") return "text";
    if (matlab == "cell") return "a cell array";
    if (H5Aexists(dataset, "MATLAB_empty") > 0) return "nothing in it";
    const Hdf5Handle type = typeOf(dataset);
    switch (H5Tget_class(type.get())) {
    case H5T_INTEGER:
    case H5T_FLOAT:
    case H5T_ENUM:
        return {};
    case H5T_COMPOUND:
        if (getIsComplex(type.get())) return "complex numbers";
        return Hdf5File::getMembers(dataset).empty() ? "a compound without numbers" : "";
    case H5T_STRING:
        return "text";
    default:
        return "no numbers";
    }
}

} // namespace

Hdf5File::Hdf5File(const std::string& path, std::string fileName) : name(std::move(fileName)) {
    const Hdf5Handle access(H5Pcreate(H5P_FILE_ACCESS), H5Pclose);
#if H5_VERSION_GE(1, 10, 7)
    H5Pset_file_locking(access.get(), false, true); // some shares have no locks, and we only read
#endif
    file = Hdf5Handle(H5Fopen(path.c_str(), H5F_ACC_RDONLY, access.get()), H5Fclose);
    if (!file)
        throw RecordingException(
            {{name}, "an HDF5 file that can't be opened" + Hdf5Turn::getErrorText(), kWhole});
}

std::vector<DataEntry> Hdf5File::listEntries() const {
    Listing listing;
    const herr_t result = H5Lvisit(file.get(), H5_INDEX_NAME, H5_ITER_INC, takePath, &listing);
    if (listing.failure) std::rethrow_exception(listing.failure);
    if (result < 0)
        throw RecordingException(
            {{name}, "an HDF5 file whose contents can't be listed" + Hdf5Turn::getErrorText(), kWhole});
    std::vector<DataEntry> entries;
    for (const std::string& path : listing.paths)
        entries.push_back(describe(path));
    return entries;
}

DataEntry Hdf5File::describe(const std::string& path) const {
    DataEntry entry;
    entry.path = path;
    const Hdf5Handle object(H5Oopen(file.get(), path.c_str(), H5P_DEFAULT), H5Oclose);
    if (!object) {
        entry.unfit = "something damaged" + Hdf5Turn::getErrorText();
        return entry;
    }
    if (H5Iget_type(object.get()) != H5I_DATASET) {
        const bool isSparse = H5Aexists(object.get(), "MATLAB_sparse") > 0;
        entry.unfit = isSparse ? "a sparse matrix" : "a group, which holds others";
        return entry;
    }
    entry.unfit = elementsUnfit(object.get());
    if (!entry.unfit.empty()) return entry;
    const std::vector<hsize_t> shape = getShape(object.get());
    const bool isMatlab = getIsMatlab(object.get());
    const bool isCompound = H5Tget_class(typeOf(object.get()).get()) == H5T_COMPOUND;
    if (shape.size() > 2) {
        entry.unfit = std::to_string(shape.size()) + " dimensions";
        return entry;
    }
    const std::size_t rowDimension = getRowDimension(shape, isMatlab);
    entry.rows = shape.empty() ? 1 : shape[rowDimension];
    const hsize_t others = shape.size() < 2 ? 1 : shape[1 - rowDimension];
    entry.width = isCompound ? getMembers(object.get()).size() : static_cast<std::size_t>(others);
    if (isCompound && others != 1) entry.unfit = "a table of compounds";
    if (H5Sget_simple_extent_npoints(Hdf5Handle(H5Dget_space(object.get()), H5Sclose).get()) <= 0)
        entry.unfit = "nothing in it";
    return entry;
}

Hdf5Handle Hdf5File::openDataset(const std::string& path) const {
    Hdf5Handle dataset(H5Dopen2(file.get(), path.c_str(), H5P_DEFAULT), H5Dclose);
    if (!dataset)
        throw RecordingException({{name + ": " + printable(path, kLongestName)},
                                  "data that can't be opened" + Hdf5Turn::getErrorText(),
                                  kWhole});
    return dataset;
}

bool Hdf5File::getIsMatlab(hid_t dataset) {
    return H5Aexists(dataset, "MATLAB_class") > 0;
}

std::vector<hsize_t> Hdf5File::getShape(hid_t dataset) {
    const Hdf5Handle space(H5Dget_space(dataset), H5Sclose);
    const int rank = H5Sget_simple_extent_ndims(space.get());
    std::vector<hsize_t> shape(static_cast<std::size_t>(std::max(0, rank)));
    if (!shape.empty()) H5Sget_simple_extent_dims(space.get(), shape.data(), nullptr);
    return shape;
}

/// MATLAB's matrices go down their columns, so they lie here with the dimensions swapped.
std::size_t Hdf5File::getRowDimension(const std::vector<hsize_t>& shape, bool isMatlab) {
    if (shape.size() != 2) return 0;
    if (shape[0] == 1 || shape[1] == 1) return shape[0] == 1 ? 1 : 0;
    return isMatlab ? 1 : 0;
}

std::vector<std::string> Hdf5File::getMembers(hid_t dataset) {
    const Hdf5Handle type = typeOf(dataset);
    std::vector<std::string> names;
    if (H5Tget_class(type.get()) != H5T_COMPOUND) return names;
    const int count = H5Tget_nmembers(type.get());
    for (int i = 0; i < count; ++i) {
        if (!getIsNumber(H5Tget_member_class(type.get(), static_cast<unsigned>(i)))) continue;
        char* const member = H5Tget_member_name(type.get(), static_cast<unsigned>(i));
        if (member != nullptr) names.emplace_back(member);
        H5free_memory(member);
    }
    return names;
}

std::string Hdf5File::getUnit(hid_t dataset) {
    const std::string unit = attributeText(dataset, "unit");
    return unit.empty() ? attributeText(dataset, "units") : unit;
}

namespace {

std::vector<std::string> readTexts(hid_t dataset, std::size_t count) {
    const Hdf5Handle type = typeOf(dataset);
    std::vector<std::string> texts;
    if (H5Tis_variable_str(type.get()) > 0) {
        const Hdf5Handle space(H5Dget_space(dataset), H5Sclose);
        const Hdf5Handle memory(H5Tcopy(H5T_C_S1), H5Tclose);
        H5Tset_size(memory.get(), H5T_VARIABLE);
        H5Tset_cset(memory.get(), H5Tget_cset(type.get()));
        std::vector<char*> pointers(count, nullptr);
        if (H5Dread(dataset, memory.get(), H5S_ALL, H5S_ALL, H5P_DEFAULT, pointers.data()) < 0) return {};
        for (const char* const text : pointers)
            texts.emplace_back(text == nullptr ? "" : text);
        H5Dvlen_reclaim(memory.get(), space.get(), H5P_DEFAULT, pointers.data());
        return texts;
    }
    const std::size_t size = H5Tget_size(type.get());
    if (size == 0 || size > kMostNames) return {};
    std::string all(size * count, '\0');
    if (H5Dread(dataset, type.get(), H5S_ALL, H5S_ALL, H5P_DEFAULT, all.data()) < 0) return {};
    for (std::size_t i = 0; i < count; ++i) {
        const std::string text = all.substr(i * size, size);
        texts.emplace_back(text.c_str()); // up to a NUL, which fills what is left
    }
    return texts;
}

} // namespace

std::vector<std::string> Hdf5File::findNames(const std::vector<DataEntry>& entries, const std::string& path,
                                             std::size_t count) const {
    if (count > kMostNames) return {};
    std::vector<std::string> found;
    for (const DataEntry& entry : entries) {
        if (entry.unfit != "text" || folderOf(entry.path) != folderOf(path)) continue;
        const Hdf5Handle dataset(H5Dopen2(file.get(), entry.path.c_str(), H5P_DEFAULT), H5Dclose);
        if (!dataset || H5Tget_class(typeOf(dataset.get()).get()) != H5T_STRING) continue;
        if (getShape(dataset.get()) != std::vector<hsize_t>{count}) continue;
        std::vector<std::string> names = readTexts(dataset.get(), count);
        const std::set<std::string> distinct(names.begin(), names.end());
        if (distinct.size() != count || distinct.count("") != 0) continue;
        if (!found.empty()) return {};
        found = std::move(names);
    }
    return found;
}

} // namespace Quillmere::Host
