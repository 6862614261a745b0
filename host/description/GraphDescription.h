// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/Complaint.h"
#include "host/description/Value.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Quillmere::Host {

/// What a caller changes in a graph file for one run. `option` is what complaints name, such as `--param cutoff=2`.
struct GraphChanges {
    struct Parameter {
        std::string name;
        std::string value; ///< YAML, as in the file.
        std::string option;
    };
    struct Setting {
        std::string block;
        std::string property;
        std::string value; ///< YAML, as in the file.
        std::string option;
    };
    struct File {
        std::string block;
        std::string path; ///< Relative to where the program runs.
        std::string option;
    };
    std::vector<Parameter> parameters;
    std::vector<Setting> settings;
    std::vector<File> inputs;
    std::vector<File> outputs;
};

/// What a link between layouts does when its buffer is full: it loses the oldest sample, or the layout that sends begins no
/// round as long as there is no room.
enum class Overflow { Drop, Wait };

/// A graph file, read and checked as far as that goes without a block: keys, ids, references between blocks, parameters.
/// What a type, a pin or a property may be is for `Graph`, which asks living blocks. Nothing is built here, and no file
/// but the graph's own is touched.
class QUILLMERE_API GraphDescription {
public:
    struct Setting {
        /// Who gave it. A caller's path is relative to where the program runs, one in the file to the file's folder; and
        /// a caller's input must not end up on a sink, which would write over it.
        enum class Origin { File, Caller, CallersInput, CallersOutput };

        std::string name;
        Place where;
        Value value; ///< Parameters filled in.
        Origin origin = Origin::File;
    };
    struct Block {
        std::string id;
        Place where;
        std::string type; ///< Empty when the file gives none, which is a complaint already.
        Place typeWhere;
        std::vector<Setting> settings; ///< In the order in which they are written.
        std::string layout;            ///< The first when the file gives none.
    };
    struct Plugin {
        std::string path; ///< Relative to where the program runs.
        Place where;
    };
    /// Blocks that share a thread when the graph runs live.
    struct Layout {
        std::string id;
        Place where;
    };
    struct Endpoint {
        std::string block; ///< Empty when the file gives none, which is a complaint already.
        std::string pin;   ///< Everything behind the first dot; see `hasPin`.
        bool hasPin = false;
        Place where;

        std::string getText() const { return hasPin ? block + "." + pin : block; }
    };
    struct Connection {
        Endpoint from;
        Endpoint to;
        std::optional<std::uint32_t> buffer;
        std::optional<bool> isNewestFirst; ///< `order: newest` or `order: oldest`.
        std::optional<Overflow> overflow;  ///< `overflow: drop` or `overflow: wait`.
        Place overflowWhere;
        Place where;
    };

    /// What blocks stamp in an offline run whose rules say that they stamp the wall clock.
    enum class Clock { Wall, Stream };

    /// What happens to one setting, command or input when the time of its entry has come.
    struct TimelineChange {
        enum class Kind { Set, Fire, Send };

        Kind kind = Kind::Set;
        std::string block;
        std::string name; ///< Of the setting, the command or the input pin: everything behind the first dot.
        Place where;
        Value value; ///< Parameters filled in; nothing for a command.
    };
    struct TimelineEntry {
        double at = 0.0;                     ///< Stream time in seconds; finite.
        std::vector<TimelineChange> changes; ///< In the order in which they are written.
    };

    /// Reads the file, makes the changes, and complains of everything that is wrong. What could be understood is there
    /// all the same, so that it can be checked further and a user hears of everything at once.
    static GraphDescription read(const std::string& path, const GraphChanges& changes,
                                 Complaints& complaints);

    const std::string& getPath() const { return path; }
    /// The folder of the graph file, which paths in it are relative to.
    std::string getFolder() const;
    /// The name in the file, or the file's own without its ending.
    const std::string& getName() const { return name; }
    /// Plug-ins that the file names.
    const std::vector<Plugin>& getPlugins() const { return plugins; }
    const std::vector<Block>& getBlocks() const { return blocks; }
    /// One at least: `main` where the file gives none.
    const std::vector<Layout>& getLayouts() const { return layouts; }
    const std::vector<Connection>& getConnections() const { return connections; }
    Clock getClock() const { return clock; }
    /// Where the file says which; nowhere when it doesn't.
    const Place& getClockPlace() const { return clockPlace; }
    /// By time; entries of one time as they stand in the file.
    const std::vector<TimelineEntry>& getTimeline() const { return timeline; }
    /// Whether the file could be understood as far as to be worth checking further.
    bool getIsUsable() const { return isUsable; }

    /// Whether an id may read so; ids have no dot, so that what stands behind the first one in a name is a pin's or a
    /// setting's.
    static bool getIsId(std::string_view text);
    static constexpr const char* kIdLetters = "letters, digits, '_' and '-'";

    const Block* findBlock(const std::string& id) const;
    const Layout* findLayout(const std::string& id) const;

private:
    friend class GraphReader;
    using Index = std::unordered_map<std::string, std::size_t>; ///< For an id the place in a list.

    /// Requires: the id isn't there yet.
    void add(Block block);
    void add(Layout layout);

    std::string path;
    std::string name;
    std::vector<Plugin> plugins;
    std::vector<Layout> layouts;
    std::vector<Block> blocks;
    std::vector<Connection> connections;
    std::vector<TimelineEntry> timeline;
    Clock clock = Clock::Wall;
    Place clockPlace;
    Index layoutIndex;
    Index blockIndex;
    bool isUsable = false;
};

} // namespace Quillmere::Host
