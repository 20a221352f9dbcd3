// A client of libFerrolog alone: writes a trace file and reads its message back.
#include <Ferrolog/Ferrolog.h>
#include <Ferrolog/Reader.h>
#include <Ferrolog/Trace.h>
#include <cstdio>

int main() {
    const char* path = "consumer.trace";
    std::remove(path);
    if (ferrolog_open(path, 0) != 0) return 1;
    FERROLOG("consumer", "index: ", 7U);
    ferrolog_close();
    const Ferrolog::Reader reader(path);
    std::remove(path);
    return reader.messages().size() == 1 && reader.text(reader.messages().front()) == "index: 7"
               ? 0
               : 1;
}
