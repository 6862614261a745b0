// SPDX-License-Identifier: MIT
#include "host/recording/WavForm.h"

#include "host/ends/RecordingException.h"
#include "host/recording/RecordingForms.h"
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

using Quillmere::Host::openRecording;
using Quillmere::Host::RecordingException;
using Quillmere::Host::RecordingReader;
using Rows = std::vector<std::vector<double>>;

/// Of two channels.
void write(const std::string& path, int form, const std::vector<double>& values, int rate = 1000) {
    SF_INFO facts{};
    facts.samplerate = rate;
    facts.channels = 2;
    facts.format = form;
    SNDFILE* const sound = sf_open(path.c_str(), SFM_WRITE, &facts);
    const auto count = static_cast<sf_count_t>(values.size());
    EXPECT_EQ(sf_write_double(sound, values.data(), count), count);
    sf_close(sound);
}

Rows rowsOf(RecordingReader& reader) {
    reader.select({0, 1});
    Rows rows;
    std::vector<double> row(2);
    while (reader.takeRow(row.data()) != RecordingReader::Row::End)
        rows.push_back(row);
    return rows;
}

class WavForm : public Support::GraphFixture {
protected:
    /// What is said behind the file's name.
    std::string refusal() const {
        try {
            rowsOf(*openRecording(path));
        } catch (const RecordingException& exception) {
            return std::string(exception.what()).substr(path.size());
        }
        return "";
    }

    const std::string path = folder.path("in.wav");
};

TEST_F(WavForm, RowsAreTheSamplesOfAllChannelsAcrossPieces) {
    std::vector<double> values(200'000);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = std::sin(static_cast<double>(i));
    write(path, SF_FORMAT_WAV | SF_FORMAT_DOUBLE, values, 44100);
    const auto reader = openRecording(path);
    EXPECT_EQ(reader->getColumnNames(), (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(reader->getRate(), 44100.0);
    const Rows rows = rowsOf(*reader);
    ASSERT_EQ(rows.size(), values.size() / 2);
    std::size_t different = 0;
    for (std::size_t i = 0; i < values.size(); ++i)
        different += rows[i / 2][i % 2] != values[i];
    EXPECT_EQ(different, 0u);
    EXPECT_EQ(reader->getBytesRead(), reader->getSize());
}

TEST_F(WavForm, WholeNumbersAreScaledToOne) {
    const std::vector<double> values{0.5, -1, 0.25, -0.125};
    for (const int form : {SF_FORMAT_PCM_16, SF_FORMAT_PCM_24, SF_FORMAT_PCM_32, SF_FORMAT_FLOAT}) {
        write(path, SF_FORMAT_WAV | form, values);
        const Rows rows = rowsOf(*openRecording(path));
        ASSERT_EQ(rows.size(), 2u);
        for (std::size_t i = 0; i < values.size(); ++i)
            EXPECT_NEAR(rows[i / 2][i % 2], values[i], 1.0 / 32768) << form; // the writer's own rounding
    }
    // 16 bits, one channel, 1000 a second: -32768, 1, 32767.
    const std::string bytes(
        "RIFF\x2A\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0\xE8\3\0\0\xD0\7\0\0\2\0\x10\0data\6\0\0\0"
        "\0\x80\1\0\xFF\x7F",
        50);
    const auto reader = openRecording(folder.write("in.wav", bytes));
    reader->select({0});
    for (const double wanted : {-1.0, 1.0 / 32768, 32767.0 / 32768}) {
        double value = 0.0;
        ASSERT_EQ(reader->takeRow(&value), RecordingReader::Row::Sound);
        EXPECT_EQ(value, wanted);
    }
}

TEST_F(WavForm, TheRateIsTheFilesOwnUnlessTheGraphSaysOne) {
    write(path, SF_FORMAT_WAV | SF_FORMAT_DOUBLE, {1, 2, 3, 4}, 4);
    const auto graph = [](const std::string& rate) {
        return "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.wav, " + rate +
               "pins: {x: 2}}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv, overwrite: "
               "true}}\nconnections:\n  - {from: in.x, to: out.x}\n";
    };
    EXPECT_EQ(run(graph("")), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,2\n0.25,4\n");
    EXPECT_EQ(run(graph("rate: 2, ")), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,2\n0.5,4\n");
}

TEST_F(WavForm, DamagedFilesAreRefusedAndCrashNothing) {
    write(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, std::vector<double>(40, 0.5));
    const std::string bytes = folder.read("in.wav");
    for (std::size_t length = 12; length < bytes.size(); ++length) {
        folder.write("in.wav", bytes.substr(0, length));
        EXPECT_EQ(refusal(), ": found its end behind " + std::to_string(length) + " of " +
                                 std::to_string(bytes.size()) + " bytes; expected a WAV file that is whole");
    }
    int refused = 0;
    for (std::size_t bit = 0; bit < 8 * bytes.size(); bit += 3) {
        std::string damaged = bytes;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
        folder.write("in.wav", damaged);
        refused += refusal().empty() ? 0 : 1;
    }
    EXPECT_GT(refused, 7);
    folder.write("in.wav", std::string("RIFF\4\0\0\0WAVE", 12) + std::string(20, '\0'));
    EXPECT_TRUE(refusal().starts_with(": found a WAV file that can't be read (")) << refusal();
}

} // namespace
