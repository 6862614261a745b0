// SPDX-License-Identifier: MIT
#include "host/batch/ResultFolder.h"

#include "host/ends/FileEnd.h"
#include "host/ends/RecordingException.h"
#include "host/ends/Sink.h"
#include "host/ends/Source.h"
#include "host/ends/StandardStream.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <set>
#include <thread>
#include <utility>

namespace Quillmere::Host {

namespace fs = std::filesystem;

namespace {

/// How long a process that was killed may take to let go of its files.
constexpr std::chrono::seconds kPatience{10};
constexpr std::chrono::milliseconds kBetweenTries{10};

/// The file that a graph names for a block; empty without one.
std::string fileOf(const GraphDescription::Block& block) {
    for (const GraphDescription::Setting& setting : block.settings)
        if (setting.name == "file" && setting.value.isScalar()) return setting.value.text;
    return {};
}

template <class Kind>
bool getIs(const GraphDescription::Block& block, const BlockCatalogue& catalogue) {
    const BlockPtr made = catalogue.create(block.type, block.id);
    return dynamic_cast<const Kind*>(made.get()) != nullptr &&
           dynamic_cast<const FileEnd*>(made.get()) != nullptr;
}

} // namespace

ResultFolder::ResultFolder(std::string name, bool isMade) : path(std::move(name)) {
    std::error_code error;
    std::error_code ignored; // of what isn't there
    if (isMade) fs::create_directories(path, error);
    if (isMade && !fs::is_directory(path, ignored)) {
        const std::string reason = error ? error.message() : std::strerror(ENOTDIR);
        throw RecordingException(
            Complaint::sentence({path}, "cannot be made: " + reason, "a folder for the results"));
    }
    folder = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) lock();
}

ResultFolder::~ResultFolder() {
    if (folder >= 0) ::close(folder);
}

void ResultFolder::lock() {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (::flock(folder, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) return; // a file system without locks
        if (std::chrono::steady_clock::now() > end) {
            ::close(std::exchange(folder, -1));
            throw RecordingException(Complaint::sentence({path}, "another run is writing its results there",
                                                         "a folder that no other run has"));
        }
        std::this_thread::sleep_for(kBetweenTries);
    }
}

std::optional<RunStatus> ResultFolder::findStatus() const {
    return readStatus(path + "/" + RunStatus::kFileName);
}

void ResultFolder::begin(const std::vector<std::string>& read) const {
    std::error_code error; // of what isn't there
    if (const auto before = findStatus())
        for (const RunStatus::Result& result : before->results) {
            const std::string file = path + "/" + result.path;
            const auto isRead = [&](const std::string& one) { return fs::equivalent(one, file, error); };
            const auto facts = factsOf(file);
            const bool isHere = fs::path(result.path).filename() == result.path;
            if (!isHere || !facts || facts->bytes != result.bytes) continue;
            if (std::none_of(read.begin(), read.end(), isRead)) fs::remove(file, error);
        }
    fs::remove(path + "/" + RunStatus::kFileName, error);
}

void ResultFolder::addResult(RunStatus& status, const std::string& sink, const std::string& file) const {
    const auto facts = factsOf(path + "/" + file);
    if (!facts) return;
    RunStatus::Result& result = status.results.emplace_back();
    result.sink = sink;
    result.path = file;
    result.bytes = facts->bytes;
}

std::string findPipe(const GraphDescription& description, const BlockCatalogue& catalogue) {
    std::error_code error; // of what isn't there
    for (const GraphDescription::Block& block : description.blocks) {
        const std::string file = fileOf(block);
        const bool isPipe = getIsStandardStream(file) || fs::is_fifo(file, error);
        if (isPipe && getIs<Source>(block, catalogue)) return block.id;
    }
    return {};
}

std::vector<GraphChanges::File> outputsInto(const std::string& folder, const std::string& option,
                                            const GraphDescription& description,
                                            const BlockCatalogue& catalogue) {
    std::vector<GraphChanges::File> files;
    std::set<std::string> taken{RunStatus::kFileName};
    for (const GraphDescription::Block& block : description.blocks) {
        const std::string file = fileOf(block);
        if (file.starts_with("/dev/") || !getIs<Sink>(block, catalogue)) continue;
        std::string name = getIsStandardStream(file) ? "" : fs::path(file).filename().string();
        if (name.empty() || !taken.insert(name).second) {
            name = block.id + (name.empty() ? ".csv" : fs::path(name).extension().string());
            taken.insert(name);
        }
        GraphChanges::File& change = files.emplace_back();
        change.block = block.id;
        change.path = folder + "/" + name;
        change.option = option;
    }
    return files;
}

} // namespace Quillmere::Host
