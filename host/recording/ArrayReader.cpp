// SPDX-License-Identifier: MIT
#include "host/recording/ArrayReader.h"

#include "host/text/Complaint.h"
#include "host/text/Printable.h"
#include "host/text/ShortestText.h"

#include <algorithm>
#include <utility>

namespace Quillmere::Host {

namespace {
constexpr std::size_t kValuesAtOnce = std::size_t{1} << 16;
constexpr std::size_t kQuotedText = 40; // how much of a row a message shows
} // namespace

ArrayReader::ArrayReader(std::unique_ptr<RecordingFile> openFile, ArrayContent what)
    : file(std::move(openFile)), content(std::move(what)),
      rowsAtOnce(std::max<std::size_t>(1, kValuesAtOnce / content.data->getWidth())) {
    columns = std::move(content.columns);
    rate = content.rate;
    rowsAtOnce = static_cast<std::size_t>(std::min<std::uint64_t>(rowsAtOnce, content.data->getRows()));
    data.resize(rowsAtOnce * content.data->getWidth());
    if (content.times != nullptr) times.resize(rowsAtOnce);
    targets.assign(columns.size(), kPassedOver);
}

ArrayReader::~ArrayReader() = default;

std::vector<std::string> ArrayReader::getForm() const {
    if (content.path.empty()) return {"samples of a WAV file"};
    return {"the variable '" + printable(content.path, kLongestName) + "' of the file"};
}

RecordingReader::Row ArrayReader::takeRow(double* values) {
    beginRow();
    if (next == content.data->getRows()) return Row::End;
    if (next == filled) refill();
    ++next;
    const double* const row = data.data() + (next - 1 - first) * content.data->getWidth();
    const std::size_t width = content.data->getWidth();
    for (std::size_t i = 0; i < width; ++i)
        if (targets[i] != kPassedOver) values[targets[i]] = row[i];
    if (content.times != nullptr && targets[width] != kPassedOver)
        values[targets[width]] = times[next - 1 - first];
    return Row::Sound;
}

void ArrayReader::refill() {
    const auto count =
        static_cast<std::size_t>(std::min<std::uint64_t>(rowsAtOnce, content.data->getRows() - filled));
    content.data->read(filled, count, data.data());
    if (content.times != nullptr) content.times->read(filled, count, times.data());
    first = filled;
    filled += count;
}

double ArrayReader::getValue(std::size_t column) const {
    const std::size_t row = static_cast<std::size_t>(next - 1 - first);
    const std::size_t width = content.data->getWidth();
    return column < width ? data[row * width + column] : times[row];
}

/// As many of the file's bytes as rows of the data, in proportion: where they lie is the library's matter.
std::uint64_t ArrayReader::getBytesRead() const {
    const double part = static_cast<double>(next) / static_cast<double>(content.data->getRows());
    return next == content.data->getRows()
               ? getSize()
               : static_cast<std::uint64_t>(part * static_cast<double>(getSize()));
}

Complaint ArrayReader::getFaultOfCell(std::size_t column, const std::string& expected,
                                      const std::string& suggestion) const {
    Complaint complaint({getPlace()}, shortestText(getValue(column)), expected, suggestion);
    complaint.part = "column '" + printable(columns[column].name, kLongestName) + "'";
    return complaint;
}

std::string ArrayReader::getPlace() const {
    const std::string inside = content.path.empty() ? "" : printable(content.path, kLongestName) + ": ";
    return getPath() + ": " + inside + "row " + std::to_string(next);
}

std::string ArrayReader::getRowText() const {
    std::string text;
    for (std::size_t column = 0; column < columns.size() && text.size() <= kQuotedText; ++column)
        text += (column == 0 ? "" : ",") + shortestText(getValue(column));
    return "\"" + printable(text, kQuotedText) + "\"";
}

} // namespace Quillmere::Host
