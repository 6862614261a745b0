// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Quillmere::Host {

/// Unpacks what a file holds compressed, piece by piece. What is damaged, cut or followed by something else
/// raises `RecordingException`.
class QUILLMERE_API Unpacker {
public:
    Unpacker() = default;
    Unpacker(const Unpacker&) = delete;
    Unpacker& operator=(const Unpacker&) = delete;
    virtual ~Unpacker() = default;

    /// Takes bytes from the begin of `packed` and puts at most `count` into `to`; gives how many. It takes
    /// all before it gives none, and then it wants more. [run]
    virtual std::size_t unpack(std::string_view& packed, char* to, std::size_t count) = 0;
    /// Says that nothing comes behind what `unpack` got. [run]
    virtual void finish() const = 0;
    /// Bytes that `unpack` took. [run]
    virtual std::uint64_t getBytesTaken() const = 0;
};

} // namespace Quillmere::Host
