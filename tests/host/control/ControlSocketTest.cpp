// SPDX-License-Identifier: MIT
#include "host/control/ControlSocket.h"

#include "host/live/ControlException.h"
#include "tests/host/kit/RefusalText.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace {

using Quillmere::Host::ControlException;
using Quillmere::Host::ControlSocket;

class ControlSocketTest : public testing::Test {
protected:
    /// The refusal, `PATH` standing for the path.
    std::string refusalOf(const std::function<void()>& action) const {
        try {
            action();
        } catch (const ControlException& exception) {
            std::string text = Support::refusalText(exception);
            const std::size_t at = text.find(path);
            if (at != std::string::npos) text.replace(at, path.size(), "PATH");
            return text;
        }
        return "no refusal";
    }
    std::string refusalToListen() const {
        return refusalOf([this] { const ControlSocket socket(path); });
    }
    std::string refusalToConnect() const {
        return refusalOf([this] { ::close(ControlSocket::connectTo(path)); });
    }
    /// A socket of another program at the path; whether somebody listens is the caller's.
    int bindSocket() const {
        const int file = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, path.size());
        EXPECT_EQ(::bind(file, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        return file;
    }
    /// What a run that was killed leaves: a socket's name that nobody listens at, and a lock that nobody
    /// holds.
    void leaveNames() const {
        ::close(bindSocket());
        folder.write("control.lock", "");
        ASSERT_EQ(::chmod((path + ".lock").c_str(), 0600), 0);
    }

    const Support::TemporaryFolder folder;
    const std::string path = folder.path("control");
};

TEST_F(ControlSocketTest, OnlyItsOwnerMayUseIt) {
    const mode_t former = ::umask(0);
    const ControlSocket socket(path);
    ::umask(former);
    struct stat facts {};
    ASSERT_EQ(::stat(path.c_str(), &facts), 0);
    EXPECT_TRUE(S_ISSOCK(facts.st_mode));
    EXPECT_EQ(facts.st_mode & 07777u, 0600u);
    ASSERT_EQ(::stat((path + ".lock").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 07777u, 0600u);
}

TEST_F(ControlSocketTest, IsGoneAtTheEnd) {
    {
        const ControlSocket socket(path);
        EXPECT_EQ(socket.getPath(), path);
        EXPECT_EQ(refusalToConnect(), "no refusal");
    }
    EXPECT_EQ(folder.count(), 0) << "and its lock with it";
    EXPECT_EQ(refusalToConnect(), "PATH: found no run there; expected the --control of one that runs");
}

TEST_F(ControlSocketTest, ASecondRunIsRefusedWhileTheFirstLives) {
    auto first = std::make_unique<ControlSocket>(path);
    EXPECT_EQ(refusalToListen(), "PATH: another run is controlled there; expected a name of its own");
    EXPECT_EQ(refusalToConnect(), "no refusal") << "the first one's is still there";
    first.reset();
    EXPECT_EQ(refusalToListen(), "no refusal");
}

TEST_F(ControlSocketTest, WhatAKilledRunLeftIsTakenOver) {
    leaveNames();
    EXPECT_EQ(refusalToConnect(), "PATH: found no run there; expected the --control of one that runs");
    {
        const ControlSocket socket(path);
        EXPECT_EQ(refusalToConnect(), "no refusal");
    }
    EXPECT_EQ(folder.count(), 0);
}

TEST_F(ControlSocketTest, AnotherProgramsSocketIsLeftToIt) {
    const int other = bindSocket();
    ASSERT_EQ(::listen(other, 4), 0);
    struct stat before {};
    ASSERT_EQ(::stat(path.c_str(), &before), 0);
    EXPECT_EQ(refusalToListen(), "PATH: found another program's socket; expected a name that is free");
    struct stat after {};
    ASSERT_EQ(::stat(path.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(refusalToConnect(), "no refusal") << "it still listens";
    EXPECT_EQ(folder.count(), 1) << "no lock stays";
    ::close(other);
}

TEST_F(ControlSocketTest, AFileIsNeverTakenForALock) {
    const std::string lock = path + ".lock";
    const std::string refusal =
        "PATH.lock: found a file that is no run's lock; expected a --control PATH whose "
        "PATH.lock is free";
    folder.write("control.lock", "what a user had");
    ASSERT_EQ(::chmod(lock.c_str(), 0600), 0);
    EXPECT_EQ(refusalToListen(), refusal);
    EXPECT_EQ(folder.read("control.lock"), "what a user had");
    folder.write("control.lock", "");
    ASSERT_EQ(::chmod(lock.c_str(), 0644), 0);
    EXPECT_EQ(refusalToListen(), refusal) << "others may read it";
    ASSERT_EQ(::chmod(lock.c_str(), 0600), 0);
    ASSERT_EQ(::link(lock.c_str(), folder.path("second").c_str()), 0);
    EXPECT_EQ(refusalToListen(), refusal) << "it has another name";
    EXPECT_EQ(folder.count(), 2);
    ASSERT_EQ(::unlink(lock.c_str()), 0);
    ASSERT_EQ(::mkfifo(lock.c_str(), 0600), 0);
    EXPECT_EQ(refusalToListen(), refusal) << "and doesn't wait for who writes it";
    EXPECT_EQ(folder.count(), 2);
}

TEST_F(ControlSocketTest, WhatOthersPutInItsPlaceIsNotRemoved) {
    {
        const ControlSocket socket(path);
        for (const char* const name : {"control", "control.lock"}) {
            ASSERT_EQ(::unlink(folder.path(name).c_str()), 0);
            folder.write(name, "what a user had");
        }
    }
    EXPECT_EQ(folder.read("control"), "what a user had");
    EXPECT_EQ(folder.read("control.lock"), "what a user had");
}

TEST_F(ControlSocketTest, OneThatNeverLooksIsNotWaitedForLong) {
    const int other = bindSocket();
    ASSERT_EQ(::listen(other, 0), 0);
    const int first = ControlSocket::connectTo(path); // the one place in its queue
    EXPECT_EQ(refusalOf([this] { ::close(ControlSocket::connectTo(path, std::chrono::seconds(1))); }),
              "PATH: found no answer within 1 s; expected the --control of a run");
    ::close(first);
    ::close(other);
}

TEST_F(ControlSocketTest, SomethingThatIsNoSocketIsLeftAsItIs) {
    folder.write("control", "what a user had");
    EXPECT_EQ(refusalToListen(), "PATH: found something that is no socket; expected a name that is free");
    EXPECT_EQ(folder.read("control"), "what a user had");
    EXPECT_EQ(folder.count(), 1) << "no lock stays";
    EXPECT_EQ(refusalToConnect(), "PATH: found no run there; expected the --control of one that runs");
}

TEST_F(ControlSocketTest, ALinkIsNotFollowed) {
    folder.write("real", "what a user had");
    ASSERT_EQ(::symlink("real", path.c_str()), 0);
    EXPECT_EQ(refusalToListen(), "PATH: found something that is no socket; expected a name that is free");
    EXPECT_EQ(folder.read("real"), "what a user had");
    EXPECT_EQ(folder.count(), 2);
    ASSERT_EQ(::symlink("real", (path + ".lock").c_str()), 0);
    EXPECT_EQ(refusalToListen(), "PATH: cannot be listened at: Too many levels of symbolic links");
}

TEST_F(ControlSocketTest, ANameMayBeAsLongAsASocketsAddress) {
    const std::size_t room = sizeof sockaddr_un{}.sun_path - 1;
    const std::string longest = path + std::string(room - path.size(), 'x');
    EXPECT_EQ(refusalOf([&] { const ControlSocket socket(longest); }), "no refusal");
    EXPECT_EQ(folder.count(), 0);
    const std::string longer = longest + "x";
    EXPECT_EQ(refusalOf([&] { const ControlSocket socket(longer); }),
              "'PATH" + longer.substr(path.size()) +
                  "': found a name of 108 bytes for a socket; expected 1 to 107");
    EXPECT_EQ(folder.count(), 0);
    EXPECT_EQ(refusalOf([&] { ::close(ControlSocket::connectTo(longer)); }),
              "'PATH" + longer.substr(path.size()) +
                  "': found a name of 108 bytes for a socket; expected 1 to 107");
    EXPECT_EQ(refusalOf([] { const ControlSocket socket(""); }),
              "'': found a name of 0 bytes for a socket; expected 1 to 107");
}

TEST_F(ControlSocketTest, AFolderThatIsNotThereIsTold) {
    const std::string nowhere = folder.path("none/control");
    EXPECT_EQ(refusalOf([&] { const ControlSocket socket(nowhere); }),
              nowhere + ": cannot be listened at: No such file or directory");
}

} // namespace
