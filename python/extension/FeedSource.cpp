// SPDX-License-Identifier: MIT
#include "python/extension/FeedSource.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <poll.h>
#include <system_error>
#include <utility>

namespace Python {

using namespace Quillmere::Host;

namespace {
constexpr int kBetweenLooks = 100; ///< Milliseconds, of who waits for a row or a stop.
} // namespace

Feed::Feed(std::vector<Pin> feedPins, std::optional<double> rowRate)
    : pins(std::move(feedPins)), rate(rowRate), event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (event < 0) throw std::system_error(errno, std::generic_category(), "an event for rows that are fed");
    for (const Pin& pin : pins)
        columns += pin.columns;
    current.resize(columns);
}

Feed::~Feed() {
    ::close(event);
}

double Feed::nextStamp(const double* stated, std::optional<double> first) {
    if (stated != nullptr) {
        counted = {.from = *stated, .rows = 1};
        return *stated;
    }
    if (rate) return counted.from + static_cast<double>(counted.rows++) / *rate;
    if (first) return *first;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

bool Feed::give(const double* from, std::size_t count, const double* rowTimes, std::optional<double> first) {
    const std::lock_guard lock(state);
    if (hasEnded) return false;
    if (first) counted = {.from = *first, .rows = 0};
    for (std::size_t i = 0; i < count; ++i)
        times.push_back(nextStamp(rowTimes == nullptr ? nullptr : rowTimes + i, first));
    values.insert(values.end(), from, from + count * columns);
    if (count > 0) (void)::eventfd_write(event, 1);
    return true;
}

void Feed::end() {
    const std::lock_guard lock(state);
    hasEnded = true;
    (void)::eventfd_write(event, 1);
}

bool Feed::getIsReady() const {
    const std::lock_guard lock(state);
    return hasEnded || !times.empty();
}

bool Feed::getIsDone() const {
    const std::lock_guard lock(state);
    return isDone;
}

void Feed::clearEvent() const {
    eventfd_t count = 0;
    (void)::eventfd_read(event, &count);
}

std::optional<Feed::Row> Feed::take(const std::stop_token& stop) {
    for (;;) {
        {
            const std::lock_guard lock(state);
            if (!times.empty()) {
                const Row row{.time = times.front(), .values = current.data()};
                times.pop_front();
                for (double& value : current) {
                    value = values.front();
                    values.pop_front();
                }
                if (times.empty() && !hasEnded) clearEvent();
                return row;
            }
            if (hasEnded) {
                isDone = true;
                return std::nullopt;
            }
        }
        if (stop.stop_requested()) return std::nullopt;
        pollfd waited{.fd = event, .events = POLLIN, .revents = 0};
        (void)::poll(&waited, 1, kBetweenLooks);
    }
}

FeedSource::FeedSource(const std::string& instanceName, std::shared_ptr<Feed> rows)
    : Source(instanceName, true), feed(std::move(rows)) {
    for (const Feed::Pin& pin : feed->getPins())
        outputs.emplace_back(pin.name, this);
}

FeedSource::~FeedSource() = default;

bool FeedSource::prepare() {
    if (!row) row = feed->take(stop);
    return row.has_value();
}

void FeedSource::process() {
    if (!isReleased || !row) return;
    isReleased = false;
    const double* values = row->values;
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        const std::size_t columns = feed->getPins()[i].columns;
        Quillmere::Core::MatrixXd& sample = outputs[i].data.value;
        Quillmere::Core::resizeSample(sample, 1, static_cast<Eigen::Index>(columns));
        Quillmere::Core::Private::copyElements(sample.data(), values, sample.size());
        values += columns;
    }
    lastTime = row->time;
    if (rowCount.get() == 0) firstTime = lastTime;
    rowCount.add(1);
    row.reset();
    for (auto& output : outputs)
        output.send(lastTime);
}

std::optional<RecordedSource::Shape>
FeedSource::getSampleShape(const Quillmere::Core::AbstractOutputPin& pin) const {
    for (std::size_t i = 0; i < outputs.size(); ++i)
        if (&outputs[i] == &pin) return Shape{1, feed->getPins()[i].columns};
    return std::nullopt;
}

std::optional<SampleRate> FeedSource::getSampleRate(const Quillmere::Core::AbstractOutputPin&) const {
    if (!feed->getRate()) return std::nullopt;
    return SampleRate{.perSecond = *feed->getRate()};
}

RecordedSource::Cell FeedSource::getCell(const Quillmere::Core::AbstractOutputPin& output,
                                         std::size_t element) const {
    return {rowCount.get(), output.getName() + "[" + std::to_string(element) + "]"};
}

SourceAccount FeedSource::getAccount() const {
    SourceAccount account;
    account.rows = rowCount.get();
    account.firstTime = firstTime;
    account.lastTime = lastTime;
    return account;
}

} // namespace Python
