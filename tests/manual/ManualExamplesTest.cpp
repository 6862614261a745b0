// SPDX-License-Identifier: MIT
// The example of each page runs without a doubt and writes what the page shows.
#include "host/run/Job.h"
#include "tests/manual/ManualFixture.h"
#include "tests/manual/ShownLines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

/// What the arguments of an example say; others than these two fail the test.
RunLimit limitOf(const std::vector<std::string>& arguments) {
    RunLimit limit;
    for (std::size_t i = 0; i < arguments.size(); i += 2) {
        const bool hasValue = i + 1 < arguments.size();
        if (arguments[i] == "--steps" && hasValue)
            limit.rounds = std::stoull(arguments[i + 1]);
        else if (arguments[i] == "--duration" && hasValue)
            limit.seconds = std::stod(arguments[i + 1]);
        else
            ADD_FAILURE() << "the argument " << arguments[i];
    }
    return limit;
}

class ManualExamples : public Support::ManualFixture {
protected:
    /// Why a run of the example failed, or had a doubt; empty for one that is as it should be.
    std::string failureOf(const BlockPage::Example& example) const {
        for (const BlockPage::File& file : example.files)
            folder.write(file.name, file.text);
        try {
            Job job = Job::fromFile(folder.write("graph.yaml", example.graph), catalogue,
                                    {.limit = limitOf(example.arguments), .isStrict = true});
            return job.run().failure;
        } catch (const GraphException& exception) {
            return exception.what();
        }
    }

    /// What lies in the folder behind the run.
    std::set<std::string> filesInFolder() const {
        std::set<std::string> names;
        for (const auto& file : std::filesystem::directory_iterator(folder.path("")))
            names.insert(file.path().filename().string());
        return names;
    }

    void clearFolder() const {
        for (const std::string& name : filesInFolder())
            std::filesystem::remove_all(folder.path(name));
    }
};

TEST_F(ManualExamples, RunAndWriteWhatIsShown) {
    for (const std::string& type : catalogue.getTypeNames()) {
        SCOPED_TRACE(type);
        const BlockPage::Example example = pageOf(type).example;
        EXPECT_NE(example.graph.find("type: " + type), std::string::npos) << "it isn't in its own example";
        EXPECT_EQ(failureOf(example), "");
        std::set<std::string> told{"graph.yaml"};
        for (const BlockPage::File& file : example.files)
            told.insert(file.name);
        for (const BlockPage::File& result : example.results) {
            told.insert(result.name);
            if (!folder.has(result.name))
                ADD_FAILURE() << result.name << " isn't written";
            else if (const std::string written = folder.read(result.name);
                     !Support::isShown(result.text, written))
                ADD_FAILURE() << "shown of " << result.name << " is\n"
                              << result.text << "and written is\n"
                              << written;
        }
        EXPECT_EQ(filesInFolder(), told) << "files that the page doesn't show";
        clearFolder();
    }
}

} // namespace
