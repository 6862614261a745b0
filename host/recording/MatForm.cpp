// SPDX-License-Identifier: MIT
#include "host/recording/MatForm.h"

#include "host/ends/RecordingException.h"
#include "host/recording/ArrayReader.h"
#include "host/recording/MatFile.h"
#include "host/text/Complaint.h"
#include "host/text/Printable.h"

#include <utility>

namespace Quillmere::Host {

namespace {

/// A compressed matrix is unpacked at as many places at once as it has columns, each with 40 KiB of memory.
constexpr std::size_t kMostColumns = 2000;

/// A matrix lies column by column, so each column is read by itself.
class MatTable final : public NumberTable {
public:
    MatTable(const RecordingFile& file, const DataEntry& entry, const MatFile::Location& where)
        : NumberTable(entry.rows, entry.width), number(where.number) {
        if (where.isCompressed && entry.width > kMostColumns)
            throw RecordingException({{file.getName() + ": " + printable(entry.path, kLongestName)},
                                      std::to_string(entry.width) + " columns, compressed",
                                      "at most 2000, or a file that was saved with -v6 or -v7.3"});
        MatBytes bytes(file, where.begin, where.end, where.isCompressed);
        bytes.skip(where.place);
        columns.reserve(entry.width);
        for (std::size_t i = 0; i + 1 < entry.width; ++i) {
            columns.push_back(bytes);
            bytes.skip(entry.rows * number.getSize());
        }
        columns.push_back(std::move(bytes));
    }

    void read(std::uint64_t first, std::size_t count, double* to) override {
        const std::size_t size = number.getSize();
        piece.resize(count * size);
        for (std::size_t column = 0; column < getWidth(); ++column) {
            columns[column].read(piece.data(), piece.size());
            for (std::size_t row = 0; row < count; ++row)
                to[row * getWidth() + column] = number.toDouble(piece.data() + row * size);
        }
        if (first + count == getRows()) columns.back().finish();
    }

private:
    MatNumber number;
    std::vector<MatBytes> columns;
    std::vector<char> piece;
};

} // namespace

std::unique_ptr<RecordingReader> openMat(std::unique_ptr<RecordingFile> file, const DataWish& wish) {
    const MatFile mat(*file);
    const DataEntry& data = chooseData(file->getName(), mat.getEntries(), wish);
    ArrayContent content;
    content.path = data.path;
    content.columns = numberedColumns(data.width);
    const std::vector<std::string> names = mat.findNames(data);
    for (std::size_t i = 0; i < names.size(); ++i)
        content.columns[i].name = names[i];
    content.data = std::make_unique<MatTable>(*file, data, mat.getLocation(data));
    const DataEntry* const times =
        chooseTimes(file->getName(), mat.getEntries(), data, content.columns, wish);
    if (times != nullptr) {
        content.columns.emplace_back().name = wish.time;
        content.columns.back().kind = RecordingReader::Column::Kind::Time;
        content.times = std::make_unique<MatTable>(*file, *times, mat.getLocation(*times));
    }
    return std::make_unique<ArrayReader>(std::move(file), std::move(content));
}

} // namespace Quillmere::Host
