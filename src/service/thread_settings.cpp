#include "service/thread_settings.hpp"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string_view>

namespace qrv {
namespace {

constexpr std::size_t variableRoom = 256; // characters of a variable's text, NUL included

constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

bool all_digits(const char* first, const char* last) {
    return std::all_of(first, last, is_digit);
}

// Value of a run of digits, held at INT_MAX.
int digits_value(const char* first, const char* last) {
    long long value = 0;
    for (; first != last; ++first)
        value = std::min<long long>(10 * value + (*first - '0'), INT_MAX);
    return static_cast<int>(value);
}

void fill(int& word, int value) {
    if (word < 0)
        word = value;
}

// Value of a variable that counts only if it is all digits and within [least, most]; otherwise -1.
int digits_variable(const char* text, int least, int most) {
    const char* end = text + std::strlen(text);
    if (!all_digits(text, end))
        return -1;
    const int value = digits_value(text, end);
    return value >= least && value <= most ? value : -1;
}

// Only FALSE and false, optionally quoted, switch dynamic adjustment off.
bool switches_off(const char* text) {
    text += std::strspn(text, " \"'");
    const std::string_view word(text, std::strcspn(text, " \"'"));
    return word == "FALSE" || word == "false";
}

} // namespace

int thread_number(const char* first, const char* last) {
    if (first == last || !all_digits(first, last))
        return 1;
    return digits_value(first, last);
}

void parse_domain_list(const char* text, ThreadSettings& settings) {
    constexpr std::string_view keys[threadDomains] = {"QRV_ALL", "QRV_BLAS", "QRV_FFT", "QRV_VEC"};
    constexpr const char* separators = " ,;:\"'";
    for (;;) {
        text += std::strspn(text, separators);
        const std::string_view key(text, std::strcspn(text, "=\"' "));
        if (key.empty())
            return;
        text += key.size();
        text += std::strspn(text, " =");
        const char* end = text + std::strcspn(text, separators);
        const int number = thread_number(text, end);
        for (int domain = 0; domain < threadDomains; ++domain)
            if (key == keys[domain] && number >= 1)
                fill(settings.requested[domain], number);
        text = *end ? end + 1 : end;
    }
}

ThreadSettings read_thread_settings(ThreadSettings settings, EnvironmentReader read) {
    const auto variable = [read](const char* name) { return read_variable(read, name, variableRoom); };

    if (const char* text = variable("QRV_NUM_THREADS")) {
        const char* end = text + std::strlen(text);
        settings.numThreadsUnreadable = !all_digits(text, end);
        if (const int number = thread_number(text, end); number >= 1)
            fill(settings.requested[QRV_DOMAIN_ALL], number);
    }
    if (const char* text = variable("QRV_DOMAIN_NUM_THREADS"))
        parse_domain_list(text, settings);
    if (settings.dynamic == -1) {
        const char* text = variable("QRV_DYNAMIC");
        settings.dynamic = text && switches_off(text) ? 0 : 1;
    }
    if (const char* text = variable("OMP_NUM_THREADS"))
        if (const int number = thread_number(text, text + std::strlen(text)); number >= 1)
            settings.ompNumThreads = number;
    if (const char* text = variable("W_MPI_NUMBER_OF_MPI_PROCESSES_PER_NODE"))
        if (const int count = digits_variable(text, 1, INT_MAX); count >= 1)
            settings.mpiProcsPerNode = count;
    if (const char* text = variable("W_MPI_THREAD_LEVEL"))
        settings.mpiThreadLevel = std::max(0, digits_variable(text, 0, 3));
    return settings;
}

} // namespace qrv
