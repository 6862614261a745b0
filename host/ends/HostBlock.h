// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/Filter.h"
#include "host/text/Complaint.h"
#include "host/description/GraphDescription.h"
#include "host/ends/ResultAccount.h"
#include "host/ends/SourceAccount.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// A file that an end of a graph reads or writes.
struct EndFile {
    std::string name;
    int descriptor = -1; ///< Of a file that is open already; else -1, and the name says which it is.
};

/// A block of the host: where samples enter a graph and where they leave it. It has pins like every block; what it is
/// told it is told once, before the run, by settings of a kind that blocks don't have (texts and lists of columns).
class QUILLMERE_API HostBlock : public Core::Filter {
public:
    /// For people who ask what there is.
    struct SettingDescription {
        std::string name;
        std::string kind;
        std::string standard; ///< What holds when it isn't given; empty when it must be.
        std::string meaning;
    };

    using Core::Filter::Filter;

    virtual const std::vector<SettingDescription>& getSettingDescriptions() const = 0;

    /// Takes the settings; what is wrong with them is complained of. `folder` is what the graph's paths are relative to.
    virtual void configure(const GraphDescription::Block& description, const std::string& folder,
                           Complaints& complaints) = 0;

    /// The file that it reads or writes, `-` for standard input or output, and where the graph names it.
    const std::string& getPath() const { return path; }
    const Place& getPathPlace() const { return pathPlace; }

    /// Every file that it reads, or that it writes under whatever name until the result is whole. [setup]
    virtual std::vector<EndFile> getFiles() const = 0;

    /// From then on who waits for the other end of a pipe raises `InterruptedException` when a stop is requested.
    /// Requires: of a source, that it is open. [setup]
    virtual void setStop(const std::stop_token& stop) = 0;

protected:
    /// Takes the setting `file`.
    void takeFile(const GraphDescription::Setting& setting, const std::string& folder,
                  Complaints& complaints);
    /// Complains of a setting that there isn't.
    void refuseSetting(const GraphDescription::Setting& setting, Complaints& complaints) const;
    /// Complains of a file that wasn't given.
    void requireFile(const GraphDescription::Block& description, Complaints& complaints) const;

private:
    std::string path;
    Place pathPlace;
};

/// Where samples enter a graph. The runner asks each source for the time of its next sample, lets the earliest go, and
/// runs a round; the source sends in its step.
class QUILLMERE_API Source : public HostBlock {
public:
    using HostBlock::HostBlock;

    /// Opens the recording and looks whether it has what the pins need. Nothing is sent yet.
    virtual void open(Complaints& complaints) = 0;

    /// Gets the next sample ready if none is; false at the end. May wait for who writes a pipe. Raises
    /// `RecordingException` for bad data. [run]
    virtual bool prepare() = 0;
    /// Whether `prepare` wouldn't wait. [run]
    virtual bool getIsPrepared() = 0;
    /// Whether its samples come when they come, from a pipe.
    virtual bool getIsPiped() const = 0;
    /// What to wait on for them. Requires: open.
    virtual int getDescriptor() const = 0;
    /// Seconds. Requires: `prepare()` was true.
    virtual double getNextTimeStamp() const = 0;
    /// Lets the next step send what is ready. [run]
    virtual void release() = 0;

    /// How far it has come: rows [any], and bytes [run].
    virtual std::uint64_t getRows() const = 0;
    virtual std::uint64_t getBytesRead() const = 0;
    virtual std::uint64_t getSize() const = 0;

    /// The columns of its recording, or those that it was told of before it is open. [setup]
    virtual std::vector<std::string> getColumnNames() const = 0;
    /// How many elements each sample of an output has; nothing when that can't be known beforehand. [setup]
    virtual std::optional<std::size_t> getSampleSize(const Core::AbstractOutputPin& pin) const = 0;

    /// The name of the column of which an element of a row on an output is.
    virtual std::string getColumnName(const Core::AbstractOutputPin& output, std::size_t element) const = 0;
    /// Whether an element of the sample that an output sent last stands for a missing value, as the graph declares them: no
    /// surprise to anybody. [run]
    virtual bool getIsMissing(const Core::AbstractOutputPin& output, std::size_t element) const = 0;
    /// What it has seen of its recording so far. Requires: open. [run, or when nothing runs]
    virtual SourceAccount getAccount() const = 0;
    /// What the first rows of a file look like, at most `rows` of them, up to the first that would end the run; nothing for
    /// what can't be read twice, as a pipe. Takes nothing away from the run. Requires: open. [setup]
    virtual std::optional<SourceAccount> lookAhead(std::uint64_t rows) const = 0;
};

/// Where samples leave a graph.
class QUILLMERE_API Sink : public HostBlock {
public:
    using HostBlock::HostBlock;

    /// The input pin of that name, made if it isn't there yet. Requires: not open. [setup]
    virtual Core::AbstractInputPin& requirePin(const std::string& name) = 0;
    /// Complains of settings that don't fit the pins which connections have made. [setup]
    virtual void checkPins(Complaints& complaints) const = 0;
    /// With true, what stands under the result's name may be replaced whoever made it. [setup]
    virtual void setOverwrites(bool flag) = 0;
    /// Complains of a result that couldn't be written, and touches nothing. `recorded` are the columns of the graph's
    /// recordings: a table that has only those isn't taken for a result. [setup]
    virtual void checkFile(const std::vector<std::string>& recorded, Complaints& complaints) = 0;

    /// Starts the result. Raises `RecordingException`. [setup]
    virtual void open() = 0;
    /// The time of the round that comes, in seconds. [run]
    virtual void setStreamTime(double seconds) = 0;
    /// With true, a row is not what came in one round but what came with one time stamp: for a sink whose samples other
    /// threads send. A row is written when every connected pin has given to it, or when a sample of another time comes.
    /// [any, guarded]
    virtual void setGathersByTime(bool flag) = 0;
    /// With true, each row is handed over as soon as it is written, for who reads along. [setup]
    virtual void setWritesThrough(bool flag) = 0;
    /// Waits no more for who reads a pipe: a write that would have to raises `RecordingException`, also one that is under
    /// way. [any]
    virtual void giveUp() = 0;
    /// Ends the result, which is whole: brings it to the disk, still under its partial name. [setup]
    virtual void finish() = 0;
    /// Ends the result: whole and with its final name, not whole but kept, or thrown away. [setup]
    virtual void complete() = 0;
    virtual void abandon() = 0;
    virtual void discard() = 0;

    virtual std::uint64_t getRows() const = 0;
    /// What it has seen of what it wrote. [run, or when nothing runs]
    virtual ResultAccount getAccount() const = 0;
    /// Whether the result has its final name.
    virtual bool getIsComplete() const = 0;
    /// Where the result is as long as it has not.
    virtual std::string getPartialPath() const = 0;
};

} // namespace Quillmere::Host
