// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/Complaint.h"
#include "host/description/GraphChanges.h"
#include "host/description/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// What a link between layouts does when its buffer is full: it loses the oldest sample, or the layout that
/// sends begins no round as long as there is no room.
enum class Overflow { Drop, Wait };

/// Something that a graph may say outright or by a parameter, or not at all.
template <class T>
struct Given {
    std::optional<T> value;
    Value written; ///< As it is written, where a parameter gives it that isn't filled in yet; else nothing.
    Place where;

    Given() = default;
    Given(T given) : value(std::move(given)) {} // `connection.buffer = 4`

    bool operator==(const Given& other) const { return value == other.value && written == other.written; }
};

/// A graph as a file or a program describes it, without any block: what it is told of types, pins and
/// properties is checked by `Graph`, which asks living ones. It is a value: it can be copied, changed and
/// compared, and `toText` writes it down.
///
/// It says what is written: parameters are filled in, and what isn't said gets its default, by `resolved`.
/// Whatever `isRefused` marks is wrong and was complained of already; it is kept so that the rest of it can
/// be checked as well.
struct QUILLMERE_API GraphDescription {
    struct Setting {
        /// Who gave it. A caller's path is relative to where the program runs, one in the file to the file's
        /// folder; and a caller's input must not end up on a sink, which would write over it.
        enum class Origin { File, Caller, CallersInput, CallersOutput };

        std::string name = {};
        Place where = {};
        Value value = {};
        Origin origin = Origin::File;

        bool operator==(const Setting& other) const { return name == other.name && value == other.value; }
    };
    struct QUILLMERE_API Block {
        std::string id = {};
        Place where = {};
        std::string type = {};
        Place typeWhere = {};
        std::vector<Setting> settings = {}; ///< In the order in which they are written.
        std::string layout = {};            ///< Empty for the first of the graph.
        Place layoutWhere = {};
        Value view = {};
        /// What a caller has replaced or taken out and a parameter gives; it must be right all the same.
        std::vector<Value> replaced = {};
        bool isRefused = false;

        /// Replaces a setting where it stands, so that the order of writing stays, or adds it at the end.
        Block& set(Setting setting);
        Block& set(const std::string& property, Value value);
        bool operator==(const Block& other) const;
    };
    struct Plugin {
        std::string path = {}; ///< Relative to the graph's folder.
        Place where = {};

        bool operator==(const Plugin& other) const { return path == other.path; }
    };
    /// A name that stands for a value, as `${name}`; nothing where a caller must give one.
    struct Parameter {
        std::string name = {};
        Place where = {};
        Value value = {};
        bool isRefused = false;

        bool operator==(const Parameter& other) const { return name == other.name && value == other.value; }
    };
    /// Blocks that share a thread when the graph runs live.
    struct Layout {
        std::string id = {};
        Place where = {};
        Value view = {};

        bool operator==(const Layout& other) const { return id == other.id && view == other.view; }
    };
    struct QUILLMERE_API Endpoint {
        std::string block = {};
        std::string pin = {}; ///< Everything behind the first dot; see `hasPin`.
        bool hasPin = false;
        Place where = {};
        bool isRefused = false;

        /// `block.pin`, or `block` where it has one pin only.
        static Endpoint of(std::string_view text);
        std::string getText() const { return hasPin ? block + "." + pin : block; }
        bool operator==(const Endpoint& other) const { return getText() == other.getText(); }
    };
    struct QUILLMERE_API Connection {
        Endpoint from;
        Endpoint to;
        Given<std::uint32_t> buffer;
        Given<bool> isNewestFirst; ///< `order: newest` or `order: oldest`.
        Given<Overflow> overflow;  ///< `overflow: drop` or `overflow: wait`.
        Place where = {};
        Value view = {};

        bool operator==(const Connection& other) const;
    };

    /// What blocks stamp in an offline run whose rules say that they stamp the wall clock.
    enum class Clock { Wall, Stream };

    /// What happens to one setting, command or input when the time of its entry has come.
    struct QUILLMERE_API TimelineChange {
        enum class Kind { Set, Fire, Send };

        Kind kind = Kind::Set;
        std::string block = {};
        /// Of the setting, the command or the input pin: everything behind the first dot.
        std::string name = {};
        Place where = {};
        Value value = {}; ///< Nothing for a command.
        bool isRefused = false;

        bool operator==(const TimelineChange& other) const;
    };
    struct TimelineEntry {
        Given<double> at = {};                    ///< Stream time in seconds; finite.
        std::vector<TimelineChange> changes = {}; ///< In the order in which they are written.
        Place where = {};
        bool isRefused = false; ///< Its time is.
    };

    /// Reads a file, and complains of everything that is wrong with it as far as that can be known without a
    /// block. What could be understood is there all the same, so that it can be checked further and a user
    /// hears of everything at once. No file but the graph's own is touched.
    static GraphDescription fromFile(const std::string& path, Complaints& complaints);
    /// The same for a text that stands in the file `path`, or would: complaints name it, and what the graph
    /// names is relative to its folder. It isn't touched.
    static GraphDescription fromText(const std::string& text, const std::string& path,
                                     Complaints& complaints);

    /// Adds a block, and a connection between `block.pin` and `block.pin`; what is wrong with them `resolved`
    /// tells. The reference is good until the next one is added.
    Block& addBlock(std::string id, std::string type);
    Connection& connect(std::string_view from, std::string_view to);

    /// The same with what a caller changes, who hears of what there isn't. Nothing of the graph is read
    /// again.
    GraphDescription with(const GraphChanges& changes, Complaints& complaints) const;

    /// The same with every `${name}` replaced by its parameter, without what is wrong in a way that nothing
    /// can be made of, with a layout at least and a layout for each block, and the timeline by time.
    /// Complains of all that is wrong and wasn't complained of yet.
    GraphDescription resolved(Complaints& complaints) const;

    /// The file that says this: keys in one order, and none that says nothing. `fromText` of it is equal, if
    /// nothing is wrong with it; more than 16 MiB are a file that isn't read again. A path that a caller gave
    /// is written in full.
    std::string toText() const;

    /// The name, or the file's own without its ending.
    std::string getName() const;
    /// The folder of the graph file, which paths in it are relative to.
    std::string getFolder() const;
    /// The first of that id, or null. Looks at one after the other; see `IdIndex`.
    const Block* findBlock(std::string_view id) const;
    const Layout* findLayout(std::string_view id) const;

    /// Whether an id may read so; ids have no dot, so that what stands behind the first one in a name is a
    /// pin's or a setting's.
    static bool getIsId(std::string_view text);
    static constexpr const char* kIdLetters = "letters, digits, '_' and '-'";

    /// Whether both say the same, wherever it stands: places, files and who gave a setting don't count.
    bool operator==(const GraphDescription& other) const;

    std::string path; ///< Of the file; empty for a graph of which there is none.
    Place where;
    std::string name; ///< Empty without one of its own.
    Clock clock = Clock::Wall;
    Place clockPlace; ///< Where the file says which; nowhere when it doesn't.
    std::vector<Plugin> plugins;
    std::vector<Parameter> parameters;
    std::vector<Layout> layouts;
    std::vector<Block> blocks;
    std::vector<Connection> connections;
    std::vector<TimelineEntry> timeline; ///< Resolved: by time, those of one time as they are written.
    /// All of it, where parameters give more of it than times and values; else nothing.
    Value writtenTimeline;
    Value view; ///< For programs that draw graphs.
    /// False for a file that couldn't be understood as far as to be worth checking further.
    bool isUsable = true;
};

} // namespace Quillmere::Host
