// SPDX-License-Identifier: MIT
#include "host/control/ControlServer.h"

#include "host/live/ControlException.h"
#include "tests/host/kit/LiveFixture.h"
#include "tests/host/kit/NoThreads.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Support::Fifo;
using Support::sinkLine;
using Support::sourceLine;
using Support::waitUntil;

/// One who asks.
class Client {
public:
    explicit Client(const std::string& path) : descriptor(ControlSocket::connectTo(path)) {
        const timeval patience{.tv_sec = Support::kPatience.count(), .tv_usec = 0};
        ::setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        ::setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    }
    ~Client() { ::close(descriptor); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// False when the other end is gone.
    bool send(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t count = ::send(descriptor, text.data(), text.size(), MSG_NOSIGNAL);
            if (count <= 0) return false;
            text.remove_prefix(static_cast<std::size_t>(count));
        }
        return true;
    }
    void endSending() const { ::shutdown(descriptor, SHUT_WR); }

    /// The next line; nothing when the other end has hung up.
    std::optional<std::string> readLine() {
        std::size_t end = 0;
        while ((end = received.find('\n')) == std::string::npos) {
            char piece[4096];
            const ssize_t count = ::recv(descriptor, piece, sizeof piece, 0);
            hasHungUp = hasHungUp || count == 0;
            if (count <= 0) return std::nullopt;
            received.append(piece, static_cast<std::size_t>(count));
        }
        std::string line = received.substr(0, end);
        received.erase(0, end + 1);
        return line;
    }
    bool getHasHungUp() const { return hasHungUp; }
    /// The lines of an answer, the last included.
    std::vector<std::string> ask(const std::string& request) {
        std::vector<std::string> lines;
        if (!send(request + "\n")) return {"gone"};
        for (std::optional<std::string> line = readLine(); line; line = readLine()) {
            lines.push_back(*line);
            if (line->empty() || line->front() != ' ') return lines;
        }
        lines.emplace_back("gone");
        return lines;
    }

private:
    int descriptor;
    std::string received;
    bool hasHungUp = false;
};

using Lines = std::vector<std::string>;

class ControlServerTest : public Support::LiveFixture {
protected:
    ControlServerTest() : pipe(folder.path("pipe")) {
        pipe.write("t,x\n");
        start("format: 1\nlayouts: [{id: near}, {id: distant}]\nblocks:\n" +
              sourceLine("in", "pipe", "x: x") + "  - {id: g, type: FilterGain}\n" +
              "  - {id: odd, type: OddSettings}\n  - {id: far, type: FilterGain, layout: distant}\n" +
              sinkLine("out", "out.csv") +
              "connections: [{from: in, to: g}, {from: g, to: odd.main in.put}, {from: odd.a, to: out.x}, "
              "{from: g, to: far}]\n");
        server.emplace(path);
        server->serve(*liveRun);
    }

    /// Writes so often that it is more than a socket and what the server keeps for it hold.
    void writeMatrices() {
        const auto matrix = [](const std::string& element) {
            std::string text = "[[" + element;
            for (int i = 1; i < 600; ++i)
                text += ", " + element;
            return text + "]]";
        };
        for (int i = 0; i < kWrites; ++i)
            liveRun->getSettings().write("odd.matrix",
                                         matrix(i % 2 == 0 ? "1.23456789012345" : "2.34567890123456"));
    }
    static void expectTornOff(Client& watcher) {
        int lines = 0;
        while (watcher.readLine())
            ++lines;
        EXPECT_TRUE(watcher.getHasHungUp());
        EXPECT_LT(lines, kWrites) << "before the last";
    }

    static constexpr int kWrites = 600; ///< Of some ten thousand bytes each.
    Fifo pipe;
    const std::string path = folder.path("control");
    std::optional<ControlServer> server; ///< Goes before the run.
};

TEST_F(ControlServerTest, AnswersOneRequestAfterTheOther) {
    Client client(path);
    EXPECT_EQ(client.ask("get g.Gain"), (Lines{" 1", "ok"}));
    EXPECT_EQ(client.ask("set g.Gain 3"), (Lines{"ok"}));
    EXPECT_EQ(client.ask("get g.Gain"), (Lines{" 3", "ok"}));
    EXPECT_EQ(client.ask("set g.Gain high"), (Lines{"error: found 'high'; expected a number"}));
    EXPECT_EQ(client.ask("get g.Gain\r"), (Lines{" 3", "ok"})) << "from those who end lines so";
}

TEST_F(ControlServerTest, RequestsMayComeInPiecesAndInOnePiece) {
    Client client(path);
    for (const char* const piece : {"ge", "t g.", "Gain", "\nset g.Gain 7\nget g.Gain\nsta"})
        ASSERT_TRUE(client.send(piece));
    for (const char* const line : {" 1", "ok", "ok", " 7", "ok"})
        EXPECT_EQ(client.readLine(), line);
    EXPECT_EQ(client.ask("te"), (Lines{" running, 0 rows, 0 rounds", "ok"}));
}

