// cachetable-writer JOURNAL SIZE ENTRY-SIZE SEED - writes a table until it is killed; for tests of
// the other word size.
#include <Brixo/testing/KilledWriter.h>
#include <string>

int main(int count, char** arguments) {
    using namespace Brixo::Testing;
    if (count != 5) return 2;
    Vel::TraceHandle::settingsAre("*/none");
    const Journal journal{std::string(arguments[1])};
    const auto number = [&](int i) { return static_cast<U32>(std::stoul(arguments[i])); };
    runWriter(journal, {number(2), number(3)}, number(4), 0xffffffff);
    return 1;
}
