// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace Python {

/// Samples one behind the other in one piece of memory, which can be handed on as it is.
class SampleStore {
public:
    struct Freer {
        void operator()(double* held) const { std::free(held); }
    };
    using Memory = std::unique_ptr<double, Freer>;
    /// Samples of one shape that follow each other.
    struct Run {
        std::size_t count;
        Eigen::Index rows;
        Eigen::Index columns;
    };

    /// As many samples as are to be expected, for who would else have to grow.
    void expect(std::size_t samples) { expected = samples; }
    void append(const Quillmere::Core::MatrixXd& sample) {
        const auto size = static_cast<std::size_t>(sample.size());
        if (last == nullptr || last->rows != sample.rows() || last->columns != sample.cols() ||
            size > capacity - used)
            makeRoom(1, sample.rows(), sample.cols());
        Quillmere::Core::Private::copyElements(memory.get() + used, sample.data(), sample.size());
        used += size;
        ++last->count;
    }
    /// Appends as many samples of 1 by `columns` and says where they are to be written, at once. Raises
    /// `std::bad_alloc`.
    double* appendRows(std::size_t count, Eigen::Index columns) {
        const std::size_t size = count * static_cast<std::size_t>(columns);
        if (last == nullptr || last->rows != 1 || last->columns != columns || size > capacity - used)
            makeRoom(count, 1, columns);
        double* const rows = memory.get() + used;
        used += size;
        last->count += count;
        return rows;
    }
    /// The memory stays.
    void clear() {
        used = 0;
        runs.clear();
        last = nullptr;
    }

    const std::vector<Run>& getRuns() const { return runs; }
    const double* getData() const { return memory.get(); }
    std::size_t getCapacity() const { return capacity; }
    std::size_t getElements() const { return used; }
    /// Gives the memory away; nothing is left.
    Memory takeMemory() {
        clear();
        capacity = 0;
        return std::move(memory);
    }

private:
    /// For more samples of that shape. Raises `std::bad_alloc`.
    void makeRoom(std::size_t count, Eigen::Index rows, Eigen::Index columns);

    Memory memory;
    std::size_t capacity = 0; ///< Elements, as the next.
    std::size_t used = 0;
    std::size_t expected = 0;
    std::vector<Run> runs;
    Run* last = nullptr; ///< Of them; null without any.
};

/// Keeps every sample that an output sends, also several of one step.
class Collector final : public Quillmere::Core::InputPinBase<Quillmere::Core::MatrixXd> {
public:
    explicit Collector(const std::string& name);
    ~Collector() override;

    void clear() override;
    void rebuildStrategy() override {}
    void setConnectedOutput(Quillmere::Core::AbstractOutputPin* output, bool synchronous) override;
    void receive(const Quillmere::Core::Sample& sample) override {
        if (!isOn) return;
        samples.append(sample.value);
        if (keepsTimes) times.push_back(sample.timeStamp);
    }

    bool isOn = false;       ///< Whether anything is kept,
    bool keepsTimes = false; ///< and the times with it.
    SampleStore samples;
    std::vector<double> times;
};

} // namespace Python
