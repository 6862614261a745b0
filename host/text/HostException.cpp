// SPDX-License-Identifier: MIT
#include "host/text/HostException.h"

#include "host/text/Complaint.h"

namespace Quillmere::Host {

HostException::HostException(const std::string& text) : std::runtime_error(text) {}

HostException::HostException(const Complaint& complaint) : HostException(complaint.getText(), {complaint}) {}

HostException::HostException(const std::string& text, const std::vector<Complaint>& list)
    : std::runtime_error(text), complaints(std::make_shared<const std::vector<Complaint>>(list)) {}

const std::vector<Complaint>& HostException::getComplaints() const noexcept {
    static const std::vector<Complaint> none;
    return complaints == nullptr ? none : *complaints;
}

} // namespace Quillmere::Host
