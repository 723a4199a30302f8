// How the threaded LU shares out block columns.
#include "service/tuning/tables.hpp"

namespace qrv::tuning {
namespace {

struct LuShares {
    int span, tail;
};

constexpr LuShares lu_shares(const Name& name, int n, int threads) {
    const bool real = name.routine() == "SGETRF";
    if ((!real && name.routine() != "CGETRF") || threads <= 1)
        return {1, 0};
    if (threads <= 4)
        return real ? LuShares{by_size(n, {{4000, 3}, {6000, 2}}, 1), by_size(n, {{4000, 4}}, 8)}
                    : LuShares{by_size(n, {{1300, 3}, {7000, 2}}, 3), by_size(n, {{7000, 4}}, 16)};
    if (threads <= 8)
        return real ? LuShares{by_size(n, {{3600, 2}, {4000, 1}}, 2), by_size(n, {{3600, 4}}, 8)}
                    : LuShares{by_size(n, {{2100, 2}, {3200, 1}, {6000, 2}}, 4),
                               by_size(n, {{1000, 0}, {2100, 4}, {3200, 16}, {6000, 8}}, 16)};
    return {1, n > 6500 ? 1'000'000 : threads == 12 ? 12 : 0};
}

} // namespace

int lu_span(std::string_view name, int n, int threads) {
    return lu_shares(Name(name), n, threads).span;
}
int lu_tail(std::string_view name, int n, int threads) {
    return lu_shares(Name(name), n, threads).tail;
}

} // namespace qrv::tuning
