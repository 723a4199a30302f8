// Reports of bad arguments go to a reporter of the process, XERBLA under its Fortran name:
//
//   1. that of the module which called: an extension module of an interpreter brings its own, which nobody else sees;
//   2. the one that all modules see, of the program or of a library that it is linked with;
//   3. that of the first module that was loaded with one: other libraries, loaded with it, report there too.
//
// Without any the report is printed. A call is far from its report, so the stack tells who made it.
#include <cstddef>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <unwind.h>

#include "service/reporter.hpp"

// The one that all modules see, or null. As this library names it, a program that has one exports it.
extern "C" [[gnu::weak]] void xerbla_(const char* name, const int* info, std::size_t length);

namespace qrv {
namespace {

using FortranReporter = void(const char* name, const int* info, std::size_t length);

struct Module {
    const void* base;
    char path[4096];
};

bool find_module(const void* address, Dl_info& info) {
    return dladdr(address, &info) != 0 && info.dli_fbase;
}

// The one that the module at `path` defines itself, and not one that it is linked with.
FortranReporter* reporter_in(const char* path, const void* base) {
    void* const scope = dlopen(path, RTLD_LAZY | RTLD_NOLOAD);
    if (!scope)
        return nullptr;
    void* const found = dlsym(scope, "xerbla_");
    dlclose(scope);
    Dl_info info;
    const bool itsOwn = found && find_module(found, info) && info.dli_fbase == base;
    return itsOwn ? reinterpret_cast<FortranReporter*>(found) : nullptr;
}

struct Caller {
    const void* library; // this one
    Dl_info found{};
};

_Unwind_Reason_Code look_at_frame(_Unwind_Context* frame, void* data) {
    auto& caller = *static_cast<Caller*>(data);
    const auto address = reinterpret_cast<const void*>(_Unwind_GetIP(frame) - 1); // within the call
    if (!find_module(address, caller.found))
        return _URC_NORMAL_STOP;
    return caller.found.dli_fbase == caller.library ? _URC_NO_REASON : _URC_NORMAL_STOP;
}

FortranReporter* reporter_of_caller() {
    Dl_info self;
    if (!find_module(reinterpret_cast<const void*>(&reporter_of_caller), self))
        return nullptr;
    Caller caller{self.dli_fbase};
    _Unwind_Backtrace(look_at_frame, &caller);
    const bool known = caller.found.dli_fname && caller.found.dli_fbase != self.dli_fbase;
    return known ? reporter_in(caller.found.dli_fname, caller.found.dli_fbase) : nullptr;
}

// Modules in the order of loading: one at a time, as none may be asked for its names while the list is held.
struct Place {
    int left;
    Module module;
};
int take_module(dl_phdr_info* info, std::size_t, void* data) {
    auto& place = *static_cast<Place*>(data);
    if (place.left-- > 0)
        return 0;
    if (info->dlpi_phnum == 0 || std::strlen(info->dlpi_name) >= sizeof place.module.path)
        return 0;
    std::strcpy(place.module.path, info->dlpi_name);
    Dl_info found;
    const ElfW(Phdr)& first = info->dlpi_phdr[0];
    place.module.base =
        find_module(reinterpret_cast<const void*>(info->dlpi_addr + first.p_vaddr), found) ? found.dli_fbase : nullptr;
    return 1;
}
FortranReporter* first_reporter_loaded() {
    Place place;
    for (int number = 0; place.left = number, dl_iterate_phdr(take_module, &place) != 0; ++number)
        if (FortranReporter* const found = reporter_in(place.module.path, place.module.base))
            return found;
    return nullptr;
}

FortranReporter* reporter() {
    if (FortranReporter* const found = reporter_of_caller())
        return found;
    return xerbla_ ? xerbla_ : first_reporter_loaded();
}

} // namespace
} // namespace qrv

// Takes the place of the entries' own reporter in this library.
void XERBLA(const char* name, const int* info, int length) {
    if (qrv::FortranReporter* const found = qrv::reporter())
        found(name, info, static_cast<std::size_t>(length));
    else
        qrv::default_report(name, info, length);
}

// What the C interface reports by itself; a program may have its own, with the message that `form` begins.
extern "C" [[gnu::visibility("default")]] void cblas_xerbla(int position, const char* name, const char*, ...) {
    XERBLA(name, &position, static_cast<int>(std::strlen(name)));
}
