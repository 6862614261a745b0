// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/graph/GraphParts.h"
#include "host/plugins/BlockCatalogue.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace Quillmere::Host {

/// The files that a run reads and those that it writes: none may be both, and none written twice. What exists
/// is compared by what it is, so that links and other names for it don't hide it.
class RunFiles {
public:
    /// The complaints are not owned.
    RunFiles(const GraphDescription& description, const BlockCatalogue& catalogue, Complaints& complaints);

    /// Complains of files that are meant for two things; their sinks are faulty then.
    void check(std::vector<GraphParts::Node>& nodes);
    /// Complains of `files`, which the run writes beside its results, when it reads one of them or a sink
    /// writes one; false then. `where` names them.
    bool checkOwn(const std::vector<FileEnd::File>& files, const Place& where,
                  const std::vector<GraphParts::Node>& nodes);

private:
    /// A file, or the place of one that isn't there yet.
    struct File {
        std::string name; ///< As messages have it.
        std::string resolved;
        bool exists = false; ///< As a regular file: of others the name counts.
        dev_t device = 0;
        ino_t number = 0;
    };
    /// Who uses files, by what the files are.
    template <class User>
    class Register {
    public:
        void add(const File& file, User user);
        /// Null for a file that nobody uses.
        const User* find(const File& file) const;

    private:
        std::map<std::string, User> byName;
        std::map<std::pair<dev_t, ino_t>, User> byNumber;
    };

    static File namedFile(const std::string& path);
    static File openFile(int descriptor);
    static File fileOf(const FileEnd::File& file);
    static std::vector<File> filesOf(const FileEnd& end);

    void addWriting(GraphParts::Node& node);
    void checkReading(const FileEnd& source);

    Complaints& complaints;
    Register<std::string> readings; ///< Besides recordings: what each is.
    Register<GraphParts::Node*> writings;
};

} // namespace Quillmere::Host
