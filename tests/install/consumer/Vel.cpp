// A client of libVel alone: a string, and a counted object.
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/String8.h>

int main() {
    const Vel::Ptr<Vel::PtrInterface> object(new Vel::PtrInterface);
    const Vel::Ptr<Vel::PtrInterface> same(object);
    return Vel::String8("Ve") + "l" == "Vel" && same == object ? 0 : 1;
}
