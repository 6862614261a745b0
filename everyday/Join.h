// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "everyday/JoinAccount.h"
#include "everyday/SampleLine.h"
#include "framework/core/LossTeller.h"

#include <array>
#include <cstddef>

/// Puts rows of two to eight inputs side by side, by their times.
///
///     Hold:   out = [in1, of each other input the newest sample that isn't later]
///     Exact:  out = [in1, of each other input the sample of that time, up to "Tolerance" seconds off]
///
/// Every sample of "in1" makes one row, with its time stamp, or none. It waits until each other input has
/// come as far as its time, since only then it is known what belongs to it, but for "Waiting" samples of
/// "in1" at most: then Hold takes what there is, and Exact drops it. It is dropped, too, where an input has
/// nothing for it, or another number of rows. Of two samples within the tolerance, and of those of one time,
/// the first is taken. So in which order the inputs' samples come changes nothing, as long as none of "in1"
/// has waited too long and no times go back: a sample that is earlier than those before takes the place of
/// those that wait and are later. Inputs that aren't connected take no part. "Reset" forgets what waits.
/// "Finish" says that nothing more comes: no sample of "in1" waits any longer. What became of those without
/// a row of their own is counted.
class Join final : public Filter, public Quillmere::Core::LossTeller {
public:
    static constexpr const char* kTypeName = "Join";
    enum class Mode { Hold, Exact };

    explicit Join(const std::string& instanceName);
    ~Join() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }
    std::vector<std::string> getLosses() const override { return account.getLosses(); }
    std::vector<std::string> getNotes() const override { return account.getNotes(); }

private:
    static constexpr std::size_t kMostOthers = Everyday::JoinAccount::kMostOthers;
    /// What an input has for a sample of "in1".
    enum class Answer { This, NotYet, Nothing };
    using Answers = std::array<Answer, kMostOthers>; ///< Of those that are connected, in their order.

    InputPin<MatrixXd> in1;
    InputPin<MatrixXd> in2;
    InputPin<MatrixXd> in3;
    InputPin<MatrixXd> in4;
    InputPin<MatrixXd> in5;
    InputPin<MatrixXd> in6;
    InputPin<MatrixXd> in7;
    InputPin<MatrixXd> in8;
    OutputPin<MatrixXd> out;
    EnumEnumProperty<Mode, std::string> mode;
    RangeProperty<double> tolerance;
    RangeProperty<int> waiting;
    CommandProperty resetCommand;
    CommandProperty finishCommand;

    void findParts();
    bool poll();
    static bool getHasData(InputPin<MatrixXd>& other);
    bool joinOldest(Mode by, double within);
    static Answer findHeld(Everyday::SampleLine& line, double time);
    static Answer findExact(Everyday::SampleLine& line, double time, double within);
    bool getIsDropped(Mode by, const Answers& answers);
    void countSent(const Answers& answers, std::size_t most);
    bool sendJoined(const MatrixXd& first, double time);
    void requestReset() { resetRequested = true; }
    void requestFinish() { finishRequested = true; }

    const std::array<InputPin<MatrixXd>*, kMostOthers> others;
    Everyday::SampleLine firsts;
    std::array<Everyday::SampleLine, kMostOthers> lines;
    std::array<std::size_t, kMostOthers> connected = {}; ///< which of `others` are, in this step
    std::size_t parts = 0;                               ///< how many those are
    bool resetRequested = false;
    bool finishRequested = false;
    Everyday::JoinAccount account;
};
