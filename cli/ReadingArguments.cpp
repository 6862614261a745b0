// SPDX-License-Identifier: MIT
#include "cli/ReadingArguments.h"

#include "cli/GraphArguments.h"
#include "host/description/ValueReader.h"
#include "host/ends/RecordingException.h"
#include "host/ends/StandardStream.h"
#include "host/inspection/ClockChoice.h"
#include "host/recording/RecordingForms.h"
#include "host/recording/ResultMark.h"
#include "host/text/Printable.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <utility>

namespace Cli {

using namespace Quillmere::Host;

InspectionSettings readingSettingsOf(const std::vector<std::string>& texts) {
    InspectionSettings settings;
    Complaints complaints;
    for (const std::string& text : texts) {
        const auto [name, value] = splitSetting(text, "--set", "PROPERTY=VALUE");
        const std::string option = "--set " + printable(text, kLongestName);
        if (auto read = readValueText(value, option, false, complaints)) {
            GraphDescription::Setting setting;
            setting.name = name;
            setting.where = {option};
            setting.value = std::move(*read);
            settings.take(std::move(setting), complaints);
        }
    }
    settings.finish(complaints);
    complaints.raise();
    return settings;
}

std::unique_ptr<RecordingReader> openToLook(const std::string& file, const InspectionSettings& said) {
    try {
        return openRecording(file, said.wishes);
    } catch (const UnclearRecording& exception) {
        std::cerr << exception.what() << "\nquillmere: here a property is given by '--set PROPERTY=VALUE'\n";
        return nullptr;
    }
}

namespace {

constexpr std::size_t kMostOfName = 10'000;

/// The name of a table's first column, as a result has it.
std::string firstColumnOf(const std::string& file) {
    std::ifstream table(file);
    std::string name;
    bool isQuoted = false;
    for (char c = 0; name.size() < kMostOfName && table.get(c) && c != '\n' && (c != ',' || isQuoted);) {
        if (c == '"') {
            isQuoted = !isQuoted;
            // A quote in a name is written twice.
            if (isQuoted && !name.empty()) name += c;
        } else {
            name += c;
        }
    }
    return name;
}

/// With that column in seconds; null where that doesn't do.
std::unique_ptr<RecordingReader> openAsResult(const std::string& file, const std::string& time,
                                              InspectionSettings& said) {
    InspectionSettings asResult = said;
    Complaints complaints;
    GraphDescription::Setting setting;
    setting.name = "time";
    setting.value = valueOf(time);
    asResult.take(std::move(setting), complaints);
    asResult.finish(complaints);
    if (!complaints.isEmpty()) return nullptr;
    try {
        std::unique_ptr<RecordingReader> reader = openRecording(file, asResult.wishes);
        static_cast<void>(chooseClock(*reader, asResult));
        said = std::move(asResult);
        return reader;
    } catch (const InterruptedException&) {
        throw;
    } catch (const HostException&) { // it calls its times otherwise
        return nullptr;
    }
}

} // namespace

std::unique_ptr<RecordingReader> openToDraw(const std::string& file, InspectionSettings& said) {
    if (!said.written.empty() || getIsStandardStream(file)) return openToLook(file, said);
    std::unique_ptr<RecordingReader> reader;
    if (ResultMark::getIsOfRun(file)) reader = openAsResult(file, firstColumnOf(file), said);
    if (reader != nullptr) return reader;
    try {
        return openRecording(file, said.wishes);
    } catch (const UnclearRecording&) {
        reader = openAsResult(file, "t", said); // which has lost its mark, as copies have
        if (reader == nullptr) return openToLook(file, said);
    }
    std::cerr << "quillmere: " << file << ": the column 't': taken for seconds, as results have it\n";
    return reader;
}

namespace {
/// Whether the locale's people read more than ASCII.
bool getIsLocaleUtf8() {
    for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* const value = std::getenv(name);
        if (value == nullptr || *value == '\0') continue;
        std::string locale = value;
        std::transform(locale.begin(), locale.end(), locale.begin(),
                       [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
        return locale.find("utf-8") != std::string::npos || locale.find("utf8") != std::string::npos;
    }
    return false;
}

} // namespace

bool getShowsUtf8() {
    return ::isatty(STDOUT_FILENO) != 0 && getIsLocaleUtf8();
}

std::size_t getTextWidth() {
    constexpr std::size_t kUsual = 80;
    constexpr std::size_t kNarrowest = 40;
    constexpr std::size_t kWidest = 400;
    std::size_t width = 0;
    if (const char* const said = std::getenv("COLUMNS"); said != nullptr)
        std::from_chars(said, said + std::strlen(said), width);
    winsize window{};
    if (width == 0 && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0) width = window.ws_col;
    return width == 0 ? kUsual : std::clamp(width, kNarrowest, kWidest);
}

} // namespace Cli
