#include "service/messages.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace qrv {
namespace {

struct MessageCatalogueRow {
    int number;
    const char* text;
};

constexpr MessageCatalogueRow catalogue[] = {
    {MESSAGE_NEWLINE, "\n"},
    {MESSAGE_BAD_PARAMETER, "QRV ERROR: Parameter %d was incorrect on entry to %s"},
    {MESSAGE_INTERNAL_CONDITION, "QRV INTERNAL ERROR: Condition %d detected in function %s"},
    {MESSAGE_NO_MEMORY, "QRV INTERNAL ERROR: Not enough work memory in function %s"},
    {MESSAGE_BAD_OPTIONALS, "QRV ERROR: Incompatible optional parameters on entry to %s"},
    {MESSAGE_NO_WORK_MEMORY, "QRV INTERNAL ERROR: Not enough work memory in function %s"},
};

constexpr int bufferSize = 512;
constexpr int overflowExitStatus = 8;

// What else the host has open is its own, and flushing it would wait for a thread that reads there.
void flush_standard_streams() {
    std::fflush(stdout);
    std::fflush(stderr);
}

[[noreturn]] void message_overflow(int number, int length) {
    std::fputs("\nQRV INTERNAL ERROR: message buffer overflow.", stdout);
    flush_standard_streams();
    std::printf("\n       Message N %d   Lenght: %d   Buffer size: %d\n", number, length, bufferSize);
    flush_standard_streams();
    std::exit(overflowExitStatus);
}

} // namespace

const char* message_text(int number) {
    for (const MessageCatalogueRow& row : catalogue)
        if (row.number == number)
            return row.text;
    return nullptr;
}

} // namespace qrv

void qrv_serv_print_message(int /*destination*/, int number, int count, ...) {
    using namespace qrv;
    const char* text = message_text(number);
    if (!text)
        return;
    if (number == MESSAGE_NEWLINE) {
        std::fputs(text, stdout);
        return;
    }

    // On the stack, so that threads that report at once do not write into each other's text. The length rule
    // below counts one character less than the text has and lets a full 512 pass: 513 and the NUL must fit.
    char buffer[bufferSize + 2];
    int length = static_cast<int>(std::strlen(text));
    if (count > 0) {
        va_list arguments;
        va_start(arguments, count);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // the format is a row of the catalogue
        length = std::vsnprintf(buffer, sizeof buffer, text, arguments);
#pragma GCC diagnostic pop
        va_end(arguments);
        text = buffer;
    }
    if (length - 1 > bufferSize)
        message_overflow(number, length - 1);

    // Printed as text, not as a format: a percent sign in a routine's name must not read arguments.
    std::printf("%s\n", text);
    flush_standard_streams();
}
