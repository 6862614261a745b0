// SPDX-License-Identifier: MIT
#include "host/recording/Hdf5Handle.h"

#include "host/text/Printable.h"

namespace Quillmere::Host {

namespace {

constexpr std::size_t kLongestText = 100;

std::mutex& theLibrary() {
    static std::mutex mutex;
    return mutex;
}

/// The innermost call knows best; a walk upward meets it first.
herr_t takeFirst(unsigned, const H5E_error2_t* error, void* to) {
    std::string& text = *static_cast<std::string*>(to);
    if (text.empty() && error->desc != nullptr) text = printable(error->desc, kLongestText);
    return 0;
}

} // namespace

Hdf5Turn::Hdf5Turn() : lock(theLibrary()) {
    H5Eget_auto2(H5E_DEFAULT, &print, &printData);
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
}

Hdf5Turn::~Hdf5Turn() {
    H5Eset_auto2(H5E_DEFAULT, print, printData);
}

std::string Hdf5Turn::getErrorText() {
    std::string text;
    H5Ewalk2(H5E_DEFAULT, H5E_WALK_UPWARD, takeFirst, &text);
    return text.empty() ? "" : " (" + text + ")";
}

} // namespace Quillmere::Host
