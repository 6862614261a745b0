// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/Complaint.h"
#include "host/text/HostException.h"

#include <vector>

namespace Quillmere::Host {

/// A recording that cannot be read or a result that cannot be written. The text is for the user: which file,
/// where in it, what was found and what was expected.
class QUILLMERE_API RecordingException : public HostException {
public:
    using HostException::HostException;
};

/// A recording that can be read in more than one way, or not without being told something: the text says
/// which property of the graph tells it.
class QUILLMERE_API UnclearRecording : public RecordingException {
public:
    using RecordingException::RecordingException;
};

/// Who waited for the other end of a pipe was told to stop. Nothing is wrong with the recording or the
/// result.
class QUILLMERE_API InterruptedException : public RecordingException {
public:
    InterruptedException() : RecordingException("interrupted", std::vector<Complaint>()) {}
};

} // namespace Quillmere::Host
