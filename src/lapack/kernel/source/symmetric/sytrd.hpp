// The parts of SSYTRD. All take the team that they may use; that which is there may be smaller.
#pragma once

#include "blas/calls.hpp"
#include "blas/thread/common/kept_team.hpp"

namespace qrv::lapack {

// Columns of a panel, and the largest order that is left to the unblocked form.
struct Panels {
    int width, rest;
};
Panels choose_panels(int n, int lwork, int threads);

// w: n x panels.width. The unblocked form leaves an order of `tail` to one thread.
void sytrd_in_panels(int threads, const Panels& panels, int tail, Uplo uplo, int n, Matrix<float> a, float* d, float* e,
                     float* tau, Matrix<float> w);

// A := A - V W' - W V', of which one triangle of order n is stored; V and W have k columns.
void update_on_team(int threads, Uplo uplo, int n, int k, Matrix<const float> v, Matrix<const float> w,
                    Matrix<float> a);

// SSYTD2 on a team (qrv_lapack_ssytd3), which leaves an order of `tail` to SSYTD2.
void sytd3(int threads, int tail, Uplo uplo, int n, Matrix<float> a, float* d, float* e, float* tau);

// ---- Panels ---------------------------------------------------------------------------------------------------------

// A reflector on the last columns of the part that is left: `earlier` columns of V and W, rows of that part only.
struct PanelColumn {
    Uplo uplo;
    int number; // of the column in the matrix, from 1
    int m, earlier;
    Matrix<const float> rest, v, w;
    Vector<float> reflector, x;
    Vector<float> products; // `earlier` floats
};

// x := A v and, if `all`, what corrects it: products := W' v, more := V' v. results: a column of m floats for each
// thread, the first of which becomes `more`.
enum class PanelPlan { productAlone, all };
void multiply_on_team(KeptTeam& team, PanelPlan plan, const PanelColumn& c, Matrix<float> results);

} // namespace qrv::lapack
