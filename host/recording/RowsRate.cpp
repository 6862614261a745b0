// SPDX-License-Identifier: MIT
#include "host/recording/RowsRate.h"

#include "host/ends/RecordingException.h"

#include <cstdint>

namespace Quillmere::Host {

RepairedRows::Row takeAhead(RepairedRows& rows, std::string* fault) {
    try {
        RepairedRows::Row row = rows.take();
        while (row == RepairedRows::Row::Nothing)
            row = rows.take();
        return row;
    } catch (const RecordingException& exception) {
        if (fault != nullptr) *fault = exception.what();
        return RepairedRows::Row::End;
    }
}

RowsRate measureRows(RepairedRows& ahead, std::optional<std::size_t> pin) {
    RowsRate found;
    RateMeter meter;
    for (std::uint64_t i = 0; i < kRowsMeasured; ++i) {
        const RepairedRows::Row row = takeAhead(ahead, &found.reason);
        if (row == RepairedRows::Row::End) break;
        if (row != RepairedRows::Row::Taken) continue;
        const bool hasSample = !pin || ahead.getHasSample(*pin);
        found.isSparse = found.isSparse || !hasSample;
        if (hasSample) meter.take(ahead.getTime());
    }
    found.rate = meter.measure();
    if (found.reason.empty()) found.reason = "no two of its samples have times that grow";
    return found;
}

} // namespace Quillmere::Host
