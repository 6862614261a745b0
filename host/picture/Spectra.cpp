// SPDX-License-Identifier: MIT
#include "host/picture/Spectra.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

namespace Quillmere::Host {

namespace {

/// What stands at the time next to `time`.
const Envelope::Piece& pieceAt(const Envelope& envelope, double time) {
    const std::vector<Envelope::Piece>& pieces = envelope.getPieces();
    return *std::min_element(pieces.begin(), pieces.end(), [&](const auto& one, const auto& other) {
        return std::fabs(one.firstTime - time) < std::fabs(other.firstTime - time);
    });
}

std::string timeLabel(double time, const std::string& clock) {
    char text[40];
    std::snprintf(text, sizeof text, "%.4g", time);
    return clock == "s" ? std::string(text) + " s" : clock + " " + text;
}

} // namespace

void addSpectra(Picture& picture, const PictureWishes& wishes, const Panel& heat) {
    const std::size_t place = picture.tables.size();
    CurveTable table;
    Panel panel;
    panel.title = heat.title;
    panel.unit = heat.unit;
    panel.axis = heat.rowsUnit.empty() ? "column" : heat.rowsUnit;
    const Panel::Item first = heat.curves.front();
    for (const double wanted : wishes.spectraAt) {
        double time = wanted;
        Curve spectrum("", heat.unit, Envelope::kMostPieces);
        for (std::size_t i = 0; i < heat.curves.size(); ++i) {
            const Envelope& row = picture.getCurve(heat.curves[i]).envelope;
            if (row.getCount() == 0) continue;
            const Envelope::Piece& piece = pieceAt(row, wanted);
            time = piece.firstTime;
            spectrum.envelope.take(heat.rowsBegin + static_cast<double>(i) * heat.rowsApart, piece.first);
        }
        if (spectrum.envelope.getCount() == 0) continue;
        spectrum.name = timeLabel(time, picture.getTable(first).clock);
        Panel::Item item;
        item.table = place;
        item.curve = table.curves.size();
        item.label = spectrum.name;
        panel.curves.push_back(std::move(item));
        table.curves.push_back(std::move(spectrum));
    }
    if (panel.curves.empty()) return;
    picture.tables.push_back(std::move(table));
    picture.panels.push_back(std::move(panel));
}

} // namespace Quillmere::Host
