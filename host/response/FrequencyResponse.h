// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/Filter.h"
#include "host/response/PublishedDesign.h"
#include "host/text/HostException.h"

#include <complex>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// A block whose response can't be measured: no such pin, or samples that it doesn't answer one by one.
class QUILLMERE_API ResponseException : public HostException {
public:
    using HostException::HostException;
};

/// What a filter does at one frequency, as output over input. A part that isn't finite stands for a response
/// that could not be measured: the block grows without bound, doesn't settle, or sends numbers that aren't
/// finite.
struct ResponsePoint {
    double frequency; ///< As a fraction of the Nyquist frequency.
    std::complex<double> sine;
    std::complex<double> impulse;
    std::complex<double> design; ///< Meaningful if the response has a design.
};

/// The angle of a response, -180 to 180.
QUILLMERE_API double getDegrees(std::complex<double> response);

struct QUILLMERE_API FrequencyResponse {
    std::vector<ResponsePoint> points;
    bool hasDesign = false;

    /// At how many frequencies the sine could not be measured.
    std::size_t countUnsettled() const;
};

struct ResponseSettings {
    std::size_t intervals = 100; ///< Frequencies are 0, 1/intervals, ... 1.
    std::string input;           ///< Pins; when empty "in" and "out", or the only ones.
    std::string output;
};

/// A new block, set as it shall be measured, its pins without links; what keeps it alive comes along.
using BlockMaker = std::function<std::shared_ptr<Core::Filter>()>;

/// Measures what a block really does, by running new ones on 1-by-1 samples: on a cosine of each frequency
/// until two windows agree, and on a single 1 after zeros, whose answer is transformed. A block that is
/// linear and the same at all times gives the same both ways.
///
/// A block that publishes a design also gives the response that its design promises.
/// Raises `ResponseException`, and what the block raises.
QUILLMERE_API FrequencyResponse measureResponse(const BlockMaker& makeBlock,
                                                const ResponseSettings& settings);

/// Whether a block has both pins of those that publish their design with the first sample.
QUILLMERE_API bool getPublishesDesign(const Core::Filter& block);

/// The design that a block publishes when it is given a 0; none when it publishes none. Raises what
/// `measureResponse` raises.
QUILLMERE_API std::optional<PublishedDesign> measureDesign(const BlockMaker& makeBlock);

} // namespace Quillmere::Host
