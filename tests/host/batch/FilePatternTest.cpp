// SPDX-License-Identifier: MIT
#include "host/batch/FilePattern.h"
#include "host/batch/BatchSummary.h"
#include "host/batch/RunStatus.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Names = std::vector<std::string>;

class FilePattern : public testing::Test {
protected:
    FilePattern() {
        for (const char* const name :
             {"study/a.csv", "study/p1/a.csv", "study/p1/b.mat", "study/p1/.hidden.csv",
              "study/p1/deep/c.csv", "study/p2/a.csv", "study/.git/d.csv", "study/[1].csv", "other/e.csv"}) {
            std::filesystem::create_directories(std::filesystem::path(folder.path(name)).parent_path());
            folder.write(name, "");
        }
    }

    /// What is found, below the root.
    Names find(const Names& patterns, const std::string& leftOut = {}) {
        Names paths;
        for (const std::string& pattern : patterns)
            paths.push_back(folder.path(pattern));
        complaints = {};
        const FoundFiles found =
            findFiles(paths, {leftOut.empty() ? "" : folder.path(leftOut)}, "--in", complaints);
        Names names;
        for (const std::string& file : found.files)
            names.push_back(found.nameBelowRoot(file));
        return names;
    }

    Support::TemporaryFolder folder;
    Complaints complaints;
};

TEST_F(FilePattern, StarsAreLettersAndTwoAreFolders) {
    EXPECT_EQ(find({"study/*/a.csv"}), (Names{"p1/a.csv", "p2/a.csv"}));
    EXPECT_EQ(find({"study/p?/[bc]*"}), (Names{"p1/b.mat"}));
    EXPECT_EQ(find({"study/**/*.csv"}), (Names{"[1].csv", "a.csv", "p1/a.csv", "p1/deep/c.csv", "p2/a.csv"}));
    EXPECT_EQ(find({"study/**/c.csv"}), (Names{"p1/deep/c.csv"}));
    EXPECT_EQ(find({"study/p1/**"}), (Names{"a.csv", "b.mat", "deep/c.csv"}));
    EXPECT_EQ(find({"study/p1/.*.csv"}), (Names{".hidden.csv"})) << "it is asked for";
}

TEST_F(FilePattern, AFileThatIsThereIsTakenByItsName) {
    EXPECT_EQ(find({"study/[1].csv"}), (Names{"[1].csv"}));
}

TEST_F(FilePattern, SeveralShareTheirDeepestFolderAndEachFileCountsOnce) {
    EXPECT_EQ(find({"study/p1/a.csv", "study/p2/*.csv", "study/p?/a.csv"}), (Names{"p1/a.csv", "p2/a.csv"}));
    EXPECT_EQ(find({"study/p1/a.csv", "other/*"}), (Names{"other/e.csv", "study/p1/a.csv"}));
}

TEST_F(FilePattern, ResultsAreNoRecordings) {
    EXPECT_EQ(find({"study/**/*.csv"}, "study/p1"), (Names{"[1].csv", "a.csv", "p2/a.csv"}));
}

TEST_F(FilePattern, NorIsAnythingBelowThemOrAFileThatIsLeftOut) {
    EXPECT_EQ(find({"study/p1/deep/*.csv", "study/p2/a.csv"}, "study/p1"), (Names{"p2/a.csv"}));
    ASSERT_EQ(complaints.getSorted().size(), 1u);
    EXPECT_NE(complaints.getSorted()[0].found.find(", where the results go"), std::string::npos);
    EXPECT_EQ(find({"study/p?/a.csv"}, "study/p2/a.csv"), (Names{"p1/a.csv"}));
}

TEST_F(FilePattern, ResultsOfAnEarlierBatchAreTakenOnlyByAPatternForThem) {
    RunStatus status;
    status.results.emplace_back().path = "c.csv";
    writeStatus(folder.path("study/p1/deep"), status);
    folder.write("study/p1/deep/d.csv", "");
    folder.write("study/p2/summary.csv", std::string(kSummaryBegin) + "failure\n");
    EXPECT_EQ(find({"study/**/*.csv"}), (Names{"[1].csv", "a.csv", "p1/a.csv", "p1/deep/d.csv", "p2/a.csv"}));
    ASSERT_EQ(complaints.getSortedWarnings().size(), 1u);
    EXPECT_NE(complaints.getSortedWarnings()[0].text.find("left out the results of earlier runs, as '"),
              std::string::npos);
    EXPECT_EQ(find({"study/p1/deep/c*.csv"}), (Names{"c.csv"}));
    EXPECT_TRUE(complaints.getSortedWarnings().empty());
    EXPECT_EQ(find({"study/p2/*.csv"}), (Names{"a.csv"})) << "and never the table of a batch";
}

TEST_F(FilePattern, PatternsThatShareNoFolderAreSeenFromTheTop) {
    const FoundFiles found = findFiles(
        {folder.path("study/p1/a.csv"), std::filesystem::relative(folder.path("other/e.csv")).string()}, {},
        "--in", complaints);
    ASSERT_EQ(found.files.size(), 2u);
    EXPECT_EQ(found.nameBelowRoot(found.files[0]), "other/e.csv");
    EXPECT_EQ(found.nameBelowRoot(found.files[1]), "study/p1/a.csv");
}

TEST_F(FilePattern, AFolderThatCantBeReadIsTold) {
    namespace fs = std::filesystem;
    fs::permissions(folder.path(""), fs::perms::all);
    fs::permissions(folder.path("study/p1"), fs::perms::none);
    const uid_t user = ::geteuid();
    if (user == 0) {
        ASSERT_EQ(::seteuid(65534), 0); // who may read everything is nobody for a while
    }
    const Names names = find({"study/**/*.csv"});
    if (user == 0) {
        ASSERT_EQ(::seteuid(0), 0);
    }
    fs::permissions(folder.path("study/p1"), fs::perms::all);
    EXPECT_EQ(names, (Names{"[1].csv", "a.csv", "p2/a.csv"}));
    ASSERT_EQ(complaints.getSortedWarnings().size(), 1u);
    EXPECT_EQ(complaints.getSortedWarnings()[0].getText(),
              folder.path("study/p1") +
                  ": warning: cannot be read: Permission denied; recordings there are left out");
}

TEST_F(FilePattern, LinksToFoldersAreNotFollowedToAnyDepth) {
    std::filesystem::create_directory_symlink(folder.path("study"), folder.path("study/p2/up"));
    EXPECT_EQ(find({"study/p2/**/*.csv"}), (Names{"a.csv"}));
    ASSERT_EQ(complaints.getSortedWarnings().size(), 1u);
    EXPECT_EQ(complaints.getSortedWarnings()[0].getText(),
              folder.path("study/p2/up") +
                  ": warning: is a link to a folder, which ** doesn't follow; recordings there are left out");
    EXPECT_EQ(find({"study/p2/up/p1/a.csv"}), (Names{"a.csv"})) << "it is named";
}

TEST_F(FilePattern, WhatFindsNothingIsComplainedOf) {
    find({"study/*.txt"});
    ASSERT_EQ(complaints.getSorted().size(), 1u);
    EXPECT_EQ(complaints.getSorted()[0].expected, "a file, or a pattern that some have");
    find({"study"});
    ASSERT_EQ(complaints.getSorted().size(), 1u);
    EXPECT_EQ(complaints.getSorted()[0].suggestion, folder.path("study/**/*.csv"));
}

} // namespace
