// SPDX-License-Identifier: MIT
#include "host/text/CaughtText.h"

#include "host/text/Printable.h"

#include <Poco/Exception.h>

#include <new>

namespace Quillmere::Host {

std::string caughtText() {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& exception) {
        return wordsOf(exception);
    } catch (...) {
        return "something that is no std::exception";
    }
}

std::string wordsOf(const std::exception& exception) {
    if (dynamic_cast<const std::bad_alloc*>(&exception) != nullptr) return "out of memory";
    if (const auto* const poco = dynamic_cast<const Poco::Exception*>(&exception))
        return printable(poco->displayText(), kLongestReason);
    const char* const text = exception.what();
    if (text == nullptr || *text == '\0') return "an exception without a text";
    return printable(text, kLongestReason);
}

std::string messageOf(const Poco::Exception& exception) {
    return exception.message().empty() ? exception.name() : exception.message();
}

} // namespace Quillmere::Host
