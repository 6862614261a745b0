// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/description/GraphDescription.h"
#include "host/text/Complaint.h"

#include <memory>
#include <string>
#include <vector>

namespace Quillmere::Host {

class HostBlock;
class WorkThread;

/// What a `Source` or a `Sink` has beside it that reads or writes a file.
class QUILLMERE_API FileEnd {
public:
    /// A file that it reads or writes.
    struct File {
        std::string name;
        int descriptor = -1; ///< Of a file that is open already; else -1, and the name says which it is.
    };

    virtual ~FileEnd() = default;

    /// The file that it reads or writes, `-` for standard input or output, and where the graph names it.
    const std::string& getPath() const { return path; }
    const Place& getPathPlace() const { return pathPlace; }

    /// Leaves it to that thread to read ahead or to write what comes from now on, which makes no difference
    /// but to speed; `ResultEnd::handOver` isn't called then. Who can't do so reads and writes as ever.
    /// Requires: open, and no row so far. [setup]
    // NOLINTNEXTLINE(performance-unnecessary-value-param): whoever can do so keeps it
    virtual void setThread(std::shared_ptr<WorkThread>) {}

    /// Every file that it reads, or that it writes under whatever name until the result is whole. [setup]
    virtual std::vector<File> getFiles() const = 0;

protected:
    /// Takes the setting `file`.
    void takeFile(const GraphDescription::Setting& setting, const std::string& folder,
                  Complaints& complaints);
    /// Complains of a file that wasn't given to `block`, which is this one.
    static void requireFile(const HostBlock& block, const GraphDescription::Block& description,
                            Complaints& complaints);

private:
    std::string path;
    Place pathPlace;
};

} // namespace Quillmere::Host