TEST_F(ControlServerTest, SeveralAskAtOnce) {
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 32; ++i)
        clients.push_back(std::make_unique<Client>(path));
    for (int i = 0; i < 32; ++i)
        EXPECT_EQ(clients[static_cast<std::size_t>(i)]->ask("set g.Gain " + std::to_string(i)),
                  (Lines{"ok"}));
    for (const auto& client : clients)
        EXPECT_EQ(client->ask("get g.Gain"), (Lines{" 31", "ok"}));
}

TEST_F(ControlServerTest, WhoIsIdleKeepsNobodyOut) {
    std::vector<std::unique_ptr<Client>> idle;
    for (int i = 0; i < 60; ++i)
        idle.push_back(std::make_unique<Client>(path));
    Client client(path);
    EXPECT_EQ(client.ask("get g.Gain"), (Lines{" 1", "ok"}));
    EXPECT_EQ(idle.front()->readLine(), "error: found others who ask; who is silent longest is hung up on");
    EXPECT_EQ(idle.front()->readLine(), std::nullopt);
    EXPECT_EQ(idle.back()->ask("get g.Gain"), (Lines{" 1", "ok"})) << "who came late is still there";
    for (int i = 0; i < 31; ++i)
        idle.push_back(std::make_unique<Client>(path));
    EXPECT_EQ(Client(path).ask("get g.Gain"), (Lines{" 1", "ok"}));
    EXPECT_EQ(client.ask("get g.Gain").back(), "gone") << "the last to ask was the first to be silent";
}

TEST_F(ControlServerTest, WhereAllWatchOneMoreIsToldSo) {
    std::vector<std::unique_ptr<Client>> watchers;
    for (int i = 0; i < 32; ++i) {
        watchers.push_back(std::make_unique<Client>(path));
        EXPECT_EQ(watchers.back()->ask("watch g.Gain").back(), "ok");
    }
    Client onceTooOften(path);
    EXPECT_EQ(onceTooOften.readLine(),
              "error: found 32 others who watch or ask; expected fewer, try again later");
    EXPECT_EQ(onceTooOften.readLine(), std::nullopt) << "there is an end to everything";
    watchers.pop_back();
    EXPECT_TRUE(waitUntil([&] {
        return Client(path).ask("get g.Gain") == Lines{" 1", "ok"};
    })) << "one has left";
}

