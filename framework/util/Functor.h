// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

/// Small callable objects, bound to member functions, through which settings tell their block of a change.
namespace Util::System {

/// The place of a type list that carries no type.
struct NullType {};

/// A type list of up to six parameters.
template <class P1 = NullType, class P2 = NullType, class P3 = NullType, class P4 = NullType,
          class P5 = NullType, class P6 = NullType>
struct Seq {};

namespace Private {
/// Root of all callables with result `R`.
template <class R>
class FunctorImplBase {
public:
    virtual ~FunctorImplBase() = default;
};
} // namespace Private

/// A callable with result `R` and the parameters of `TList`.
template <class R, class TList>
class FunctorImpl;

/// The shape without an argument: change handlers and commands.
template <class R>
class FunctorImpl<R, NullType> : public Private::FunctorImplBase<R> {
public:
    virtual std::unique_ptr<FunctorImpl> clone() const = 0;
    virtual R operator()() = 0;
};

/// The shape with one argument: validators.
template <class R, class P1>
class FunctorImpl<R, Seq<P1>> : public Private::FunctorImplBase<R> {
public:
    virtual std::unique_ptr<FunctorImpl> clone() const = 0;
    virtual R operator()(P1 argument) = 0;
};

/// Names the shape of a callable in the template arguments of its handler.
template <class R, class TList>
struct Functor {
    using Impl = FunctorImpl<R, TList>;
};

/// Calls a member function on an object; what the function returns is dropped. The object is not owned and
/// must outlive the handler.
template <class FunctorType, class ObjectPointer, class MemberFunction>
class MemFunHandler;

template <class ObjectPointer, class MemberFunction>
class MemFunHandler<Functor<void, NullType>, ObjectPointer, MemberFunction> final
    : public FunctorImpl<void, NullType> {
public:
    MemFunHandler(ObjectPointer boundObject, MemberFunction boundFunction)
        : object(boundObject), function(boundFunction) {}
    std::unique_ptr<FunctorImpl<void, NullType>> clone() const override {
        return std::make_unique<MemFunHandler>(*this);
    }
    void operator()() override { static_cast<void>((object->*function)()); }

private:
    ObjectPointer object;
    MemberFunction function;
};

template <class P1, class ObjectPointer, class MemberFunction>
class MemFunHandler<Functor<void, Seq<P1>>, ObjectPointer, MemberFunction> final
    : public FunctorImpl<void, Seq<P1>> {
public:
    MemFunHandler(ObjectPointer boundObject, MemberFunction boundFunction)
        : object(boundObject), function(boundFunction) {}
    std::unique_ptr<FunctorImpl<void, Seq<P1>>> clone() const override {
        return std::make_unique<MemFunHandler>(*this);
    }
    void operator()(P1 argument) override { static_cast<void>((object->*function)(argument)); }

private:
    ObjectPointer object;
    MemberFunction function;
};

/// A callable that is held, never copied: handlers that the host hangs on a label list.
template <class... Arguments>
class Callable {
public:
    virtual ~Callable() = default;
    virtual void operator()(Arguments... arguments) = 0;
};

} // namespace Util::System
