// A client of libpinbuf alone: asks for a region that cannot be, and is told why.
#include <cstring>
#include <pinbuf/pinbuf.h>

int main() {
    const bool refused = pinbuf_alloc_func("a/b", 4096, "consumer") == 0;
    return refused && std::strlen(pinbuf_error()) > 0 ? 0 : 1;
}
