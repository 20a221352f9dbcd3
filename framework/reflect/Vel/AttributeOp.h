// AttributeOp.h - what an adapter is asked to do: with which attribute, which operation, and the
// operation's argument.
//
//     read     0    the value; with an index, the value under that key; with a List, the result of
//                   a function that leaves its object as it is
//     has      1    whether a collection has the key: bool
//     count    2    how many members a collection has: U32
//     keys     3    appends every key of a collection, in its order, to the result, which is a List
//     compare  100  of attribute 0: whether the argument holds an equal value: bool
//     set      128  writes the argument; with an index, under that key; with a List, inserts a
//                   member or calls a function that changes its object
//     del      129  removes the member under the index; the result, if there is one, becomes what
//                   was there: a default value, or no object, if there was nothing
//     delAll   130  removes every member
//
// Numbers above 127 modify: a const adapter refuses them whatever the attribute.
//
// Test: none; numbers; GenericIf_test.cpp uses each.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/Integers.h>

namespace Vel {

class GenericIf;

class AttributeOp {
public:
    using Operation = U32;

    static constexpr Operation read = 0;
    static constexpr Operation has = 1;
    static constexpr Operation count = 2;
    static constexpr Operation keys = 3;
    static constexpr Operation compare = 100;
    static constexpr Operation lastReading = 127;
    static constexpr Operation set = 128;
    static constexpr Operation del = 129;
    static constexpr Operation delAll = 130;

    // The argument is borrowed; null for none.
    constexpr AttributeOp(AttributeId attributeId, Operation operation,
                          const GenericIf* velOpArg = nullptr) noexcept
        : attributeId_(attributeId), operation_(operation), velOpArg_(velOpArg) {}

    constexpr AttributeId attributeId() const noexcept { return attributeId_; }

    constexpr Operation operation() const noexcept { return operation_; }

    constexpr const GenericIf* velOpArg() const noexcept { return velOpArg_; }

    constexpr bool modifies() const noexcept { return operation_ > lastReading; }

private:
    AttributeId attributeId_;
    Operation operation_;
    const GenericIf* velOpArg_;
};

} // namespace Vel
