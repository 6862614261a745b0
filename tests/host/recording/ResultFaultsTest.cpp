// SPDX-License-Identifier: MIT
#include "host/ends/RecordingException.h"
#include "host/recording/ResultFile.h"
#include "host/recording/TableWriter.h"
#include "tests/host/kit/RefusalText.h"
#include "tests/host/recording/SystemFaults.h"
#include "tests/host/kit/TemporaryFolder.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Quillmere::Core::MatrixXd;
using Quillmere::Host::RecordingException;
using Quillmere::Host::ResultFile;
using Quillmere::Host::ResultOptions;
using Quillmere::Host::TableWriter;
using Support::SystemFault;
using Support::TemporaryFolder;

const MatrixXd kOne = Support::matrix({{7}});
const MatrixXd kTwo = Support::matrix({{1, 2}});

template <class Work>
std::string failureOf(Work&& work) {
    try {
        work();
    } catch (const RecordingException& exception) {
        return Support::refusalText(exception);
    }
    return "";
}

class ResultFaults : public testing::Test {
protected:
    std::string write(const std::string& text) const {
        return failureOf([&] {
            ResultFile file(path, kOld);
            file.write(text.data(), text.size());
            file.complete();
        });
    }

    const ResultOptions kOld{.overwrites = false,
                             .looksOwn = [](std::string_view head) { return head.starts_with("old"); }};
    const TemporaryFolder folder;
    const std::string path = folder.path("out.csv");
};

struct FaultRow {
    const char* call;
    int error;
    const char* text;
};

TEST_F(ResultFaults, NoFileThatMayBeIncompleteGetsTheFinalName) {
    const FaultRow rows[] = {
        {"write", ENOSPC, "cannot be written: No space left on device"},
        {"write", EDQUOT, "cannot be written: Disk quota exceeded"},
        {"write", EIO, "cannot be written: Input/output error"},
        {"fsync", EIO, "cannot be brought to the disk: Input/output error"},
        {"fsync", ENOSPC, "cannot be brought to the disk: No space left on device"},
        {"close", EIO, "cannot be closed: Input/output error"},
        {"close", EDQUOT, "cannot be closed: Disk quota exceeded"},
        {"rename", EACCES, "cannot get its final name: Permission denied"},
        {"flock", EIO, "cannot be locked: Input/output error"},
    };
    for (const FaultRow& row : rows) {
        std::filesystem::remove(path); // with its mark
        std::filesystem::remove(path + ".partial");
        folder.write("out.csv", "old result");
        const SystemFault fault(row.call, row.error);
        EXPECT_EQ(write("new"), path + ".partial: " + row.text) << row.call;
        EXPECT_EQ(folder.read("out.csv"), "old result") << row.call;
        EXPECT_TRUE(folder.has("out.csv.partial")) << row.call;
    }
}

TEST_F(ResultFaults, WhatCannotBeSyncedOrLockedIsWrittenAllTheSame) {
    const FaultRow rows[] = {{"fsync", EINVAL, ""},     {"fsync", EROFS, ""},  {"flock", ENOTSUP, ""},
                             {"flock", ENOLCK, ""},     {"flock", ENOSYS, ""}, {"close", EINTR, ""},
                             {"fsetxattr", ENOTSUP, ""}};
    for (const FaultRow& row : rows) {
        std::filesystem::remove(path); // with its mark
        folder.write("out.csv", "old result");
        const SystemFault fault(row.call, row.error);
        EXPECT_EQ(write("old, but the last"), row.text) << row.call;
        EXPECT_GT(fault.getCalls(), 0) << row.call;
        EXPECT_EQ(folder.read("out.csv"), "old, but the last") << row.call;
        EXPECT_EQ(folder.count(), 1);
    }
}

TEST_F(ResultFaults, NoGroupGetsTheRightsOfAnother) {
    const struct {
        unsigned former;
        unsigned next;
    } rows[] = {{0640, 0600}, {0660, 0600}, {0644, 0604}, {0604, 0600}, {0666, 0606}};
    for (const auto& row : rows) {
        std::filesystem::remove(path); // with its mark
        folder.write("out.csv", "old result");
        std::filesystem::permissions(path, std::filesystem::perms(row.former));
        const SystemFault fault("fchown", EPERM);
        EXPECT_EQ(write("old, but the last"), "");
        EXPECT_GT(fault.getCalls(), 0);
        EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(row.next))
            << "of " << std::oct << row.former;
    }
}

