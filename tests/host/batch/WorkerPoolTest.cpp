// SPDX-License-Identifier: MIT
#include "host/batch/WorkerPool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <system_error>
#include <vector>

namespace {

using Quillmere::Host::WorkerPool;

/// The number that a file gets which is opened now, below which all are taken.
int nextFile() {
    const int file = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (file >= 0) ::close(file);
    return file;
}

/// While it is there, this process can open so many more files.
class FilesLeft {
public:
    explicit FilesLeft(int count) {
        ::getrlimit(RLIMIT_NOFILE, &before);
        rlimit lower = before;
        lower.rlim_cur = static_cast<rlim_t>(nextFile() + count);
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &lower), 0);
    }
    ~FilesLeft() { ::setrlimit(RLIMIT_NOFILE, &before); }
    FilesLeft(const FilesLeft&) = delete;
    FilesLeft& operator=(const FilesLeft&) = delete;

private:
    rlimit before{};
};

/// How many files can be opened.
std::size_t countLeft() {
    std::vector<int> files;
    for (int file = ::open("/dev/null", O_RDONLY); file >= 0; file = ::open("/dev/null", O_RDONLY))
        files.push_back(file);
    for (const int file : files)
        ::close(file);
    return files.size();
}

/// Of workers that print a line and are gone.
WorkerPool poolOf(std::size_t most) {
    return WorkerPool({"/bin/sh", "-c", "read line; echo $line"}, most);
}

TEST(WorkerPool, LeavesFilesToTheProcess) {
    for (const int count : {12, 13}) {
        const FilesLeft files(count);
        WorkerPool pool = poolOf(9);
        std::size_t started = 0;
        EXPECT_THROW(for (; started < 9; ++started) pool.start(started, "line"), std::system_error) << count;
        EXPECT_GE(started, 3U) << count;
        EXPECT_EQ(pool.getBusy(), started);
        EXPECT_GE(countLeft(), 4U) << count;
    }
}

TEST(WorkerPool, TriesASingleWorkerWithTheLastOnes) {
    const FilesLeft files(4);
    WorkerPool pool = poolOf(2);
    pool.start(7, "line");
    EXPECT_THROW(pool.start(8, "line"), std::system_error);
    std::vector<WorkerPool::Ended> ended;
    while (ended.empty())
        ended = pool.wait(std::chrono::seconds(1));
    EXPECT_EQ(ended[0].task, 7U);
    EXPECT_EQ(ended[0].printed, "line\n");
}

} // namespace
