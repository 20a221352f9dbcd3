// The other module. Its names are aligned, so that the linker puts NULs in front of them.
namespace {

[[gnu::section(".vel.type"), gnu::used, gnu::retain]] alignas(64) char names[] = "Other::Third";

} // namespace
