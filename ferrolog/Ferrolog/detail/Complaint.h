// Complaint.h - the one line that says what went wrong.
//
// Signals: a handler may complain, whatever it interrupted: nothing is allocated, and nobody waited
//          for.
#pragma once

#include <Ferrolog/detail/Layout.h>

#include <initializer_list>
#include <string_view>

namespace Ferrolog::detail {

// A text or a number.
class Piece {
public:
    Piece(const char* text) : text_(text == nullptr ? "" : text) {}

    Piece(std::string_view text) : text_(text) {}

    Piece(U32 number) : number_(number), isNumber_(true) {}

    bool isNumber() const { return isNumber_; }

    std::string_view text() const { return text_; }

    U32 number() const { return number_; }

private:
    std::string_view text_;
    U32 number_ = 0;
    bool isNumber_ = false;
};

// Prints "Ferrolog: ", the pieces and a newline on standard error, in one write, and keeps the line
// for ferrolog_error(). Control characters come out as \x1b; lines are cut at 511 bytes. errno
// stays as it is.
void complain(std::initializer_list<Piece> pieces);

// The last line, without its newline; "" at first. It stays for one more complaint. Of two at the
// same moment it may be either.
const char* lastComplaint();

// In a forked child: a thread that was just keeping a line exists no more.
void forgetComplainers();

// What strerror says in English. A name of its own for it: strerror allocates, and asks the locale.
const char* textOfError(int error);

} // namespace Ferrolog::detail
