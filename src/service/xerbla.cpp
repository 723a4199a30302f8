// XERBLA stands alone in its object file, so that a program linked with the static library can define its own.
#include "service/reporter.hpp"

void XERBLA(const char* name, const int* info, int length) {
    qrv::default_report(name, info, length);
}
