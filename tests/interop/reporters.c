/* Usage: reporters PLAIN FIRST SECOND
 * Modules that no other sees: a report goes to the one that called, or, if that has no reporter, to the first loaded
 * that has. */
#include <dlfcn.h>
#include <stdio.h>

static int failures;

struct module {
    int* reported;
    void (*call_blas)(void);
    void (*call_lapack)(void);
};

static struct module load(const char* path) {
    void* const handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    struct module module = {0};
    if (!handle) {
        printf("failed: %s\n", dlerror());
        ++failures;
        return module;
    }
    module.reported = dlsym(handle, "reported");
    *(void**)&module.call_blas = dlsym(handle, "call_blas");
    *(void**)&module.call_lapack = dlsym(handle, "call_lapack");
    return module;
}

static void expect_reported(const struct module* caller, const struct module* receiver, const char* what) {
    *receiver->reported = 0;
    caller->call_blas();
    const int ofBlas = *receiver->reported;
    caller->call_lapack();
    if (ofBlas != 4 || *receiver->reported != 4) {
        printf("failed: %s: %d %d\n", what, ofBlas, *receiver->reported);
        ++failures;
    }
}

int main(int count, char** paths) {
    if (count != 4)
        return 2;
    const struct module plain = load(paths[1]);
    if (failures)
        return 1;
    plain.call_blas(); /* is printed */
    const struct module first = load(paths[2]), second = load(paths[3]);
    if (failures)
        return 1;
    expect_reported(&first, &first, "a module's own reporter");
    expect_reported(&second, &second, "the caller's own, of two");
    expect_reported(&plain, &first, "the first one loaded");
    return failures != 0;
}
