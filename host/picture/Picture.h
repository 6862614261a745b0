// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/picture/Canvas.h"
#include "host/picture/Curve.h"

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// A part of a picture with a vertical axis of its own.
struct Panel {
    /// `Heat`: a colour for each column and time, as of spectra that follow each other.
    enum class Kind { Curves, Heat };

    /// A curve of one of the picture's tables.
    struct Item {
        std::size_t table = 0;
        std::size_t curve = 0;
        std::string label;
        /// Where curves that lie on each other have to be told apart; none: by their order.
        std::optional<Canvas::Pen> pen = {};
    };

    Kind kind = Kind::Curves;
    std::string title;
    std::string unit;         ///< Of the vertical axis; empty where the curves have none or several.
    std::vector<Item> curves; ///< Lines and marks; the rows of a heat map from below.
    std::vector<Item> levels; ///< What is on or off: a lane each, below the curves.
    std::string axis;         ///< What its horizontal axis tells, if that isn't the picture's.
    double rowsBegin = 0.0;   ///< Of a heat map: what its lowest row stands for,
    double rowsApart = 1.0;   ///< and how far apart they are,
    double rowsEnd = 0.0;     ///< and what the last that could be drawn stands for.
    std::string rowsUnit;     ///< In this unit; empty: rows are counted.
    /// What its vertical axis goes from and to; none: as far as its values do. None of them is beyond.
    std::optional<std::pair<double, double>> range = {};
    double step = 0.0; ///< From one number of that axis to the next; 0: some round step.
};

/// What is drawn: curves, and where. A value.
struct QUILLMERE_API Picture {
    std::string title;
    std::vector<CurveTable> tables;
    std::vector<Panel> panels;
    std::size_t panelsLeftOut = 0; ///< Since there were too many.

    const CurveTable& getTable(const Panel::Item& item) const { return tables[item.table]; }
    const Curve& getCurve(const Panel::Item& item) const { return tables[item.table].curves[item.curve]; }
    /// The first and the last time of all panels with the picture's axis; nothing without a sample.
    std::optional<std::pair<double, double>> getTimes() const;
    /// The same of one panel, whatever its axis.
    std::optional<std::pair<double, double>> getTimes(const Panel& panel) const;
    /// What there was too much of, as `20 panels`; empty: nothing.
    std::string getLeftOut() const;
    /// What the axis tells: `s`, `row`, or the name of a column.
    const std::string& getClock() const;
    /// What second 0 is: a date or a time of day, of each table where they have several; empty: nobody says.
    std::string getOrigin() const;
};

/// How curves are put into panels.
struct PictureWishes {
    static constexpr std::size_t kMostPanels = 40;

    std::string title = {};
    std::vector<std::vector<std::string>> panels =
        {}; ///< Names and patterns of columns for each; none: as they are.
    std::vector<double> spectraAt =
        {};                 ///< Times of rows whose columns are drawn side by side, beside the heat map.
    double rowsApart = 0.0; ///< Of heat maps; 0: rows are counted.
    std::string rowsUnit = {};
    /// What of heat maps and spectra is drawn, in that unit, ends included.
    double lowestRow = -std::numeric_limits<double>::infinity();
    double highestRow = std::numeric_limits<double>::infinity();
};

/// Puts curves into panels: columns that differ by their axis in one, those of a pin in one, single ones with
/// those next to them that have the same unit; zeros and ones as lanes of a panel of their own; sixteen
/// columns or more of one pin, `name[0]` and so on, are a heat map. [any]
QUILLMERE_API Picture arrange(std::vector<CurveTable> tables, const PictureWishes& wishes = {});

} // namespace Quillmere::Host
