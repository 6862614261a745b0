// SPDX-License-Identifier: MIT
#pragma once

/// Marks what `libQuillmereCore.so` exports; everything else stays inside it.
#define QUILLMERE_API __attribute__((visibility("default")))
