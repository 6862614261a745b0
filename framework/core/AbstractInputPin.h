// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Pin.h"
#include "framework/core/Tally.h"

#include <atomic>
#include <cstdint>

namespace Quillmere::Core {

class AbstractOutputPin;

/// The receiving end of a link, whatever it carries.
class QUILLMERE_API AbstractInputPin : public virtual Pin {
public:
    /// Registers the pin with `pinManager`, which is not owned and may be null. A new pin is blocking and
    /// keeps one sample.
    AbstractInputPin(const std::string& name, PinManager* const pinManager);
    ~AbstractInputPin() override;

    /// The link's other end, null when unconnected. [any]
    virtual AbstractOutputPin* getConnectedOutput() const = 0;
    /// Forgets what waits, the last time stamp included. [any, guarded]
    virtual void clear() = 0;
    /// Chooses the buffer strategy anew; what waits is lost. The new one is made before the old one goes:
    /// what this raises leaves the pin as it was. Requires: the pin's gate is held. [any, guarded]
    virtual void rebuildStrategy() = 0;
    /// The output pin's word on a link made (`output`) or taken down (null). What this raises leaves the pin
    /// as it was; to take a link down needs no memory and raises nothing. Requires: the gates of both ends
    /// are held. [any, guarded]
    virtual void setConnectedOutput(AbstractOutputPin* output, bool synchronous) = 0;

    /// What became of the samples that were sent to this pin, all of one instant. [any, guarded]
    LinkCounts getCounts();

    /// Samples taken so far. [any, guarded]
    std::uint64_t getTakenCount() const;
    /// Whether the link comes from another layout and wakes this one. Requires: the pin's gate is held. [any,
    /// guarded]
    bool getIsWaking() const { return isWaking; }

    /// Whether the link runs in the sender's thread. [any]
    bool getIsSynchronous() const { return isSynchronous; }
    /// Whether the reader may sleep on this pin. [any]
    bool getIsBlocking() const { return isBlocking; }
    /// Requires: no link exists; blocks call it in their constructors. [setup]
    void setIsBlocking(bool flag) { isBlocking = flag; }

    std::uint32_t getBufferCapacity() const { return bufferCapacity; } ///< As `getIsWaking`. [any, guarded]
    bool getIsLifo() const { return isLifo; }                          ///< Likewise. [any, guarded]
    /// How many samples the link keeps. Raises `Poco::InvalidArgumentException` for 0. What waits is lost.
    /// When there is no memory for the new buffer, the old one stays, as in `setIsLifo`. [any, guarded]
    void setBufferCapacity(std::uint32_t capacity);
    /// Whether a buffer of more than one sample hands out the newest first. What waits is lost. [any,
    /// guarded]
    void setIsLifo(bool flag);

protected:
    std::uint32_t bufferCapacity = 1;
    bool isLifo = false;
    std::atomic<bool> isSynchronous{true}; ///< read without a guard, also while another thread detaches
    bool isBlocking = true;
    bool isWaking = false;
    GatedTally taken;
    /// Tells how many samples wait in the link or have been fetched and not taken; null where nobody knows. A
    /// pointer that the concrete pin sets: the last virtual operation of an input is `receive`, further down,
    /// and none stands before it.
    std::uint32_t (*countWaiting)(const AbstractInputPin& pin) = nullptr;

    /// Counts what `next` sends from now on, null for nobody, beside what came until now. Requires: as
    /// `setConnectedOutput`, which calls this before the link changes.
    void countFrom(const AbstractOutputPin* next);

private:
    std::uint64_t getReceivedCount() const;
    /// Gives `field` another value and rebuilds the strategy; both or neither.
    template <class Field>
    void rebuildWith(Field& field, Field next);

    // What an input receives is what its sender sends, so the sample's road counts it once for all links.
    std::uint64_t receivedBefore = 0; ///< over former links
    std::uint64_t sentBefore = 0;     ///< by the sender, before this link

    /// Runs `action` with the gates of this pin and of its sender held, whatever link it has at that time.
    template <class Action>
    void withBothEndsHeld(Action action);
};

} // namespace Quillmere::Core
