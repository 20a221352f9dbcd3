// A module of the library whose section TypeSection_test.cpp reads. The linker keeps the names,
// though nobody refers to them.
namespace {

[[gnu::section(".vel.type"), gnu::used, gnu::retain]] char names[] =
    "Sample::Second\0Sample::First";

} // namespace
