// SPDX-License-Identifier: MIT
#include "cli/PlotNotes.h"

#include "host/text/Counted.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace Cli {

using namespace Quillmere::Host;

namespace {
std::string numberText(double number) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}
} // namespace

std::vector<std::string> notesOf(const CurveTable& table, const RecordingReader& reader) {
    std::vector<std::string> notes = reader.getNotes();
    if (table.rowsWithoutTime > 0)
        notes.push_back(counted(table.rowsWithoutTime, "row") +
                        " left out: without a time, or with too few or too many cells");
    if (table.rowsBack > 0)
        notes.push_back(counted(table.rowsBack, "row") + " whose time goes back, drawn where " +
                        (table.rowsBack == 1 ? "its time is" : "their times are"));
    std::uint64_t gaps = 0;
    for (const Curve& curve : table.curves)
        gaps += curve.envelope.getBreaks();
    if (gaps > 0)
        notes.push_back(counted(gaps, "cell") + " without a finite number, drawn as " +
                        (gaps == 1 ? "a gap" : "gaps"));
    return notes;
}

Complaint nothingDrawn(const Picture& picture, const PictureWishes& wishes, std::uint64_t rows) {
    for (const Panel& panel : picture.panels) {
        if (panel.kind != Panel::Kind::Heat || !panel.curves.empty()) continue;
        const std::string unit = panel.rowsUnit.empty() ? "" : " " + panel.rowsUnit;
        return {{"--band"},
                "no column of the spectra between " + numberText(wishes.lowestRow) + " and " +
                    numberText(wishes.highestRow) + unit,
                "a part of 0 to " + numberText(panel.rowsEnd) + unit};
    }
    return {{},
            "no numbers to draw in " + counted(rows, "row"),
            "some, between --start and --end where these are given"};
}

std::vector<std::string> missedSpectra(const Picture& picture, const PictureWishes& wishes) {
    std::vector<std::string> lines;
    if (wishes.spectraAt.empty()) return lines;
    const auto heat = std::find_if(picture.panels.begin(), picture.panels.end(),
                                   [](const Panel& panel) { return panel.kind == Panel::Kind::Heat; });
    if (heat == picture.panels.end()) {
        lines.emplace_back("--at: no spectra to draw: no sixteen columns of one pin");
        return lines;
    }
    const auto times = picture.getTimes(*heat);
    for (const double wanted : wishes.spectraAt) {
        if (!times || (wanted >= times->first && wanted <= times->second)) continue;
        const bool isBefore = wanted < times->first;
        lines.push_back("--at " + numberText(wanted) +
                        (isBefore ? ": in front of the first spectrum, which is drawn: that of "
                                  : ": behind the last spectrum, which is drawn: that of ") +
                        numberText(isBefore ? times->first : times->second) + " " + picture.getClock());
    }
    return lines;
}

} // namespace Cli
