// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// Cells of one line of a table, whose quotes are gone. [any]
QUILLMERE_API std::vector<std::string> tableCells(std::string_view line, char separator);
/// A cell as it may stand in a table with commas. [any]
QUILLMERE_API std::string tableCell(const std::string& text);

/// What is known of recordings besides them: a row for a participant or a file, with a column of names, and
/// those of what is told. Commas, semicolons or tabs part cells.
class QUILLMERE_API StudyTable {
public:
    /// A column that gives a property its value: `set:band.Order`.
    static constexpr const char* kSetting = "set:";

    /// Complains of a file that can't be read, or isn't such a table. [setup]
    StudyTable(const std::string& path, Complaints& complaints);

    /// Without the one of names. One without a name is empty in all rows.
    const std::vector<std::string>& getColumns() const { return columns; }
    const std::string& getFile() const { return file; }
    std::size_t getRows() const { return rows.size(); }

    /// The row of a recording; nothing for one of which the table doesn't tell. `name` is how its file is
    /// called below the root. A row is its own by the whole of its path, with or without ending; or by an id,
    /// which is a folder's name on the way, the file's, or what that begins with in front of a sign that
    /// isn't a letter or digit; else by the deepest folder above the root that is one. Complains of two rows
    /// for one. [any]
    std::optional<std::size_t> findRow(const std::string& path, const std::string& name,
                                       Complaints& complaints) const;
    /// One cell for each column.
    const std::vector<std::string>& getCells(std::size_t row) const { return rows[row].cells; }
    const std::string& getName(std::size_t row) const { return rows[row].name; }
    int getLine(std::size_t row) const { return rows[row].line; }

private:
    struct Row {
        std::string name;
        std::vector<std::string> cells;
        int line = 0;
    };

    bool takeHeader(const std::string& line, Complaints& complaints);
    void checkNames(const std::vector<std::string>& names, Complaints& complaints) const;
    void takeRow(const std::string& line, int number, Complaints& complaints);
    std::vector<std::string> namesOf(const std::string& path, const std::string& name) const;

    std::string file;
    char separator = ',';
    std::size_t nameColumn = 0;
    bool namesPaths = false;
    std::vector<std::string> columns;
    std::vector<Row> rows;
    std::map<std::string, std::vector<std::size_t>> byName;
};

} // namespace Quillmere::Host
