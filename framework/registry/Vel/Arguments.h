// Arguments.h - the arguments of a constructor or a function attribute: names and type names, in
// order.
//
// Test: VelType_test.cpp and VelAttr_test.cpp.
#pragma once

#include <Vel/Assert.h>
#include <Vel/Name.h>
#include <cstddef>
#include <vector>

namespace Vel {

// Filled through two queues, one of names and one of type names, which have to come to the same
// length.
class Arguments {
public:
    std::size_t size() const noexcept { return names_.size(); }

    bool empty() const noexcept { return names_.empty(); }

    // index: below size().
    Name name(std::size_t index) const {
        VEL_ASSERT(index < names_.size());
        return names_[index];
    }

    // The qualified name of the argument's type; builtin types as Builtin.h names them.
    Name typeName(std::size_t index) const {
        VEL_ASSERT(index < typeNames_.size());
        return typeNames_[index];
    }

    void nameEnq(Name name) { names_.push_back(name); }

    void typeNameEnq(Name typeName) { typeNames_.push_back(typeName); }

    void deleteAll() noexcept {
        names_.clear();
        typeNames_.clear();
    }

private:
    std::vector<Name> names_;
    std::vector<Name> typeNames_;
};

} // namespace Vel
