// SPDX-License-Identifier: MIT
#include "everyday/Join.h"

#include <algorithm>

namespace {
using Everyday::SampleLine;
using Fate = Everyday::JoinAccount::Fate;

// Of an input that runs ahead of "in1"; what is older than that is lost.
constexpr std::size_t kMostAhead = 100000;
constexpr int kMostWaiting = 100000;

/// Rows of so many columns into wider ones.
template <Eigen::Index kColumns>
void putNarrow(const MatrixXd& part, double* to, Eigen::Index width) {
    const double* from = part.data();
    for (Eigen::Index row = 0; row < part.rows(); ++row, from += kColumns, to += width)
        std::copy_n(from, kColumns, to);
}

/// Rows into wider ones. A sensor has three axes: to copy so few numbers takes less than to call for it.
void putRows(const MatrixXd& part, double* to, Eigen::Index width) {
    switch (part.cols()) {
    case 1:
        return putNarrow<1>(part, to, width);
    case 2:
        return putNarrow<2>(part, to, width);
    case 3:
        return putNarrow<3>(part, to, width);
    case 4:
        return putNarrow<4>(part, to, width);
    default:
        break;
    }
    for (Eigen::Index row = 0; row < part.rows(); ++row)
        std::copy_n(part.data() + row * part.cols(), part.cols(), to + row * width);
}
} // namespace

Join::Join(const std::string& instanceName)
    : Filter(instanceName, true), in1("in1", this), in2("in2", this), in3("in3", this), in4("in4", this),
      in5("in5", this), in6("in6", this), in7("in7", this), in8("in8", this), out("out", this),
      mode("Mode", &getPropertyBag()), tolerance("Tolerance", &getPropertyBag()),
      waiting("Waiting", &getPropertyBag()), resetCommand("Reset", &getPropertyBag()),
      finishCommand("Finish", &getPropertyBag()), others{&in2, &in3, &in4, &in5, &in6, &in7, &in8} {
    mode.addLabel("Hold");
    mode.addLabel("Exact");
    mode.setValue(static_cast<unsigned>(Mode::Hold));
    tolerance.setRange(0.0, 1e9, 0.001);
    tolerance.setValue(0.0);
    waiting.setRange(0, kMostWaiting, 1);
    waiting.setValue(1000);
    resetCommand.setChangeHandler(this, &Join::requestReset);
    finishCommand.setChangeHandler(this, &Join::requestFinish);
}

Join::~Join() = default;

void Join::process() {
    if (resetRequested) {
        firsts.clear();
        for (SampleLine& line : lines)
            line.clear();
        resetRequested = false;
    }
    findParts();
    bool hasTaken = poll();
    while (hasTaken && finishRequested) // at last everything
        hasTaken = poll();
    const auto by = static_cast<Mode>(mode.getValue());
    const double within = tolerance.getValue();
    while (!firsts.isEmpty() && joinOldest(by, within))
        firsts.pop();
    finishRequested = false;
}

/// Links change between steps only, so one look serves the whole step.
void Join::findParts() {
    parts = 0;
    for (std::size_t i = 0; i < kMostOthers; ++i)
        if (others[i]->isAttached()) connected[parts++] = i;
}

/// Takes a sample of each input that has one; false when none has.
bool Join::poll() {
    bool hasTaken = false;
    for (std::size_t part = 0; part < parts; ++part) {
        const std::size_t i = connected[part];
        if (!getHasData(*others[i])) continue;
        const MatrixXd& sample = others[i]->take();
        if (lines[i].push(sample, others[i]->getTimeStamp(), kMostAhead)) account.countForgotten(i);
        hasTaken = true;
    }
    if (!in1.hasData()) return hasTaken;
    const MatrixXd& sample = in1.take();
    account.countFirst();
    firsts.push(sample, in1.getTimeStamp(), kMostWaiting + 1); // no more are left behind a step
    return true;
}

/// Never sleeps: what comes to another input wakes the layout, but no sample of "in1" waits for it here.
bool Join::getHasData(InputPin<MatrixXd>& other) {
    return (!other.getIsWaking() || other.getQueueLength() > 0) && other.hasData();
}

/// True when the oldest sample of "in1" has been sent or dropped, false where it has to wait.
bool Join::joinOldest(Mode by, double within) {
    const double time = firsts.at(0).timeStamp;
    const auto most = static_cast<std::size_t>(waiting.getValue());
    const bool mayWait = firsts.size() <= most && !finishRequested;
    Answers answers{};
    for (std::size_t part = 0; part < parts; ++part) {
        SampleLine& line = lines[connected[part]];
        answers[part] = by == Mode::Hold ? findHeld(line, time) : findExact(line, time, within);
        if (answers[part] == Answer::NotYet && mayWait) return false;
    }
    if (!getIsDropped(by, answers) && sendJoined(firsts.at(0).value, time)) countSent(answers, most);
    return true;
}

/// Brings the newest sample that isn't later to the front, of those of that very time the first.
Join::Answer Join::findHeld(SampleLine& line, double time) {
    while (line.size() > 1 && line.at(1).timeStamp <= time && line.at(0).timeStamp < time)
        line.pop();
    if (line.isEmpty()) return Answer::NotYet;
    if (line.at(0).timeStamp > time) return Answer::Nothing;
    return line.size() > 1 || line.at(0).timeStamp == time ? Answer::This : Answer::NotYet;
}

Join::Answer Join::findExact(SampleLine& line, double time, double within) {
    while (!line.isEmpty() && line.at(0).timeStamp < time - within)
        line.pop();
    if (line.isEmpty()) return Answer::NotYet;
    return line.at(0).timeStamp <= time + within ? Answer::This : Answer::Nothing;
}

/// Whether an input has nothing for a sample of "in1" that waits no longer. The first that hasn't counts.
bool Join::getIsDropped(Mode by, const Answers& answers) {
    for (std::size_t part = 0; part < parts; ++part) {
        const std::size_t i = connected[part];
        const bool isBehind = answers[part] == Answer::NotYet && lines[i].isEmpty();
        if (!isBehind && answers[part] != Answer::Nothing) continue;
        if (isBehind && !finishRequested)
            account.count(Fate::GivenUp, i);
        else
            account.count(by == Mode::Hold ? Fate::Early : Fate::Unmatched, i);
        return true;
    }
    return false;
}

/// Who sets "Waiting" to 0 wants what there is.
void Join::countSent(const Answers& answers, std::size_t most) {
    for (std::size_t part = 0; part < parts; ++part) {
        if (answers[part] != Answer::NotYet) continue;
        const std::size_t i = connected[part];
        if (finishRequested)
            account.countHeld(i, lines[i].at(0).timeStamp);
        else if (most > 0)
            account.count(Fate::Hurried, i);
    }
}

/// False where an input's sample has another number of rows.
bool Join::sendJoined(const MatrixXd& first, double time) {
    Eigen::Index columns = first.cols();
    for (std::size_t part = 0; part < parts; ++part) {
        const MatrixXd& other = lines[connected[part]].at(0).value;
        if (other.rows() != first.rows()) {
            account.count(Fate::Unlike, connected[part]);
            return false;
        }
        columns += other.cols();
    }
    resizeSample(out.data.value, first.rows(), columns);
    double* to = out.data.value.data();
    const auto put = [&](const MatrixXd& sample) {
        putRows(sample, to, columns);
        to += sample.cols();
    };
    put(first);
    for (std::size_t part = 0; part < parts; ++part)
        put(lines[connected[part]].at(0).value);
    out.send(time);
    return true;
}
