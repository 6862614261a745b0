// SPDX-License-Identifier: MIT
#include "host/text/CaughtText.h"

#include "host/text/Printable.h"

#include <Poco/Exception.h>

#include <exception>
#include <new>

namespace Quillmere::Host {

std::string caughtText() {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const Poco::Exception& exception) {
        return printable(exception.displayText(), kLongestReason);
    } catch (const std::exception& exception) {
        const char* const text = exception.what();
        if (text == nullptr || *text == '\0') return "an exception without a text";
        return printable(text, kLongestReason);
    } catch (...) {
        return "something that is no std::exception";
    }
}

} // namespace Quillmere::Host
