#include "service/options.hpp"

int qrv_serv_lsame(const char* a, const char* b, int, int) {
    return qrv::same_letter(*a, *b);
}
