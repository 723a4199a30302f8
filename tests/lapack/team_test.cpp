// LAPACK's own regions on teams: factors are right, whatever the team and the work memory that is there.
#include "lapack/kernel/source/cholesky/potrf.hpp"
#include "support/cholesky.hpp"
#include "support/lu.hpp"
#include "support/team_battery.hpp"

namespace qrv::test {
namespace {

using Sizes = std::initializer_list<std::pair<int, int>>;

// The look-ahead team, and tasks on block columns of each width, which give the same bits on every team.
template <class T>
void add_lu(std::vector<TeamCase>& cases, Sizes sizes, std::initializer_list<int> widths) {
    for (const auto& [m, n] : sizes) {
        const auto known = std::make_shared<const KnownPivots<T>>(known_pivots<T>(m, n, 1));
        const auto add = [&, size = std::to_string(m) + " x " + std::to_string(n)](int width) {
            cases.push_back({"getrf in columns of " + std::to_string(width) + ", " + size, [=](int team, bool twice) {
                                 const LuRoute<T> route = width ? dynamic_route<T>(team, width) : ib_route<T>(team);
                                 const auto f = factor(route, known->a);
                                 return f.info == 0 && f.ipiv == known->ipiv && lu_residual(known->a, f) <= luBound &&
                                        (!twice || f.lu.same_bits(factor(route, known->a).lu));
                             }});
        };
        add(0);
        for (const int width : widths)
            add(width);
    }
}
template <class T>
void add_cholesky(std::vector<TeamCase>& cases, std::initializer_list<int> orders) {
    for (const int n : orders)
        for (const Uplo uplo : {Uplo::upper, Uplo::lower})
            for (const lapack::PotrfGrain grain : {lapack::PotrfGrain{8, 4, 64}, {16, 100, 8}, {5, 1, 1000}}) {
                const auto a = std::make_shared<const Operand<T>>(definite<T>(uplo, n));
                cases.push_back(
                    {"potrf in tiles of " + std::to_string(grain.tile) + ", " + letter(uplo) + std::to_string(n),
                     [=](int team, bool) {
                         Operand<T> f(*a);
                         return lapack::potrf_tiles(team, grain, uplo, n, f.view()).info == 0 && f.guards_intact() &&
                                cholesky_residual(*a, f) < choleskyBound;
                     }});
            }
}

template <class T>
void add_all(std::vector<TeamCase>& cases) {
    add_lu<T>(cases, {{200, 200}, {129, 260}, {260, 129}, {257, 257}, {300, 9}, {9, 300}, {301, 21}}, {8, 20, 64});
    add_cholesky<T>(cases, {17, 33, 128, 150});
}
template <class T>
void add_few(std::vector<TeamCase>& cases) {
    add_lu<T>(cases, {{150, 130}, {90, 100}}, {8, 16});
    add_cholesky<T>(cases, {100});
}
INSTANTIATE_TEST_SUITE_P(Lapack, Team,
                         testing::Values(TeamFamily{"lapack",
                                                    [] {
                                                        std::vector<TeamCase> cases;
                                                        add_all<float>(cases);
                                                        add_all<SingleComplex>(cases);
                                                        return cases;
                                                    },
                                                    [] {
                                                        std::vector<TeamCase> cases;
                                                        add_few<float>(cases);
                                                        add_few<SingleComplex>(cases);
                                                        return cases;
                                                    }}));

} // namespace
} // namespace qrv::test
