// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/Unpacker.h"

#include <memory>
#include <string>

namespace Quillmere::Host {

/// Unpacks what gzip has compressed: any number of such files one behind the other, and NUL bytes behind the
/// last.
class QUILLMERE_API Gunzip final : public Unpacker {
public:
    /// `fileName` is for messages.
    explicit Gunzip(std::string fileName);
    ~Gunzip() override;

    std::size_t unpack(std::string_view& packed, char* to, std::size_t count) override;
    void finish() const override;
    std::uint64_t getBytesTaken() const override { return taken; }

private:
    struct Stream;
    enum class Within { Nothing, File, Padding };

    void beginNext(std::string_view& packed);
    void inflateOn(std::string_view& packed, char* to, std::size_t room);
    [[noreturn]] void refuse(const std::string& what) const;

    std::string name;
    std::unique_ptr<Stream> stream;
    Within within = Within::Nothing;
    std::uint64_t taken = 0;
};

} // namespace Quillmere::Host
