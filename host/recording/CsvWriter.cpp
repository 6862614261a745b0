// SPDX-License-Identifier: MIT
#include "host/recording/CsvWriter.h"

#include <algorithm>

namespace Quillmere::Host {

CsvWriter::CsvWriter(ResultFile& target)
    : file(target), buffer(kBufferSize), cursor(buffer.data()), bufferEnd(buffer.data() + buffer.size()) {}

void CsvWriter::writeHeader(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        const bool quoted = name.empty() || name.find_first_of(",\"\r\n") != std::string::npos ||
                            name.front() == '#' || name.front() == ' ' || name.back() == ' ';
        if (!quoted) {
            writeText(name);
        } else {
            writeText("\"");
            for (const char c : name)
                writeText(c == '"' ? std::string_view("\"\"") : std::string_view(&c, 1));
            writeText("\"");
        }
        writeText(",");
    }
    cursor[-1] = '\n';
}

void CsvWriter::writeText(std::string_view text) {
    for (const char c : text) {
        reserve();
        *cursor++ = c;
    }
}

void CsvWriter::drain() {
    const std::ptrdiff_t count = cursor - buffer.data() - 1;
    if (count <= 0) return;
    file.write(buffer.data(), static_cast<std::size_t>(count));
    buffer.front() = cursor[-1];
    cursor = buffer.data() + 1;
}

void CsvWriter::flush() {
    file.write(buffer.data(), static_cast<std::size_t>(cursor - buffer.data()));
    cursor = buffer.data();
}

} // namespace Quillmere::Host
