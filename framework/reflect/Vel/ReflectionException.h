// ReflectionException.h - a type, attribute, operation or argument that reflection was asked for
// and refuses.
//
// ids(): what kind of refusal it is: type, constant, attribute or operation (Exception::Id).
//
// Test: none; a name for an Exception; GenericIf_test.cpp catches it.
#pragma once

#include <Vel/Exception.h>
#include <Vel/Export.h>

namespace Vel {

class VEL_API ReflectionException : public Exception {
public:
    using Exception::Exception;
    ReflectionException(const ReflectionException&) noexcept = default;
    ReflectionException& operator=(const ReflectionException&) noexcept = default;
    ~ReflectionException() override;
};

} // namespace Vel
