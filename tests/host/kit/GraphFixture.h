// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/Graph.h"
#include "host/run/Job.h"
#include "host/recording/HostCatalogue.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <stop_token>
#include <string>

namespace Support {

/// A folder with graphs and recordings, and a catalogue of this project's blocks and of odd ones.
class GraphFixture : public testing::Test {
protected:
    GraphFixture();

    /// What is wrong with a graph, a line each, the file's own name being `g.yaml` and the folder's left out.
    /// The recordings are opened as for a run.
    std::string complaintsOf(const std::string& text, const Quillmere::Host::GraphChanges& changes = {});

    /// The job of a graph file `g.yaml` with that text.
    Quillmere::Host::Job jobOf(const std::string& text, const Quillmere::Host::GraphChanges& changes = {},
                               const Quillmere::Host::RunLimit& limit = {});

    /// Runs a graph. Gives back an empty text, or why it failed; `outcome` is what it did.
    std::string run(const std::string& text, const Quillmere::Host::GraphChanges& changes = {},
                    const Quillmere::Host::RunLimit& limit = {});

    /// What the run before ended with, a line each, as `complaintsOf` writes them.
    std::string warningsOfRun() const;

    /// `text` without the folder's name.
    std::string withoutFolder(std::string text) const;

    TemporaryFolder folder;
    Quillmere::Host::HostCatalogue catalogue;
    std::stop_source stop;
    bool isStrict = false;
    Quillmere::Host::RunOutcome outcome; ///< Of the last run.
};

} // namespace Support
