// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/RecordingFile.h"
#include "host/recording/RecordingReader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// Reads motion data as the Brain Imaging Data Structure lays them down: `NAME_motion.tsv` has a line for
/// each row, cells with tabs between and no names; `NAME_channels.tsv` beside it has the names, units and
/// types of its columns, and `NAME_motion.json` the rate, which counts where no channel has the type
/// `LATENCY`. `n/a` is a missing value.
class QUILLMERE_API BidsReader final : public RecordingReader {
public:
    /// Whether a file is such a one, by its name.
    static bool getIsOf(const std::string& path) { return path.ends_with("_motion.tsv"); }

    /// Reads what stands beside the file. Raises when the channels aren't there.
    explicit BidsReader(std::unique_ptr<RecordingFile> openFile);

    const std::string& getPath() const override { return file->getName(); }
    std::vector<std::string> getForm() const override {
        return {"motion data of BIDS, with its channels and its description beside it"};
    }
    void setMissing(const std::vector<std::string>& texts) override;
    Row takeRow(double* values) override;

    std::uint64_t getBytesRead() const override { return bytesBefore + cursor; }
    std::uint64_t getSize() const override { return file->getSize(); }
    bool getIsChanged() const override { return file->getIsChanged(); }

    Complaint getFault() const override;
    Complaint getFaultOfCell(std::size_t column, const std::string& expected,
                             const std::string& suggestion = {}) const override;
    std::string getPlace() const override;
    std::string getRowText() const override;

private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    void readChannels(const std::string& path);
    void readFacts(const std::string& path);
    bool nextLine();
    bool refill();
    void readCell(std::string_view cell, std::size_t column, double& value);
    std::string_view getCell(std::size_t column) const;

    std::unique_ptr<RecordingFile> file;
    std::vector<std::string> missing{"n/a"};
    std::vector<char> piece; ///< What is in memory of the file:
    std::size_t filled = 0;  ///< so many bytes,
    std::size_t cursor = 0;  ///< read up to here.
    std::uint64_t bytesBefore = 0;
    std::string_view row; ///< The line that was read last.
    std::size_t cellsFound = 0;
    std::size_t faultyColumn = kNone;
};

} // namespace Quillmere::Host
