// SPDX-License-Identifier: MIT
#include "everyday/Join.h"

#include <algorithm>

namespace {
using Everyday::SampleLine;

// Of an input that runs ahead of "in1"; what is older than that is lost.
constexpr std::size_t kMostAhead = 100000;

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
    for (InputPin<MatrixXd>* const other : others)
        other->setIsBlocking(false);
    mode.addLabel("Hold");
    mode.addLabel("Exact");
    mode.setValue(static_cast<unsigned>(Mode::Hold));
    tolerance.setRange(0.0, 1e9, 0.001);
    tolerance.setValue(0.0);
    waiting.setRange(0, 100000, 1);
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
    const auto most = finishRequested ? 0 : static_cast<std::size_t>(waiting.getValue());
    finishRequested = false;
    while (!firsts.isEmpty() && joinOldest(by, within, most))
        firsts.pop();
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
        InputPin<MatrixXd>& other = *others[connected[part]];
        if (!other.hasData()) continue;
        const MatrixXd& sample = other.take();
        lines[connected[part]].push(sample, other.getTimeStamp(), kMostAhead);
        hasTaken = true;
    }
    if (!in1.hasData()) return hasTaken;
    const MatrixXd& sample = in1.take();
    firsts.push(sample, in1.getTimeStamp(), kMostAhead);
    return true;
}

/// True when the oldest sample of "in1" has been sent or dropped, false where it has to wait.
bool Join::joinOldest(Mode by, double within, std::size_t most) {
    const double time = firsts.at(0).timeStamp;
    const bool isLate = firsts.size() > most;
    bool isWhole = true;
    for (std::size_t part = 0; part < parts; ++part) {
        SampleLine& line = lines[connected[part]];
        const Answer answer =
            by == Mode::Hold ? findHeld(line, time, isLate) : findExact(line, time, within, isLate);
        if (answer == Answer::NotYet) return false;
        isWhole = isWhole && answer == Answer::This;
    }
    if (isWhole) sendJoined(firsts.at(0).value, time);
    return true;
}

/// Brings the newest sample that isn't later to the front.
Join::Answer Join::findHeld(SampleLine& line, double time, bool isLate) {
    while (line.size() > 1 && line.at(1).timeStamp <= time)
        line.pop();
    if (line.isEmpty()) return isLate ? Answer::Nothing : Answer::NotYet;
    if (line.at(0).timeStamp > time) return Answer::Nothing;
    const bool isKnown = line.size() > 1 || line.at(0).timeStamp == time;
    return isKnown || isLate ? Answer::This : Answer::NotYet;
}

Join::Answer Join::findExact(SampleLine& line, double time, double within, bool isLate) {
    while (!line.isEmpty() && line.at(0).timeStamp < time - within)
        line.pop();
    if (line.isEmpty()) return isLate ? Answer::Nothing : Answer::NotYet;
    return line.at(0).timeStamp <= time + within ? Answer::This : Answer::Nothing;
}

void Join::sendJoined(const MatrixXd& first, double time) {
    Eigen::Index columns = first.cols();
    for (std::size_t part = 0; part < parts; ++part) {
        const MatrixXd& other = lines[connected[part]].at(0).value;
        if (other.rows() != first.rows()) return;
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
}
