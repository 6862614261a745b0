// SPDX-License-Identifier: MIT
#pragma once

/// Marks what a library of ours exports, `libQuillmereCore.so` or `libQuillmereHost.so`; everything else
/// stays inside it.
#define QUILLMERE_API __attribute__((visibility("default")))
