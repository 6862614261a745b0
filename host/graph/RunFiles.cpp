// SPDX-License-Identifier: MIT
#include "host/graph/RunFiles.h"

#include "host/text/Printable.h"
#include "host/ends/StandardStream.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace Quillmere::Host {

namespace {
std::string quoted(const std::string& name) {
    return "the file '" + printable(name, kLongestName) + "'";
}
} // namespace

template <class User>
void RunFiles::Register<User>::add(const File& file, User user) {
    byName.emplace(file.resolved, user);
    if (file.exists) byNumber.emplace(std::pair(file.device, file.number), user);
}

template <class User>
const User* RunFiles::Register<User>::find(const File& file) const {
    if (const auto named = byName.find(file.resolved); named != byName.end()) return &named->second;
    const auto numbered = byNumber.find({file.device, file.number});
    return file.exists && numbered != byNumber.end() ? &numbered->second : nullptr;
}

RunFiles::RunFiles(const GraphDescription& description, const BlockCatalogue& catalogue, Complaints& list)
    : complaints(list) {
    if (!description.path.empty()) readings.add(namedFile(description.path), "which is the graph that runs");
    for (const std::string& path : catalogue.getPluginPaths())
        readings.add(namedFile(path), "which is a plug-in of the run");
}

void RunFiles::check(std::vector<GraphParts::Node>& nodes) {
    for (GraphParts::Node& node : nodes)
        if (node.sink != nullptr && node.file != nullptr && !node.file->getPath().empty()) addWriting(node);
    const Source* fromStandardInput = nullptr;
    for (const GraphParts::Node& node : nodes) {
        if (node.source == nullptr || node.file == nullptr || node.file->getPath().empty()) continue;
        const FileEnd& file = *node.file;
        if (getIsStandardStream(file.getPath())) {
            if (fromStandardInput != nullptr)
                complaints.add(file.getPathPlace(),
                               "standard input, which '" + fromStandardInput->getName() + "' reads too",
                               "one source that reads it");
            fromStandardInput = node.source;
        }
        checkReading(file);
    }
}

bool RunFiles::checkOwn(const std::vector<FileEnd::File>& files, const Place& where,
                        const std::vector<GraphParts::Node>& nodes) {
    Register<std::string> others = readings;
    for (const GraphParts::Node& node : nodes) {
        if (node.file == nullptr || node.file->getPath().empty()) continue;
        const std::string use =
            "which '" + node.description->id + (node.sink == nullptr ? "' reads" : "' writes");
        for (const File& file : filesOf(*node.file))
            others.add(file, use);
    }
    for (const FileEnd::File& own : files) {
        const File file = fileOf(own);
        const std::string* const use = others.find(file);
        if (use == nullptr) continue;
        complaints.add(where, quoted(file.name) + ", " + *use, "a file that the run has for nothing else");
        return false; // its other names would say the same
    }
    return true;
}

void RunFiles::addWriting(GraphParts::Node& node) {
    const Place& place = node.file->getPathPlace();
    const std::vector<File> files = filesOf(*node.file);
    for (const File& file : files) {
        if (const std::string* const reading = readings.find(file)) {
            complaints.add(place, quoted(file.name) + ", " + *reading, "a file that the run doesn't read");
            node.isFaulty = true;
        } else if (GraphParts::Node* const* const other = writings.find(file)) {
            complaints.add(place,
                           quoted(file.name) + ", which '" + (*other)->sink->getName() + "' writes too",
                           "a file of its own for each sink");
            node.isFaulty = true;
        }
        if (node.isFaulty) break; // its other names would say the same
    }
    for (const File& file : files)
        writings.add(file, &node);
}

void RunFiles::checkReading(const FileEnd& source) {
    for (const File& file : filesOf(source)) {
        GraphParts::Node* const* const writer = writings.find(file);
        if (writer == nullptr) continue;
        complaints.add(source.getPathPlace(),
                       quoted(file.name) + ", which '" + (*writer)->sink->getName() + "' writes",
                       "a recording that the run doesn't write over");
        (*writer)->isFaulty = true;
    }
}

RunFiles::File RunFiles::namedFile(const std::string& path) {
    std::error_code error;
    File file{.name = path, .resolved = std::filesystem::weakly_canonical(path, error).string()};
    // A name that can't be resolved, or begins with what isn't there, is taken as it is.
    if (error) file.resolved = path;
    std::filesystem::path absolute = std::filesystem::absolute(file.resolved, error);
    if (!error) file.resolved = absolute.lexically_normal().string();
    struct stat facts {};
    if (::stat(path.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode)) return file;
    file.exists = true;
    file.device = facts.st_dev;
    file.number = facts.st_ino;
    return file;
}

RunFiles::File RunFiles::openFile(int descriptor) {
    const std::string name = descriptor == STDIN_FILENO    ? "standard input"
                             : descriptor == STDOUT_FILENO ? "standard output"
                                                           : "/dev/fd/" + std::to_string(descriptor);
    File file{.name = name, .resolved = name};
    struct stat facts {};
    if (::fstat(descriptor, &facts) != 0 || !S_ISREG(facts.st_mode)) return file;
    file.exists = true;
    file.device = facts.st_dev;
    file.number = facts.st_ino;
    return file;
}

std::vector<RunFiles::File> RunFiles::filesOf(const FileEnd& end) {
    std::vector<File> files;
    for (const FileEnd::File& file : end.getFiles())
        files.push_back(fileOf(file));
    return files;
}

RunFiles::File RunFiles::fileOf(const FileEnd::File& file) {
    return file.descriptor < 0 ? namedFile(file.name) : openFile(file.descriptor);
}

} // namespace Quillmere::Host
