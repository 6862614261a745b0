// SPDX-License-Identifier: MIT
#pragma once

#include "host/picture/Picture.h"
#include "host/picture/RecordingCurves.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace Cli {

/// What of recordings is drawn, and how.
class PlotArguments {
public:
    void enter(CLI::App& command);

    /// Raise `UsageError` for what can't be made sense of.
    Quillmere::Host::CurveWishes getCurveWishes() const;
    Quillmere::Host::PictureWishes getPictureWishes(const std::vector<std::string>& files) const;

    /// Whether spectra of single times are wished.
    bool getHasSpectra() const { return !spectraAt.empty(); }

    /// Raises where a column is named that no file has. `known` are those that there are.
    void checkNames(const std::vector<std::string>& known) const;

private:
    std::vector<std::string> columns; ///< Names with commas between them, as in the others.
    std::vector<std::string> panels;
    std::vector<std::string> scales;
    std::string across; ///< The column in place of the times.
    std::string start;
    std::string end;
    std::string spectraAt; ///< Times, with commas between them.
    std::string rowsApart;
    std::string band; ///< The lowest and the highest row of spectra, with a comma between.
    std::string title;
};

} // namespace Cli
