// SPDX-License-Identifier: MIT
#include "host/recording/Hdf5Form.h"

#include "host/ends/RecordingException.h"
#include "host/recording/ArrayReader.h"
#include "host/recording/Hdf5File.h"
#include "host/text/Complaint.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <utility>

namespace Quillmere::Host {

namespace {

/// Of what is compressed in pieces, so many bytes of them are kept unpacked at most: a row of pieces, or each
/// would be unpacked once for every few rows.
constexpr std::size_t kMostInCache = std::size_t{1} << 28;
constexpr std::size_t kLeastInCache = std::size_t{1} << 20;

/// The type in memory: doubles, for a compound one for each member that is a number.
Hdf5Handle memoryType(const std::vector<std::string>& members) {
    if (members.empty()) return {H5Tcopy(H5T_NATIVE_DOUBLE), H5Tclose};
    Hdf5Handle type(H5Tcreate(H5T_COMPOUND, members.size() * sizeof(double)), H5Tclose);
    for (std::size_t i = 0; i < members.size(); ++i)
        H5Tinsert(type.get(), members[i].c_str(), i * sizeof(double), H5T_NATIVE_DOUBLE);
    return type;
}

/// How a dataset is opened so that a row of its pieces stays unpacked.
Hdf5Handle accessFor(hid_t dataset, const std::vector<hsize_t>& shape, std::size_t rowDimension) {
    Hdf5Handle access(H5Pcreate(H5P_DATASET_ACCESS), H5Pclose);
    const Hdf5Handle creation(H5Dget_create_plist(dataset), H5Pclose);
    if (H5Pget_layout(creation.get()) != H5D_CHUNKED || shape.empty()) return access;
    std::vector<hsize_t> piece(shape.size());
    if (H5Pget_chunk(creation.get(), static_cast<int>(piece.size()), piece.data()) < 0) return access;
    const Hdf5Handle type(H5Dget_type(dataset), H5Tclose);
    double bytes = static_cast<double>(H5Tget_size(type.get()));
    for (std::size_t i = 0; i < piece.size(); ++i) {
        const double across = static_cast<double>(piece[i]);
        bytes *= i == rowDimension ? across : std::max(across, static_cast<double>(shape[i]) + across);
    }
    const double kept = std::clamp(bytes, double{kLeastInCache}, double{kMostInCache});
    H5Pset_chunk_cache(access.get(), H5D_CHUNK_CACHE_NSLOTS_DEFAULT, static_cast<std::size_t>(kept), 1.0);
    return access;
}

class Hdf5Table final : public NumberTable {
public:
    Hdf5Table(std::shared_ptr<Hdf5File> openFile, const DataEntry& entry)
        : NumberTable(entry.rows, entry.width), file(std::move(openFile)), path(entry.path),
          dataset(file->openDataset(path)), shape(Hdf5File::getShape(dataset.get())),
          members(Hdf5File::getMembers(dataset.get())),
          rowDimension(Hdf5File::getRowDimension(shape, Hdf5File::getIsMatlab(dataset.get()))) {
        const Hdf5Handle access = accessFor(dataset.get(), shape, rowDimension);
        dataset = Hdf5Handle(H5Dopen2(file->getId(), path.c_str(), access.get()), H5Dclose);
        space = Hdf5Handle(H5Dget_space(dataset.get()), H5Sclose);
        type = memoryType(members);
        if (!dataset || !space || !type) fail("data that can't be opened");
    }
    ~Hdf5Table() override {
        const Hdf5Turn turn;
        type.reset();
        space.reset();
        dataset.reset();
        file.reset();
    }

    void read(std::uint64_t first, std::size_t count, double* to) override {
        const Hdf5Turn turn;
        std::vector<hsize_t> counts = shape;
        if (!shape.empty()) {
            std::vector<hsize_t> starts(shape.size(), 0);
            starts[rowDimension] = first;
            counts[rowDimension] = count;
            H5Sselect_hyperslab(space.get(), H5S_SELECT_SET, starts.data(), nullptr, counts.data(), nullptr);
        }
        const Hdf5Handle memory(
            shape.empty() ? H5Screate(H5S_SCALAR)
                          : H5Screate_simple(static_cast<int>(counts.size()), counts.data(), nullptr),
            H5Sclose);
        const bool isColumnwise = rowDimension == 1 && getWidth() > 1;
        if (isColumnwise) columnwise.resize(count * getWidth());
        double* const got = isColumnwise ? columnwise.data() : to;
        if (H5Dread(dataset.get(), type.get(), memory.get(), space.get(), H5P_DEFAULT, got) < 0)
            fail("rows " + std::to_string(first + 1) + " to " + std::to_string(first + count) +
                 ", which can't be read");
        if (!isColumnwise) return;
        for (std::size_t row = 0; row < count; ++row)
            for (std::size_t column = 0; column < getWidth(); ++column)
                to[row * getWidth() + column] = columnwise[column * count + row];
    }

private:
    [[noreturn]] void fail(const std::string& what) const {
        throw RecordingException({{file->getName() + ": " + printable(path, kLongestName)},
                                  what + Hdf5Turn::getErrorText(),
                                  "a file that is whole"});
    }

    std::shared_ptr<Hdf5File> file;
    std::string path;
    Hdf5Handle dataset;
    Hdf5Handle space;
    Hdf5Handle type;
    std::vector<hsize_t> shape;
    std::vector<std::string> members;
    std::size_t rowDimension;
    std::vector<double> columnwise;
};

std::vector<RecordingReader::Column> columnsOf(const Hdf5File& file, const std::vector<DataEntry>& entries,
                                               const DataEntry& data) {
    const Hdf5Handle dataset = file.openDataset(data.path);
    std::vector<std::string> names = Hdf5File::getMembers(dataset.get());
    if (names.empty()) names = file.findNames(entries, data.path, data.width);
    std::vector<RecordingReader::Column> columns = numberedColumns(data.width);
    const std::string unit = Hdf5File::getUnit(dataset.get());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        columns[i].unit = unit;
        if (!names.empty()) columns[i].name = names[i];
    }
    return columns;
}

} // namespace

std::unique_ptr<RecordingReader> openHdf5(std::unique_ptr<RecordingFile> file, const DataWish& wish) {
    ArrayContent content;
    {
        const Hdf5Turn turn;
        const auto opened = std::make_shared<Hdf5File>(file->getPath(), file->getName());
        const std::vector<DataEntry> entries = opened->listEntries();
        const DataEntry& data = chooseData(file->getName(), entries, wish);
        content.path = data.path;
        content.columns = columnsOf(*opened, entries, data);
        const DataEntry* const times = chooseTimes(file->getName(), entries, data, content.columns, wish);
        content.data = std::make_unique<Hdf5Table>(opened, data);
        if (times != nullptr) {
            content.columns.emplace_back().name = wish.time;
            content.columns.back().kind = RecordingReader::Column::Kind::Time;
            content.times = std::make_unique<Hdf5Table>(opened, *times);
        }
    }
    return std::make_unique<ArrayReader>(std::move(file), std::move(content));
}

} // namespace Quillmere::Host
