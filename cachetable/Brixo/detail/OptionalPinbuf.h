// OptionalPinbuf.h - the calls of pinbuf that a table makes only where there are any. Not
// installed.
//
// A platform may bring a pinbuf of its own that has pinbuf_alloc_func and pinbuf_map alone: then
// these are null.
#pragma once

#include <pinbuf/pinbuf.h>

// NOLINTBEGIN(readability-redundant-declaration): declared again to be weak here alone
extern "C" {
extern __attribute__((weak)) decltype(pinbuf_find) pinbuf_find;
extern __attribute__((weak)) decltype(pinbuf_hold) pinbuf_hold;
}
// NOLINTEND(readability-redundant-declaration)
