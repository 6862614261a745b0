// SPDX-License-Identifier: MIT
#include "host/recording/ReadAhead.h"

#include "host/ends/RecordingException.h"
#include "host/recording/RecordingForms.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <bit>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Support::TemporaryFolder;

/// Everything that can be asked of each row, a line each.
std::string told(RecordingReader& reader, const std::vector<std::size_t>& chosen) {
    std::string text;
    std::vector<double> values(chosen.size(), -1.0);
    RecordingReader::Row row = RecordingReader::Row::Sound;
    while ((row = reader.takeRow(values.data())) != RecordingReader::Row::End) {
        const bool isFaulty = row == RecordingReader::Row::Faulty;
        text += std::to_string(reader.getLine()) + (isFaulty ? " " + reader.getFault().getText() : "");
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (reader.getHasAllCells())
                text += " " + std::to_string(std::bit_cast<std::uint64_t>(values[i]));
            if (reader.getIsMissing(i)) text += "m";
            if (reader.getIsEmpty(i)) text += "e" + reader.getFaultOfCell(chosen[i], "one").getText();
        }
        if (reader.getHasOwnTimes()) text += " " + std::to_string(reader.getTime());
        text += reader.getIsCut() ? " cut at " + reader.getPlace() + reader.getRowText() + "\n" : "\n";
    }
    return text;
}

class ReadAheadTest : public testing::Test {
protected:
    std::unique_ptr<RecordingReader> open(const ReadingWishes& wishes) const {
        auto reader = openRecording(folder.path("in.csv"), wishes);
        reader->select(chosen);
        reader->setMissing({"NA"});
        return reader;
    }

    void expectTheSame(const std::string& text, const ReadingWishes& wishes = {}) const {
        folder.write("in.csv", text);
        const auto reader = open(wishes);
        const std::string expected = told(*reader, chosen);
        const auto timeCell = reader->getHasOwnTimes() ? std::nullopt : std::optional<std::size_t>(0);
        ReadAhead ahead(open(wishes), chosen, timeCell, thread);
        EXPECT_TRUE(told(ahead, chosen) == expected);
        EXPECT_EQ(ahead.getBytesRead(), text.size());
        EXPECT_EQ(ahead.getNotes(), reader->getNotes());
        EXPECT_EQ(ahead.getOrigin(), reader->getOrigin());
    }

    /// Rows with something odd in every so many of them.
    static std::string rows(int count, int between) {
        const std::vector<std::string> odd{"0.5,,1", "0.5,x,1", "0.5,NA,1",  ",1,2",
                                           "0.5,1",  "nan,1,2", "0.5,1,2,3", "x,,NA"};
        std::string text = "t,x,y\n";
        for (int i = 0; i < count; ++i)
            text += i % between == between - 1
                        ? odd[static_cast<std::size_t>(i / between) % odd.size()] + "\n"
                        : std::to_string(i) + "," + std::to_string(0.1 * i) + ",-0.0\n";
        return text;
    }

    std::vector<std::size_t> chosen{0, 2, 1}; ///< Columns.
    const TemporaryFolder folder;
    const std::shared_ptr<WorkThread> thread = std::make_shared<WorkThread>();
};

TEST_F(ReadAheadTest, RowsAreThoseOfTheReaderBelow) {
    expectTheSame(rows(100000, 1000000));
}

TEST_F(ReadAheadTest, OddRowsAreToldWhereTheyStand) {
    expectTheSame(rows(60000, 4999));
}

TEST_F(ReadAheadTest, ManyOddRowsAreReadWithoutTheThread) {
    expectTheSame(rows(5000, 7));
    expectTheSame(rows(100, 1));
}

TEST_F(ReadAheadTest, AnEmptyTableHasNoRows) {
    expectTheSame("t,x,y\n");
}

TEST_F(ReadAheadTest, ALastRowWithoutItsEndIsToldAsCut) {
    expectTheSame("t,x,y\n0,1,2\n1,2,3");
}

TEST_F(ReadAheadTest, TimesThatTheReaderMakesGoOverWithTheirRows) {
    std::string text = "t,x,y\n";
    for (int i = 0; i < 30000; ++i)
        text += "2026-05-04 10:00:" + std::to_string(10 + i / 1000) + "." + std::to_string(100 + i % 900) +
                ",1,2\n";
    ReadingWishes wishes;
    wishes.time = {"t"};
    chosen = {1, 2};
    expectTheSame(text, wishes);
}

TEST_F(ReadAheadTest, ItCanBeDoneAwayWithMidway) {
    folder.write("in.csv", rows(100000, 1000000));
    std::vector<double> values(chosen.size());
    for (int taken = 0; taken < 30000; taken += 3000) {
        ReadAhead ahead(open({}), chosen, 0, thread);
        for (int i = 0; i < taken; ++i)
            ahead.takeRow(values.data());
        EXPECT_EQ(values[0], taken == 0 ? 0.0 : taken - 1.0);
    }
}

} // namespace
