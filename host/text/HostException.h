// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace Quillmere::Host {

struct Complaint;

/// Whatever the host raises of its own accord: graphs, plug-ins, recordings, results, requests and runs that
/// it refuses. The text is for the user, and goes with the complaints that it is made of: none is made of a
/// text alone. What a plug-in or the system raises comes through as it is, where nothing else is said.
class QUILLMERE_API HostException : public std::runtime_error {
public:
    /// The text is the complaint's.
    explicit HostException(const Complaint& complaint);
    /// What `text` tells in other words, or together with more.
    HostException(const std::string& text, const std::vector<Complaint>& complaints);

    /// What is wrong, part by part; empty where nothing is, as when somebody has ended a wait.
    const std::vector<Complaint>& getComplaints() const noexcept;

private:
    /// Shared, since copying an exception must not fail.
    std::shared_ptr<const std::vector<Complaint>> complaints;
};

/// What is wrong, part by part, if the host has raised it; else nothing.
QUILLMERE_API const std::vector<Complaint>& complaintsOf(const std::exception& exception) noexcept;

} // namespace Quillmere::Host