TEST_F(ControlServerTest, WithoutDescriptorsItSleepsAndComesBack) {
    Client waiting(path);
    EXPECT_EQ(waiting.ask("get g.Gain"), (Lines{" 1", "ok"}));
    const int own = ::socket(AF_UNIX, SOCK_STREAM, 0); // made while there are some
    std::vector<int> taken;
    for (int file = ::dup(own); file >= 0; file = ::dup(own))
        taken.push_back(file);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, path.size());
    ASSERT_EQ(::connect(own, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0)
        << "it stands at the door, and can't be let in";
    const auto usedTime = [] {
        timespec time{};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const double before = usedTime();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_LT(usedTime() - before, 0.3) << "nobody spins";
    EXPECT_EQ(waiting.ask("get g.Gain"), (Lines{" 1", "ok"})) << "who is in is answered";
    for (const int file : taken)
        ::close(file);
    ASSERT_EQ(::send(own, "get g.Gain\n", 11, MSG_NOSIGNAL), 11);
    char answer[16]{};
    EXPECT_GT(::recv(own, answer, sizeof answer, 0), 0) << "let in at last";
    ::close(own);
}

TEST_F(ControlServerTest, AWatchHearsOfChangesByOthers) {
    Client watcher(path);
    EXPECT_EQ(watcher.ask("watch g.*"), (Lines{" g.Gain = 1", "ok"}));
    Client writer(path);
    EXPECT_EQ(writer.ask("set g.Gain 2"), (Lines{"ok"}));
    EXPECT_EQ(watcher.readLine(), " g.Gain = 2");
    liveRun->getSettings().write("g.Gain", "3");
    EXPECT_EQ(watcher.readLine(), " g.Gain = 3");
    EXPECT_EQ(writer.ask("get g.Gain"), (Lines{" 3", "ok"})) << "who doesn't watch isn't told";
}

TEST_F(ControlServerTest, AWatcherThatDoesNotReadIsCutOffAndHoldsNobodyUp) {
    Client watcher(path);
    EXPECT_EQ(watcher.ask("watch odd.matrix").back(), "ok");
    writeMatrices();
    expectTornOff(watcher);
    EXPECT_EQ(Client(path).ask("state").back(), "ok");
}

TEST_F(ControlServerTest, AWatcherThatCouldNotBeToldEverythingIsCutOffToo) {
    Client watcher(path);
    EXPECT_EQ(watcher.ask("watch odd.matrix").back(), "ok");
    // Somebody else's request keeps the server busy: the block's layout is held.
    Support::Hold hold(*liveRun, "far.Gain", "2");
    Client other(path);
    ASSERT_TRUE(other.send("get far.Gain\n"));
    writeMatrices();
    hold.release();
    expectTornOff(watcher);
    for (const char* const line : {" 2", "ok"})
        EXPECT_EQ(other.readLine(), line);
}

TEST_F(ControlServerTest, OneWhoAsksAndDoesNotReadIsCutOff) {
    Client client(path);
    std::string many;
    for (int i = 0; i < 1000; ++i)
        many += "help\n";
    bool isOpen = true;
    for (int i = 0; i < 100 && isOpen; ++i)
        isOpen = client.send(many);
    EXPECT_FALSE(isOpen);
    EXPECT_EQ(Client(path).ask("state").back(), "ok");
}

TEST_F(ControlServerTest, OneWhoAsksNoMoreGetsTheAnswersThatAreLeft) {
    Client client(path);
    std::string many;
    for (int i = 0; i < 2000; ++i)
        many += "help\n"; // more answers than a socket holds
    ASSERT_TRUE(client.send(many));
    client.endSending();
    std::uint64_t answers = 0;
    for (std::optional<std::string> line = client.readLine(); line; line = client.readLine())
        if (*line == "ok") ++answers;
    EXPECT_EQ(answers, 2000u);
}

TEST_F(ControlServerTest, HalfALineIsNoRequest) {
    {
        Client client(path);
        ASSERT_TRUE(client.send("set g.Gain 5"));
    }
    Client client(path);
    ASSERT_TRUE(client.send("get g.Gain\nset g.Gain 9"));
    client.endSending();
    EXPECT_EQ(client.readLine(), " 1");
    EXPECT_EQ(client.readLine(), "ok");
    EXPECT_EQ(client.readLine(), std::nullopt);
    EXPECT_EQ(liveRun->getSettings().read("g.Gain").value, "1");
}

TEST_F(ControlServerTest, ALineWithoutAnEndIsCutOff) {
    Client client(path);
    const std::string longest(std::size_t{1} << 15, 'x');
    EXPECT_EQ(client.ask(longest).front().substr(0, 20), "error: found 'xxxxxx") << "long, but a line";
    bool isOpen = true;
    for (int i = 0; i < 100 && isOpen; ++i)
        isOpen = client.send(longest);
    EXPECT_FALSE(isOpen);
    EXPECT_EQ(Client(path).ask("get g.Gain"), (Lines{" 1", "ok"}));
}

TEST_F(ControlServerTest, OneWhoHangsUpWatchesNoMore) {
    { EXPECT_EQ(Client(path).ask("watch *").back(), "ok"); }
    for (int i = 2; i < 100; ++i)
        liveRun->getSettings().write("g.Gain", std::to_string(i));
    EXPECT_EQ(Client(path).ask("get g.Gain"), (Lines{" 99", "ok"}));
}

TEST_F(ControlServerTest, AStopIsAnsweredAndTheServerOutlivesTheRun) {
    Client client(path);
    EXPECT_EQ(client.ask("stop"), (Lines{"ok"}));
    EXPECT_EQ(end(), "");
    EXPECT_EQ(client.ask("state"), (Lines{" ended, 0 rows, 0 rounds", "ok"}));
}

TEST_F(ControlServerTest, ItsEndEndsAllConnectionsAndRemovesTheName) {
    Client watcher(path);
    EXPECT_EQ(watcher.ask("watch *").back(), "ok");
    Client idle(path);
    server.reset();
    EXPECT_EQ(watcher.readLine(), std::nullopt);
    EXPECT_EQ(idle.readLine(), std::nullopt);
    EXPECT_FALSE(folder.has("control"));
    liveRun->getSettings().write("g.Gain", "2"); // nobody is told
    EXPECT_THROW(Client{path}, ControlException);
}

TEST_F(ControlServerTest, OneForWhichNoThreadCanBeMadeIsRefused) {
    ControlServer other(folder.path("other"));
    const Support::NoThreads none;
    try {
        other.serve(*liveRun);
        ADD_FAILURE() << "it has a thread";
    } catch (const ControlException& exception) {
        EXPECT_EQ(withoutFolder(exception.what()),
                  "other: cannot be listened at: no thread can be made: Resource temporarily unavailable");
    }
}

TEST_F(ControlServerTest, ASecondServerIsRefused) {
    EXPECT_THROW(ControlServer{path}, ControlException);
    EXPECT_EQ(Client(path).ask("get g.Gain"), (Lines{" 1", "ok"}));
}

} // namespace
