// GenericIf.h - an adapter that shows one value without naming its class: its type, its text, a copy.
#pragma once

#include <Vel/Export.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/String8.h>

namespace Vel {

class VEL_API GenericIf : public PtrInterface {
public:
    explicit GenericIf(bool isConst) noexcept : isConst_(isConst) {}

    ~GenericIf() override;

    // The type of what is wrapped; lives as long as the process.
    virtual VelType* type() const = 0;
    // The text form of what is wrapped.
    virtual String8 strRep() const = 0;
    // A new adapter that holds a copy of the same value.
    virtual Ptr<GenericIf> clone() const = 0;

    // Whether the adapter refuses to modify what it holds.
    bool isConst() const noexcept { return isConst_; }

protected:
    void isConstIs(bool isConst) noexcept { isConst_ = isConst; }

private:
    bool isConst_;
};

} // namespace Vel
