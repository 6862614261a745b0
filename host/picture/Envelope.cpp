// SPDX-License-Identifier: MIT
#include "host/picture/Envelope.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quillmere::Host {

namespace {

void join(Envelope::Piece& piece, const Envelope::Piece& next) {
    if (next.lastTime >= piece.lastTime) {
        piece.lastTime = next.lastTime;
        piece.last = next.last;
    }
    piece.smallest = std::min(piece.smallest, next.smallest);
    piece.largest = std::max(piece.largest, next.largest);
    piece.count += next.count;
}

} // namespace

/// Where the piece begins that a time falls into; exact, since the width is a power of two.
double Envelope::beginOf(double time) const {
    const double start = std::floor(time / width) * width;
    return std::isfinite(start) ? start : time; // of times that no clock tells
}

void Envelope::enter(double time, double value) {
    begin = beginOf(time);
    const auto isBefore = [this](const Piece& piece, double start) {
        return beginOf(piece.firstTime) < start;
    };
    auto place = pieces.end();
    if (!pieces.empty() && !isBefore(pieces.back(), begin))
        place = std::lower_bound(pieces.begin(), pieces.end(), begin, isBefore);
    if (place == pieces.end() || beginOf(place->firstTime) != begin)
        place = pieces.insert(place, Piece{time, time, value, value, value, value, 0, isBreaking});
    isBreaking = false;
    add(*place, time, value);
    current = static_cast<std::size_t>(place - pieces.begin());
    end = begin + width;
    while (pieces.size() > most)
        coarsen();
}

void Envelope::coarsen() {
    width *= 2.0;
    std::size_t kept = 0;
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        if (beginOf(pieces[i].firstTime) == beginOf(pieces[kept].firstTime))
            join(pieces[kept], pieces[i]);
        else
            pieces[++kept] = pieces[i];
    }
    pieces.resize(kept + 1);
    // Nobody is in a piece: the next sample finds its own.
    begin = std::numeric_limits<double>::infinity();
    end = -begin;
}

std::optional<double> Envelope::getUsualStep() const {
    return getStep(0.5);
}

std::optional<double> Envelope::getStep(double part) const {
    std::vector<std::pair<double, std::uint64_t>> steps;
    std::uint64_t all = 0;
    const auto note = [&](double step, std::uint64_t times) {
        if (!(step > 0.0)) return;
        steps.emplace_back(step, times);
        all += times;
    };
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const Piece& piece = pieces[i];
        if (piece.count > 1)
            note((piece.lastTime - piece.firstTime) / static_cast<double>(piece.count - 1), piece.count - 1);
        if (i > 0) note(piece.firstTime - pieces[i - 1].lastTime, 1);
    }
    if (steps.empty()) return std::nullopt;
    std::sort(steps.begin(), steps.end());
    double left = part * static_cast<double>(all);
    for (const auto& [step, times] : steps) {
        left -= static_cast<double>(times);
        if (left <= 0.0) return step;
    }
    return steps.back().first;
}

Envelope Envelope::getCoarser(std::size_t mostPieces) const {
    Envelope coarser = *this;
    coarser.most = mostPieces;
    while (coarser.pieces.size() > mostPieces)
        coarser.coarsen();
    return coarser;
}

} // namespace Quillmere::Host
