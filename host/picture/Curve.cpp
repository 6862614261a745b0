// SPDX-License-Identifier: MIT
#include "host/picture/Curve.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
constexpr std::size_t kMostPiecesOfAll = std::size_t{1} << 18; // 16 MB
constexpr std::size_t kFewestPieces = 512;

constexpr std::uint64_t kRowsOfRare = 5; // for each sample, at least
constexpr std::uint64_t kFewestOfEven = 10;
constexpr double kMostSteps = 0.9; // of all
constexpr double kUneven = 2.0;    // times the usual step
constexpr double kSteady = 1.5;    // times the step before, or the same part of it

/// How many of the steps are about as long as the one before: nearly all of what has one rate, and later
/// another. Those within a piece, of which nothing more is known, are.
double partOfSteadySteps(const std::vector<Envelope::Piece>& pieces) {
    std::uint64_t all = 0;
    std::uint64_t steady = 0;
    double before = 0.0;
    const auto note = [&](double step, std::uint64_t times) {
        if (!(step > 0.0)) return;
        const bool isSteady = step < kSteady * before && before < kSteady * step;
        all += times;
        steady += isSteady ? times : times - 1;
        before = step;
    };
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const Envelope::Piece& piece = pieces[i];
        if (i > 0) note(piece.firstTime - pieces[i - 1].lastTime, 1);
        if (piece.count > 1)
            note((piece.lastTime - piece.firstTime) / static_cast<double>(piece.count - 1), piece.count - 1);
    }
    return all == 0 ? 0.0 : static_cast<double>(steady) / static_cast<double>(all);
}
} // namespace

bool Curve::getIsLevel(const Envelope& envelope, const std::string& unit) {
    return envelope.getIsLevel() && unit.empty();
}

bool Curve::getIsConstant(const Envelope& envelope) {
    const std::vector<Envelope::Piece>& pieces = envelope.getPieces();
    return std::all_of(pieces.begin(), pieces.end(), [&](const Envelope::Piece& piece) {
        return piece.smallest == pieces.front().first && piece.largest == pieces.front().first;
    });
}

bool Curve::getIsRare(const Envelope& envelope, std::uint64_t rows) {
    return kRowsOfRare * envelope.getCount() < rows;
}

bool Curve::getIsEven(const Envelope& envelope) {
    if (envelope.getCount() < kFewestOfEven) return false;
    const auto usual = envelope.getUsualStep();
    if (usual && *envelope.getStep(kMostSteps) < kUneven * *usual) return true;
    return partOfSteadySteps(envelope.getPieces()) >= kMostSteps;
}

Curve::Style Curve::getStyle(std::uint64_t rows) const {
    if (getIsLevel(envelope, unit)) return Style::Level;
    return getIsRare(envelope, rows) && !getIsEven(envelope) ? Style::Marks : Style::Line;
}

std::size_t mostPiecesOf(std::size_t curves) {
    return std::clamp(kMostPiecesOfAll / std::max<std::size_t>(curves, 1), kFewestPieces,
                      Envelope::kMostPieces);
}

} // namespace Quillmere::Host
