// SPDX-License-Identifier: MIT
#pragma once

/// A stand-in for a member function that counts how many copies of itself there are, so that a test can see
/// when the handlers that hold it are made and deleted. It goes wherever `&Block::handler` goes.
template <class Object>
struct CountedFunction {
    explicit CountedFunction(int& liveCopies) : live(&liveCopies) { ++*live; }
    CountedFunction(const CountedFunction& other) : live(other.live) { ++*live; }
    CountedFunction& operator=(const CountedFunction&) = delete;
    ~CountedFunction() { --*live; }

    int* live;
};

/// What a call through a `CountedFunction` does: it tells the object.
template <class Object>
auto operator->*(Object* object, const CountedFunction<Object>&) {
    return [object](const auto&... argument) { object->called(argument...); };
}
