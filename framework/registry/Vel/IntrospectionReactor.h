// IntrospectionReactor.h - the registrar: modules tell it their types, one after another, and it
// keeps who was told.
//
//     reactor->handleNameSpace("Net");
//     reactor->handleType(DeviceId::_fwkType(), nullptr);
//     reactor->defNoninstantiatingAttr(type, "value", u16, type, flags, 2, 2);
//     reactor->handleScopeExit();  // DeviceId
//     reactor->handleScopeExit();  // Net
//
// Active:  by default, so that a program that does nothing special can reflect.
//          VEL_INTROSPECTION=off in the environment, or activeIs(false) before a library is loaded,
//          leaves its modules unregistered; their routines can be called again later.
// Refine:  a registrar of one's own takes the place of the global one by globalIs() and sees every
//          call.
// Threads: one at a time registers, or puts another registrar in the place of the global one;
//          types() and active() may be read by any number of threads when nobody does.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/Export.h>
#include <Vel/Name.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/VelAttr.h>
#include <Vel/VelType.h>
#include <span>
#include <string>
#include <vector>

namespace Vel {

class VEL_API IntrospectionReactor : public PtrInterface {
public:
    IntrospectionReactor();
    IntrospectionReactor(const IntrospectionReactor&) = delete;
    IntrospectionReactor& operator=(const IntrospectionReactor&) = delete;
    ~IntrospectionReactor() override;

    // The one of the process; made on first use. Looking at it counts nothing: threads that read
    // the registry need not care in which mode counts are.
    static const Ptr<IntrospectionReactor>& global();
    static void globalIs(const Ptr<IntrospectionReactor>& reactor);

    // Whether modules register.
    bool active() const noexcept { return active_; }

    void activeIs(bool active) noexcept { active_ = active; }

    // Opens a namespace. The name is borrowed until it is closed.
    virtual void handleNameSpace(const char* name);
    // Opens a type's scope. `other` is for types that stand for another one; the modules
    // here pass null. A type whose qualified name is not that of the open scopes is a fatal
    // assertion.
    virtual void handleType(const Ptr<const VelType>& type, const Ptr<const VelType>& other);
    // Closes the innermost open scope.
    virtual void handleScopeExit();

    // Adds an attribute for which no object is made: `scopeType` declares it. `type` is the one
    // whose scope is open.
    virtual VelAttr* defNoninstantiatingAttr(const Ptr<VelType>& type, Name name,
                                             const Ptr<VelType>& attrType,
                                             const Ptr<VelType>& scopeType,
                                             VelAttr::AttrFlags flags,
                                             VelAttr::VelAttrIntrospectionFlags introspection,
                                             AttributeId id);

    // A function or collection attribute with its arguments is complete; behind it, its context
    // ends.
    virtual void handleAttr(const Ptr<VelAttr>& attr);
    virtual void handleAttrContextExit();

    // Every type that was registered, in the order of first registration.
    std::span<const VelType* const> types() const noexcept { return types_; }

    // Namespaces and types that are open now: "Net::DeviceId".
    std::string openScope() const;

private:
    bool active_;
    bool attrContext_ = false;
    std::vector<Name> scopes_;
    std::vector<const VelType*> types_;
};

} // namespace Vel
