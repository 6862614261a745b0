// SPDX-License-Identifier: MIT
#include "host/description/ValueEvents.h"

#include "host/description/ValueReader.h"

#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/exceptions.h>
#include <yaml-cpp/mark.h>
#include <yaml-cpp/parser.h>

#include <algorithm>
#include <sstream>

namespace Quillmere::Host {

namespace {
constexpr const char* kSmaller = "a smaller graph";

/// The reader holds every list, map and mark of a flow in memory before it tells of the first; a text of
/// nothing else would take gigabytes.
constexpr std::ptrdiff_t kMostMarks = 2 * static_cast<std::ptrdiff_t>(kMostValues);

bool isMark(char c) {
    return c == '[' || c == '{' || c == ',' || c == '!' || c == '&' || c == '*';
}

[[noreturn]] void refuse(const YAML::Mark& mark, const std::string& found, const std::string& expected) {
    throw ValueRefusal(mark.line, mark.column, found, expected);
}

/// Gathers the events of one document.
class Gatherer final : public YAML::EventHandler {
public:
    void OnDocumentStart(const YAML::Mark&) override {}
    void OnDocumentEnd() override {}
    void OnNull(const YAML::Mark& mark, YAML::anchor_t anchor) override { add(mark, anchor); }
    void OnAlias(const YAML::Mark& mark, YAML::anchor_t anchor) override {
        const std::size_t target = anchors.at(anchor);
        if (std::find(open.begin(), open.end(), target) != open.end())
            refuse(mark, "a value that contains itself", "a reference to a value that has ended");
        ValueEvent& event = add(mark, 0);
        event.kind = ValueEvent::Kind::Reference;
        event.other = target;
    }
    void OnScalar(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                  const std::string& value) override {
        ValueEvent& event = add(mark, anchor);
        event.kind = ValueEvent::Kind::Scalar;
        event.text = value;
        event.isQuoted = tag == "!" || tag == "tag:yaml.org,2002:str";
    }
    void OnSequenceStart(const YAML::Mark& mark, const std::string&, YAML::anchor_t anchor,
                         YAML::EmitterStyle::value) override {
        begin(mark, anchor, ValueEvent::Kind::List);
    }
    void OnSequenceEnd() override { end(); }
    void OnMapStart(const YAML::Mark& mark, const std::string&, YAML::anchor_t anchor,
                    YAML::EmitterStyle::value) override {
        begin(mark, anchor, ValueEvent::Kind::Map);
    }
    void OnMapEnd() override { end(); }

    std::vector<ValueEvent> events;

private:
    ValueEvent& add(const YAML::Mark& mark, YAML::anchor_t anchor) {
        if (values++ == kMostValues) refuse(mark, "more than a million values", kSmaller);
        if (anchor != 0) {
            anchors.resize(std::max(anchors.size(), anchor + 1));
            anchors[anchor] = events.size();
        }
        ValueEvent& event = events.emplace_back();
        event.line = mark.line;
        event.column = mark.column;
        event.other = events.size();
        return event;
    }

    void begin(const YAML::Mark& mark, YAML::anchor_t anchor, ValueEvent::Kind kind) {
        if (open.size() == static_cast<std::size_t>(kDeepestValue))
            refuse(mark, "lists or maps more than " + std::to_string(kDeepestValue) + " levels deep",
                   "fewer");
        open.push_back(events.size());
        add(mark, anchor).kind = kind;
    }

    void end() {
        events.emplace_back().kind = ValueEvent::Kind::End;
        events[open.back()].other = events.size();
        open.pop_back();
    }

    std::size_t values = 0;
    std::vector<std::size_t> open;    ///< Where the lists and maps around begin.
    std::vector<std::size_t> anchors; ///< For each anchor the event of what it names.
};

/// Hears of a document behind the first. That alone is told: such a document may take no text, and then there
/// would be another one behind it, without end.
class SecondDocument final : public YAML::EventHandler {
public:
    SecondDocument(const std::string& whole, const std::string& single) : text(whole), one(single) {}

    void OnDocumentStart(const YAML::Mark& mark) override {
        const bool isMarked =
            mark.pos >= 0 &&
            text.compare(std::min(static_cast<std::size_t>(mark.pos), text.size()), 3, "---") == 0;
        refuse(mark, isMarked ? "a second document" : "more text behind the end of the first value", one);
    }
    void OnDocumentEnd() override {}
    void OnNull(const YAML::Mark&, YAML::anchor_t) override {}
    void OnAlias(const YAML::Mark&, YAML::anchor_t) override {}
    void OnScalar(const YAML::Mark&, const std::string&, YAML::anchor_t, const std::string&) override {}
    void OnSequenceStart(const YAML::Mark&, const std::string&, YAML::anchor_t,
                         YAML::EmitterStyle::value) override {}
    void OnSequenceEnd() override {}
    void OnMapStart(const YAML::Mark&, const std::string&, YAML::anchor_t,
                    YAML::EmitterStyle::value) override {}
    void OnMapEnd() override {}

private:
    const std::string& text;
    const std::string& one;
};
} // namespace

std::vector<ValueEvent> valueEvents(const std::string& text, const std::string& aGraph,
                                    const std::string& one) {
    if (std::count_if(text.begin(), text.end(), isMark) > kMostMarks)
        refuse(YAML::Mark::null_mark(), "more than two million brackets, braces and commas", kSmaller);
    try {
        std::istringstream stream(text);
        YAML::Parser parser(stream);
        Gatherer first;
        SecondDocument second(text, one);
        if (parser.HandleNextDocument(first)) parser.HandleNextDocument(second);
        return std::move(first.events);
    } catch (const YAML::Exception& exception) {
        refuse(exception.mark, "text that is neither YAML nor JSON (" + exception.msg + ")", aGraph);
    }
}

} // namespace Quillmere::Host
