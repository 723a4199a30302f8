// How much of the stack a call takes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <pthread.h>
#include <sys/mman.h>

namespace qrv::test {

// What a call may take: a host may give its threads small stacks.
constexpr std::size_t stackOfACall = 48 << 10;

// Bytes of stack that a call takes, on a thread of its own.
inline std::size_t stack_taken(const std::function<void()>& call) {
    constexpr std::size_t size = 1 << 20;
    constexpr unsigned char untouched = 0xA5;
    static unsigned char* const stack = static_cast<unsigned char*>(
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0));
    std::memset(stack, untouched, size);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, size);
    pthread_t thread;
    const auto run = [](void* f) -> void* {
        (*static_cast<const std::function<void()>*>(f))();
        return nullptr;
    };
    if (pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&call)) != 0)
        return size;
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    const auto isTouched = [](unsigned char byte) { return byte != untouched; };
    return static_cast<std::size_t>(stack + size - std::find_if(stack, stack + size, isTouched));
}

} // namespace qrv::test
