// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Pin.h"
#include "framework/core/Tally.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace Quillmere::Core {

class AbstractInputPin;

/// Where a link ends, in words.
struct ConnectionName {
    std::string layout;
    std::string block;
    std::string pin;
};

/// The sending end of links, whatever it carries.
class QUILLMERE_API AbstractOutputPin : public virtual Pin {
public:
    /// Registers the pin with `pinManager`, which is not owned and may be null.
    AbstractOutputPin(const std::string& name, PinManager* const pinManager);
    ~AbstractOutputPin() override;

    /// Links `input` to this pin. Raises `Poco::DataFormatException` if the two carry different data,
    /// `Poco::ExistsException` if `input` has a link, and `std::bad_alloc`; then both are as before. With
    /// `silent` the host isn't told. [any, guarded]
    virtual void attach(AbstractInputPin& input, bool silent) = 0;
    /// Takes the link down; nothing happens if there is none, or if it isn't synchronous and
    /// `synchronousOnly` is set. Needs no memory. [any, guarded]
    virtual void detach(AbstractInputPin& input, bool synchronousOnly) = 0;
    /// A copy, taken without a guard. [any]
    virtual std::set<AbstractInputPin*> getAttachedInputs() const = 0;
    /// The attached inputs whose blocks are in a layout. [any, guarded]
    virtual std::vector<ConnectionName> getConnections() const = 0;
    /// Lets every attached input choose its buffer strategy anew, after a block has changed its layout;
    /// samples in flight are lost. A link whose new strategy can't be made is taken down, since the old one
    /// doesn't fit any more; the first such reason is raised behind the last link. Requires: this pin's gate
    /// is held, or its block doesn't run. [any, guarded]
    virtual void refreshInputs() = 0;

    /// What is attached, in the order of the addresses. Requires: this pin's gate is held, or nobody changes
    /// its links. [any, guarded]
    const std::vector<AbstractInputPin*>& getInputs() const { return inputs; }
    /// Samples sent so far, whoever was attached. [any, guarded]
    std::uint64_t getSentCount() const;
    /// The same. Requires: the pin's gate is held, or its block doesn't run. [run]
    std::uint64_t getSentUnderGate() const { return sent.get(); }

protected:
    GatedTally sent;
    /// An ordered set, by address; a vector, since every sample walks it and it seldom changes. Not owned;
    /// changed with the gates of both ends held.
    std::vector<AbstractInputPin*> inputs;

    /// Asks the host about a new link: `isSynchronous` comes in true and goes out as the host decides.
    void notifyAttached(AbstractInputPin& input, bool& isSynchronous);
    /// Tells the host that a synchronous link is gone.
    void notifyDetached(AbstractInputPin& input);
};

} // namespace Quillmere::Core
