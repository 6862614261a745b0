// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/HostBlock.h"
#include "host/recording/TimeRepairPlan.h"
#include "host/text/Complaint.h"

#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a graph says of times that aren't as they should be: the settings of a source that make its plan of
/// repairs.
class RepairSettings {
public:
    static std::vector<HostBlock::SettingDescription> getDescriptions();

    /// Takes one; false for another setting. What is wrong with its value is complained of. [setup]
    bool take(const GraphDescription::Setting& setting, Complaints& complaints);
    /// Complains of what doesn't go together. [setup]
    void finish(const std::vector<std::string>& pins, Complaints& complaints) const;
    /// Complains of what asks for time stamps, since a rate counts the times. [setup]
    void refuseRate(Complaints& complaints) const;

    /// Rows a second that the recording's are made into.
    const std::optional<double>& getResampleRate() const { return plan.resampleRate; }
    /// `pins` are those of the recording, none of them held yet.
    TimeRepairPlan getPlan(std::vector<TimeRepairPlan::Pin> pins) const;

private:
    struct Written {
        std::string name;
        std::string text; ///< As in `gaps: nan`.
        Place where;
    };
    struct HeldPin {
        std::string name;
        Place where;
        bool isHeld = false;
    };

    void takeLimit(const Value& value, Complaints& complaints);
    void takeRate(const Value& value, Complaints& complaints);
    void takeInterpolation(const Value& value, Complaints& complaints);
    void finishCut(Complaints& complaints) const;
    const Written* findWritten(const std::string& name) const;
    /// Whether something is asked for that needs times which go on.
    bool getNeedsOrder() const { return plan.resampleRate || getHasGaps(); }
    bool getHasGaps() const { return onGap && *onGap != OnGap::Keep; }

    TimeRepairPlan plan; ///< As far as it is said.
    std::optional<OnBackward> onBackward;
    std::optional<OnGap> onGap;
    bool isHeld = false; ///< All pins are, but those of `heldPins` that aren't.
    std::vector<HeldPin> heldPins;
    std::vector<Written> written; ///< Settings that were taken.
};

} // namespace Quillmere::Host
