// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/HostException.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// Where something stands: in a file at a line and a column, both from 1, or in an option of the command
/// line, which has neither (0).
struct Place {
    std::string file;
    int line = 0;
    int column = 0;
};

/// One thing that is wrong, with a graph or whatever else. Written out it is one line:
/// `file:line:column: part: found ...; expected ...; did you mean ...?`.
/// Nobody else puts such a sentence together: a refusal or a warning in this form is a complaint's text.
struct Complaint {
    /// Made by a constructor: GCC 12 ends a member of an aggregate twice when one behind it finds no memory.
    Complaint(Place place, std::string foundText, std::string expectedText, std::string nearest = {})
        : where(std::move(place)), found(std::move(foundText)), expected(std::move(expectedText)),
          suggestion(std::move(nearest)) {}

    /// How the text tells it.
    enum class Form {
        Parts,             ///< `found ...; expected ...`.
        Sentence,          ///< `found` says all by itself; what was expected is for programs.
        SentenceAndWanted, ///< `found` is a sentence, and behind it comes `; expected ...`.
    };

    Place where;
    std::string part; ///< What it is about of what stands there, as `column 'x'`; empty for all of it.
    std::string found;
    std::string expected;
    std::string suggestion; ///< The nearest thing that is known; empty when nothing is near.
    Form form = Form::Parts;

    /// Told by a sentence of its own: `file: cannot be opened: ...`.
    static QUILLMERE_API Complaint sentence(Place where, std::string found, std::string expected,
                                            Form form = Form::Sentence);

    /// Of a name that isn't among those that there are: `expected` and their list, or `otherwise` when there
    /// is none, and the nearest of them.
    static QUILLMERE_API Complaint unknown(Place where, std::string found, const std::string& name,
                                           const std::vector<std::string>& known,
                                           const std::string& expected = "one of ",
                                           const std::string& otherwise = {});

    QUILLMERE_API std::string getText() const;
};

/// Something that may well not be what the user meant, but can be run. Written out it is one line,
/// `file:line:column: warning: text`, without the place where there is none.
struct Warning {
    Place where;
    std::string text;

    QUILLMERE_API std::string getText() const;
    /// The same for who takes it for an error, part by part.
    QUILLMERE_API Complaint getComplaint() const;
};

/// What is wrong, gathered, so that a user hears of all of it at once; and what is doubtful.
class QUILLMERE_API Complaints {
public:
    void add(const Place& where, std::string found, std::string expected, std::string suggestion = {});
    void add(Complaint complaint);
    void add(const Complaints& others);
    /// Whether enough is wrong: what is added is counted, but nobody will read it, so it needs no texts.
    bool getIsFull() const { return list.size() >= kMostKept; }
    void warn(const Place& where, std::string text);

    /// Whether nothing is wrong; warnings don't count.
    bool isEmpty() const { return list.empty(); }
    /// By line and column; what stands at one place keeps its order.
    std::vector<Complaint> getSorted() const;
    std::vector<Warning> getSortedWarnings() const;
    /// Complaints and warnings beyond those that are kept.
    std::size_t getMore() const { return more; }
    std::size_t getMoreWarnings() const { return moreWarnings; }

    /// Whether anything is wrong; when strict, also whether anything is doubtful.
    bool getIsRefusal(bool isStrict = false) const {
        return !list.empty() || (isStrict && !warnings.empty());
    }
    /// Raises a `GraphException` if so.
    void raise(bool isStrict = false) const;

private:
    /// Of complaints and of warnings, the first that are found. Whoever has so many mends those and looks
    /// again.
    static constexpr std::size_t kMostKept = 50;

    std::vector<Complaint> list;
    std::vector<Warning> warnings;
    std::size_t more = 0; ///< Complaints beyond those that are kept.
    std::size_t moreWarnings = 0;
};

/// A graph that can't be built or run. The text is the complaints, a line each, and behind them the warnings
/// that count as complaints; so are its parts.
class QUILLMERE_API GraphException : public HostException {
public:
    /// `more` is how many there are beyond `complaints` and `warnings`.
    explicit GraphException(const std::vector<Complaint>& complaints,
                            const std::vector<Warning>& warnings = {}, std::size_t more = 0);
};

} // namespace Quillmere::Host
