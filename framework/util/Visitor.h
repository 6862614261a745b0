// SPDX-License-Identifier: MIT
#pragma once

namespace Util::System {

/// Root of all visitors. A visitor derives from this and from a `Visitor` for each type that it knows.
class __attribute__((visibility("default"))) AbstractVisitor {
public:
    virtual ~AbstractVisitor() = default;
};

/// The typed interface of a visitor: `R visit(const T&)`. `P` would be a further parameter (void: none),
/// `Tag` tells families of visitors apart.
template <class T, class R, class P, int Tag>
class Visitor;

template <class T, class R, int Tag>
class __attribute__((visibility("default"))) Visitor<T, R, void, Tag> {
public:
    virtual ~Visitor() = default;
    virtual R visit(const T& subject) = 0;
};

/// What can be visited. `CatchAll::onUnknownVisitor` gets the visitors that have no interface for the
/// subject's type.
template <class R, class P, class CatchAll, int Tag>
class AbstractVisitable;

template <class R, class CatchAll, int Tag>
class __attribute__((visibility("default"))) AbstractVisitable<R, void, CatchAll, Tag> {
public:
    virtual ~AbstractVisitable() = default;
    virtual R accept(AbstractVisitor& visitor) const = 0;

protected:
    AbstractVisitable() = default;
    AbstractVisitable(const AbstractVisitable&) = delete;
    AbstractVisitable& operator=(const AbstractVisitable&) = delete;

    /// Visits `subject` if `visitor` knows its very type; false if it doesn't.
    template <class T>
    static bool acceptTyped(const T& subject, AbstractVisitor& visitor) {
        auto* const typed = dynamic_cast<Visitor<T, R, void, Tag>*>(&visitor);
        if (typed == nullptr) return false;
        typed->visit(subject);
        return true;
    }
};

} // namespace Util::System
