// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/batch/RunStatus.h"
#include "host/description/GraphDescription.h"
#include "host/plugins/BlockCatalogue.h"

#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// The folder in which everything lies that one run makes, with `status.json`. It is one process's alone as
/// long as this lives: another one waits, where the file system has locks.
class QUILLMERE_API ResultFolder {
public:
    /// Makes the folder if it isn't there, unless it is only looked at. Raises `RecordingException` where it
    /// can't be made, or when another process holds it for longer than one that was killed takes to go.
    /// [setup]
    explicit ResultFolder(std::string path, bool isMade = true);
    ~ResultFolder();
    ResultFolder(const ResultFolder&) = delete;
    ResultFolder& operator=(const ResultFolder&) = delete;

    const std::string& getPath() const { return path; }
    /// Nothing for a folder in which no run has come to its end.
    std::optional<RunStatus> findStatus() const;
    /// Takes away what an earlier run has made, as long as nobody has changed it since, and then its status:
    /// a run that fails leaves no results of other settings. What the run is to read stays.
    void begin(const std::vector<std::string>& read) const;
    /// What a run has written here: `file` is a name in the folder.
    void addResult(RunStatus& status, const std::string& sink, const std::string& file) const;

private:
    void lock();

    std::string path;
    int folder = -1;
};

/// A source of the graph whose recording comes through a pipe, so that nobody can tell whether it has been
/// read before; empty without one. [setup]
QUILLMERE_API std::string findPipe(const GraphDescription& description, const BlockCatalogue& catalogue);

/// The changes that bring every file that the graph's sinks write into `folder`, under the names that they
/// have in the graph; where two have one name, or none, that of the sink. Devices stay. `option` is what
/// complaints name. [setup]
QUILLMERE_API std::vector<GraphChanges::File> outputsInto(const std::string& folder,
                                                          const std::string& option,
                                                          const GraphDescription& description,
                                                          const BlockCatalogue& catalogue);

} // namespace Quillmere::Host
