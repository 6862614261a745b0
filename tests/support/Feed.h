// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A small language for tests of blocks: `Feed` gives samples to a block's pins, steps it, and records what
/// it sends.
namespace Support {

using Quillmere::Core::MatrixXd;
using Quillmere::Core::Sample;

/// Keeps a copy of every sample that it receives, also of several in one step.
class RecordingPin final : public Quillmere::Core::InputPinBase<MatrixXd> {
public:
    explicit RecordingPin(const std::string& name) : Pin(name, nullptr), InputPinBase(name, nullptr) {}
    ~RecordingPin() override { InputPinBase::detachAll(); }

    void clear() override { samples.clear(); }
    void rebuildStrategy() override {}
    void setConnectedOutput(Quillmere::Core::AbstractOutputPin* output, bool synchronous) override {
        connectedOutput = output;
        isSynchronous = synchronous;
    }
    void receive(const Sample& sample) override { samples.push_back(sample); }

    std::vector<Sample> samples;
};

/// Wires senders to all inputs of a block and recorders to all its outputs, in one thread.
///
///     FilterGain block("gain");
///     Feed feed(block);
///     feed.set("Gain", 2.0);
///     EXPECT_TRUE(agree(feed.run("input", matrix({{1, 2}}), 0.5), matrix({{2, 4}}), same));
class Feed {
public:
    /// `fedBlock` is not owned and must outlive the feed.
    explicit Feed(Quillmere::Core::Filter& fedBlock);

    /// Puts a sample on an input pin; no step yet.
    void give(const std::string& pin, const MatrixXd& value, double timeStamp = 0.0);
    /// One call of `process()`.
    void step() { block.process(); }
    /// `give`, `step`, and the payload of what the step sent on the only, or the named, output; fails the
    /// test and returns an empty matrix if that isn't exactly one sample.
    MatrixXd run(const std::string& pin, const MatrixXd& value, double timeStamp = 0.0,
                 const std::string& output = "");

    /// What was sent on the only, or the named, output since the last `forget`.
    const std::vector<Sample>& sent(const std::string& output = "") const;
    /// The payloads of that.
    std::vector<MatrixXd> values(const std::string& output = "") const;
    /// The last of it; fails the test and returns an empty sample if there is none.
    Sample last(const std::string& output = "") const;
    /// Forgets what was sent on all outputs.
    void forget();

    /// Writes a setting; `T` is the setting's own type (an index of an enumeration is unsigned).
    template <class T>
    void set(const std::string& property, const T& value) {
        typed<T>(property).setValue(value);
    }
    template <class T>
    T get(const std::string& property) {
        return typed<T>(property).getValue();
    }
    void setText(const std::string& property, const std::string& text);
    void fire(const std::string& command);

private:
    template <class T>
    Quillmere::Core::ValueProperty<T>& typed(const std::string& property) {
        return dynamic_cast<Quillmere::Core::ValueProperty<T>&>(block.getProperty(property));
    }
    RecordingPin& recorder(const std::string& output) const;

    Quillmere::Core::Filter& block;
    std::map<std::string, std::unique_ptr<Quillmere::Core::OutputPin<MatrixXd>>> senders;
    std::map<std::string, std::unique_ptr<RecordingPin>> recorders;
};

/// A block's pins and settings in words, one a line, in order of creation: what a catalogue test compares.
///
///     input "in" blocking
///     input "reset" non-blocking
///     output "out"
///     command "Init"
///     range double "RelativeCutOffFreq" 0.050000000000000003 in [0;1] step 9.9999999999999995e-07
///     value int "Size" 3 read-only
///     enum "Mode" 0 of LowPass, HiPass
std::string catalogue(Quillmere::Core::Filter& block);

/// Runs `action` and gives the text of the exception of exactly type `Exception` that it raises ("no
/// exception", or the name of another type, if it doesn't). For Poco's exceptions the text is `message()`.
template <class Exception, class Action>
std::string refusal(Action action) {
    try {
        action();
    } catch (const Exception& exception) {
        if (typeid(exception) != typeid(Exception))
            return std::string("another type: ") + typeid(exception).name();
        if constexpr (std::is_base_of_v<Poco::Exception, Exception>)
            return exception.message();
        else
            return exception.what();
    } catch (const std::exception& exception) {
        return std::string("another type: ") + typeid(exception).name();
    }
    return "no exception";
}

} // namespace Support
