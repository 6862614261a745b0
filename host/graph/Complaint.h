// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Where something stands: in a file at a line and a column, both from 1, or in an option of the command line, which
/// has neither (0).
struct Place {
    std::string file;
    int line = 0;
    int column = 0;
};

/// One thing that is wrong with a graph. Written out it is one line:
/// `file:line:column: found ...; expected ...; did you mean ...?`.
struct Complaint {
    Place where;
    std::string found;
    std::string expected;
    std::string suggestion; ///< The nearest thing that is known; empty when nothing is near.

    QUILLMERE_API std::string getText() const;
};

/// What is wrong, gathered, so that a user hears of all of it at once.
class QUILLMERE_API Complaints {
public:
    void add(const Place& where, std::string found, std::string expected, std::string suggestion = {});
    void add(const Complaints& others);

    bool isEmpty() const { return list.empty(); }
    /// By line and column; what stands at one place keeps its order.
    std::vector<Complaint> getSorted() const;

    /// Raises a `GraphException` if there is any.
    void raise() const;

private:
    std::vector<Complaint> list;
};

/// A graph that can't be built or run. The text is the complaints, a line each.
class QUILLMERE_API GraphException : public std::runtime_error {
public:
    explicit GraphException(std::vector<Complaint> complaints);
    const std::vector<Complaint>& getComplaints() const { return complaints; }

private:
    std::vector<Complaint> complaints;
};

} // namespace Quillmere::Host
