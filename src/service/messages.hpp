// Catalogue of fixed messages and its printing routine.
#pragma once

namespace qrv {

enum Message : int {
    MESSAGE_NEWLINE = 0,
    MESSAGE_BAD_PARAMETER = 6,      // position, routine name
    MESSAGE_INTERNAL_CONDITION = 7, // condition, routine name
    MESSAGE_NO_MEMORY = 8,          // routine name
    MESSAGE_BAD_OPTIONALS = 9,      // routine name
    MESSAGE_NO_WORK_MEMORY = 1079,  // routine name
};

// The text of a message, or null for a number that the catalogue does not hold.
const char* message_text(int number);

} // namespace qrv

// Prints message `number` with a newline to standard output and flushes that and standard error; `count` arguments
// follow, 0 prints the text as it is. Message 0 is a newline, not flushed. A message of more than 513 characters ends
// the process with exit status 8. `destination` is 0 in all calls and has no effect.
extern "C" void qrv_serv_print_message(int destination, int number, int count, ...);
