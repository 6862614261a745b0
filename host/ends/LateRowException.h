// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/RecordingException.h"

namespace Quillmere::Host {

/// What has become of a row after who wrote it had gone on: another thread wrote it to the file. It tells
/// what was raised there, and when that row was.
class QUILLMERE_API LateRowException : public RecordingException {
public:
    LateRowException(const RecordingException& raised, double rowTime)
        : RecordingException(raised.what(), raised.getComplaints()), time(rowTime) {}

    /// Stream time of the row, in seconds.
    double getTime() const noexcept { return time; }

private:
    double time;
};

} // namespace Quillmere::Host
