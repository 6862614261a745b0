// SPDX-License-Identifier: MIT
#include "fuzz/Kit.h"

#include "host/description/ValueReader.h"
#include "host/ends/RecordingException.h"
#include "host/run/Job.h"
#include "host/recording/HostCatalogue.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>

namespace Fuzz {

using namespace Quillmere::Host;

namespace {
/// What a fuzzer can't go on without.
void require(bool isGood) {
    if (!isGood) std::abort();
}

constexpr const char* kRecording =
    "t,x,y,z\n0,1,0.5,-1\n0.01,2,0.25,nan\n0.02,-3,0,1e300\n0.03,,,\n0.04,5,-0.5,inf\n"
    "0.05,6,1,0\n0.06,6,1,0\n0.07,6,1,0\n0.08,-6,1,1\n0.09,0,0,0\n";
constexpr std::uint64_t kRounds = 40; ///< Of a graph without a source.

/// Every source and every sink is given another file than the graph names.
GraphChanges withOwnFiles(const GraphDescription& description, const std::string& recording,
                          const ResultFolder& results) {
    GraphChanges changes;
    for (const GraphDescription::Block& block : description.blocks) {
        if (block.type == "RecordingSource") changes.inputs.push_back({block.id, recording, "--input"});
        if (block.type == "RecordingSink")
            changes.outputs.push_back({block.id, results.path(block.id.substr(0, 100)), "--output"});
    }
    return changes;
}

/// What is written down reads back equal, as long as a file may be so long.
void requireReadsBack(const GraphDescription& graph) {
    const std::string text = graph.toText();
    if (text.size() > kLargestValueFile) return;
    Complaints complaints;
    require(GraphDescription::fromText(text, graph.path, complaints) == graph);
    require(complaints.isEmpty());
}

void run(Job& job) {
    try {
        static_cast<void>(job.run());
    } catch (const RecordingException&) {
    }
}
} // namespace

std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size}; // bytes are what texts are made of
}

MemoryFile::MemoryFile()
    : file(::memfd_create("fuzz", MFD_CLOEXEC)), path("/proc/self/fd/" + std::to_string(file)) {
    require(file >= 0);
}

MemoryFile::~MemoryFile() {
    ::close(file);
}

void MemoryFile::write(std::string_view text) const {
    require(::ftruncate(file, 0) == 0);
    require(::pwrite(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
}

void ResultFolder::empty() const {
    for (const auto& entry : std::filesystem::directory_iterator(folder.getPath()))
        std::filesystem::remove(entry.path());
}

const BlockCatalogue& catalogue() {
    static const BlockCatalogue loaded = [] {
        HostCatalogue blocks;
        blocks.load(VELMARIND_PLUGIN);
        blocks.load(EVERYDAY_PLUGIN);
        return blocks;
    }();
    return loaded;
}

BlockPtr blockOf(std::uint64_t index) {
    static const std::vector<std::string> types = catalogue().getTypeNames();
    return catalogue().create(types[index % types.size()], "block");
}

void runGraph(const std::string& text) {
    static const MemoryFile file;
    static const MemoryFile recording;
    static const ResultFolder results;
    file.write(text);
    recording.write(kRecording);
    Complaints heard;
    const GraphDescription named = GraphDescription::fromFile(file.getPath(), heard);
    if (heard.isEmpty()) requireReadsBack(named);
    const bool hasSource =
        std::any_of(named.blocks.begin(), named.blocks.end(),
                    [](const GraphDescription::Block& block) { return block.type == "RecordingSource"; });
    JobOptions options{.changes = withOwnFiles(named, recording.getPath(), results)};
    if (!hasSource) options.limit.rounds = kRounds;
    {
        Job job = Job::fromFile(file.getPath(), catalogue(), options);
        const Complaints& complaints = job.check();
        for (const Complaint& complaint : complaints.getSorted())
            static_cast<void>(complaint.getText());
        if (complaints.isEmpty()) run(job);
    }
    results.empty();
}

} // namespace Fuzz
