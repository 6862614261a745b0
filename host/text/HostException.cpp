// SPDX-License-Identifier: MIT
#include "host/text/HostException.h"

#include "host/text/Complaint.h"

namespace Quillmere::Host {

HostException::HostException(const Complaint& complaint) : HostException(complaint.getText(), {complaint}) {}

HostException::HostException(const std::string& text, const std::vector<Complaint>& list)
    : std::runtime_error(text), complaints(std::make_shared<const std::vector<Complaint>>(list)) {}

namespace {
const std::vector<Complaint> kNone;
} // namespace

const std::vector<Complaint>& HostException::getComplaints() const noexcept {
    return complaints == nullptr ? kNone : *complaints;
}

const std::vector<Complaint>& complaintsOf(const std::exception& exception) noexcept {
    const auto* const own = dynamic_cast<const HostException*>(&exception);
    return own == nullptr ? kNone : own->getComplaints();
}

} // namespace Quillmere::Host