TEST_F(ResultFaults, SyncedAndClosedBeforeItHasItsName) {
    bool isThere = true;
    const SystemFault fault("close", 0, [&] { isThere = folder.has("out.csv"); });
    EXPECT_EQ(write("new"), "");
    EXPECT_FALSE(isThere);
}

TEST_F(ResultFaults, AResultThatIsCompletedBetweenOpeningAndLockingStaysWhole) {
    folder.write("out.csv.partial", "old result that another run completes just now");
    // What the other run does between this one's open and its lock.
    const SystemFault fault("flock", 0, [&] { std::filesystem::rename(path + ".partial", path); });
    ResultFile file(path, kOld);
    EXPECT_EQ(folder.read("out.csv"), "old result that another run completes just now");
    EXPECT_EQ(folder.read("out.csv.partial"), "");
    EXPECT_EQ(fault.getCalls(), 2) << "it has begun anew";
}

TEST_F(ResultFaults, ATableOnAFullDiskEndsWithAWholeRowAndSaysHowManyItHas) {
    TableWriter table(path, "t", {{"a", {}}});
    const std::string rowEnd = ",7\n";
    std::string wanted = "t,a[0]\n";
    SystemFault full("write", ENOSPC);
    full.spare(2);
    std::uint64_t sent = 0;
    const std::string failure = failureOf([&] {
        for (; sent < 1000000; ++sent)
            table.writeRow(static_cast<double>(sent) + 0.5, {&kOne});
    });
    EXPECT_EQ(failure, path + ".partial: cannot be written: No space left on device");
    table.abandon();
    const std::uint64_t rows = table.getRows();
    EXPECT_LT(rows, sent);
    EXPECT_GT(rows, 1000u);
    for (std::uint64_t row = 0; row < rows; ++row)
        wanted += std::to_string(row) + ".5" + rowEnd;
    EXPECT_EQ(folder.read("out.csv.partial"), wanted);
}

/// For as long as it lives no file may grow beyond so many bytes.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit lower{bytes, before.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &lower), 0);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before{};
};

TEST_F(ResultFaults, AWriteThatTakesAPartOnlyLeavesWholeRows) {
    TableWriter table(path, "t", {{"a", {}}});
    for (int row = 0; row < 1000; ++row)
        table.writeRow(row, {&kOne});
    {
        const FileSizeLimit limit(100);
        EXPECT_EQ(failureOf([&] { table.finish(); }), path + ".partial: cannot be written: File too large");
    }
    table.abandon();
    std::string wanted = "t,a[0]\n";
    for (int row = 0; row < 20; ++row)
        wanted += std::to_string(row) + ",7\n";
    wanted = wanted.substr(0, wanted.rfind('\n', 99) + 1);
    EXPECT_EQ(folder.read("out.csv.partial"), wanted);
    EXPECT_EQ(table.getRows() + 1,
              static_cast<std::uint64_t>(std::count(wanted.begin(), wanted.end(), '\n')));
}

TEST_F(ResultFaults, ADiskThatIsFullWhileATableIsWidenedKeepsTheRows) {
    folder.write("out.csv", "t,a[0]\n");
    for (const char* const call : {"write", "rename"}) {
        std::filesystem::remove(path);
        std::filesystem::remove(path + ".partial");
        TableWriter table(path, "t", {{"a", {}}});
        table.writeRow(1, {&kOne});
        table.writeRow(2, {&kTwo});
        SystemFault fault(call, ENOSPC);
        if (std::string(call) == "write") fault.spare(1);
        EXPECT_NE(failureOf([&] { table.complete(); }), "") << call;
        EXPECT_EQ(failureOf([&] { table.abandon(); }), "") << call;
        EXPECT_EQ(folder.read("out.csv.partial"), "t,a[0]\n1,7\n2,1,2\n") << call;
        EXPECT_EQ(folder.count(), 1) << "nothing of the copy stays, and no final name";
        EXPECT_EQ(table.getRows(), 2u);
    }
}

} // namespace
