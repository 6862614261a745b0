// SPDX-License-Identifier: MIT
#include "framework/Quillmere.h"
#include "host/ends/Sink.h"
#include "host/ends/Source.h"
#include "plugin/PluginEntry.h"

#include <algorithm>
#include <atomic>
#include <iostream>
#include <limits>

/// Counts to a hundred, ten numbers a second.
class CountingSource final : public Quillmere::Host::Source {
public:
    static constexpr const char* kTypeName = "CountingSource";
    explicit CountingSource(const std::string& name) : Source(name, true), out("count", this) {}
    const char* getTypeName() const override { return kTypeName; }

    void open(Quillmere::Host::Complaints&) override {}
    bool prepare() override { return next <= 100.0; }                // false at the end
    double getNextTimeStamp() const override { return next / 10.0; } // seconds
    void release() override { isReleased = true; }
    void process() override {
        if (!isReleased) return;
        isReleased = false;
        const double time = getNextTimeStamp();
        Quillmere::Core::resizeSample(out.data.value, 1, 1);
        out.data.value(0) = next++;
        out.send(time);
    }

private:
    Quillmere::Core::OutputPin<Quillmere::Core::MatrixXd> out;
    double next = 1.0;
    bool isReleased = false;
};

/// Prints the largest value that came, when the run has ended well.
class LargestSink final : public Quillmere::Host::Sink {
public:
    static constexpr const char* kTypeName = "LargestSink";
    explicit LargestSink(const std::string& name) : Sink(name, true), in("in", this) {}
    const char* getTypeName() const override { return kTypeName; }

    void open() override {}
    void process() override {
        if (!in.hasData()) return;
        largest = std::max(largest, in.take().maxCoeff());
        ++rows;
    }
    void complete() override {
        std::cout << getName() << ": " << largest << "\n";
        isComplete = true;
    }
    void abandon() override {}
    void discard() override {}
    std::uint64_t getRows() const override { return rows; }
    bool getIsComplete() const override { return isComplete; }

private:
    Quillmere::Core::InputPin<Quillmere::Core::MatrixXd> in;
    double largest = -std::numeric_limits<double>::infinity();
    std::atomic<std::uint64_t> rows = 0; // asked for by any thread
    bool isComplete = false;
};

QUILLMERE_PLUGIN("OwnEnds", "1.0.0", CountingSource, LargestSink)
