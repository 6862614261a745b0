// SPDX-License-Identifier: MIT
#pragma once

#include "host/picture/Picture.h"
#include "host/picture/ResultCurves.h"
#include "host/run/Job.h"

#include <deque>
#include <string>

namespace Cli {

/// Raise `UsageError` where a picture couldn't be written, or is a file that the run has for something else.
void checkPicture(const std::string& option, const std::string& path, bool overwrites);
void keepFromPicture(const std::string& option, const std::string& path, const Quillmere::Host::Job& job);
/// Raises it where another output of the run, say "the report", goes to the same place.
void keepFromOutput(const std::string& option, const std::string& path, const std::string& file,
                    const std::string& what);

/// False, with a message, where it can't be written. Requires: it has been checked.
bool writePicture(const std::string& option, const std::string& path, bool overwrites,
                  const Quillmere::Host::Picture& picture);

/// Gathers what the sinks of a run write, and draws it. It looks on rather than reading the results again:
/// what went into a pipe is gone, and a result may be read, moved or replaced by then.
class RunPicture {
public:
    /// Requires: the job hasn't begun, and isn't checked for another mode any more.
    explicit RunPicture(Quillmere::Host::Job& job);

    /// `origin` is what times count from; empty: no date. False, with a message, where it can't be written.
    /// Requires: the run has ended.
    bool write(const std::string& path, bool overwrites, const std::string& origin) const;

private:
    std::string title;
    std::deque<Quillmere::Host::ResultCurves> results; ///< Sinks point to them.
};

} // namespace Cli
