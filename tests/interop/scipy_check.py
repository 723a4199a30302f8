"""SciPy's decompositions and solves of float32 and complex64 matrices on libqrv_blas, which is preloaded, by their residuals in
double; and a report that becomes an exception."""
import itertools
import sys

import numpy as np

try:
    import scipy.linalg as sl
except ImportError:
    print("SciPy is not installed (Debian: python3-scipy): not tried")
    sys.exit(77)

random = np.random.default_rng(1)
failures = 0
wide = lambda x: np.asarray(x).astype(np.complex128)


def expect(rest, size, what):
    """rest is what remains of matrices of that norm: some roundings for each row."""
    global failures
    if not np.linalg.norm(rest) <= 1.2e-7 * 20 * max(rest.shape) * size:
        failures += 1
        print("failed:", what)


def sample(kind, m, n):
    x = random.standard_normal((m, n))
    return (x + 1j * random.standard_normal((m, n)) if kind == "c" else x).astype({"s": np.float32, "c": np.complex64}[kind])


def orthonormal(q, what):
    q = wide(q)
    expect(q.conj().T @ q - np.eye(q.shape[1]), q.shape[1] ** 0.5, what + ": orthogonality")


for kind, (m, n) in itertools.product("sc", ((1, 1), (7, 7), (40, 12), (12, 40), (90, 90), (150, 60))):
    a, what = sample(kind, m, n), f"{kind} {m} x {n}"
    A, size, k = wide(a), np.linalg.norm(wide(a)), min(m, n)
    for driver, full in itertools.product(("gesdd", "gesvd"), (True, False)):
        u, s, vh = sl.svd(a, full_matrices=full, lapack_driver=driver)
        expect((wide(u)[:, :k] * s) @ wide(vh)[:k] - A, size, f"{driver} {what}")
        orthonormal(u, f"{driver} {what}")
    q, r = sl.qr(a, mode="economic")
    expect(wide(q) @ wide(r) - A, size, f"qr {what}")
    q, r, p = sl.qr(a, mode="economic", pivoting=True)
    expect(wide(q) @ wide(r) - A[:, p], size, f"pivoted qr {what}")
    orthonormal(q, f"qr {what}")
    gels = sl.lapack.sgels if kind == "s" else sl.lapack.cgels
    if m >= n:
        b = sample(kind, m, 2)
        _, x, info = gels(a, b)
        expect(A.conj().T @ (A @ wide(x)[:n] - wide(b)), size * size + info, f"gels {what}")

for kind, n in itertools.product("sc", (3, 9, 40, 100)):
    a, b, what = sample(kind, n, n), sample(kind, n, 3), f"{kind} {n}"
    h = ((a + a.conj().T) / 2).astype(a.dtype)
    definite = a @ a.conj().T + n * np.eye(n, dtype=a.dtype)
    A, H, size = wide(a), wide(h), np.linalg.norm(wide(a))
    x, v = sl.eigh(h, driver="evr")
    expect(H @ wide(v) - wide(v) * x, size, f"eigh {what}")
    orthonormal(v, f"eigh {what}")
    x, v = sl.eig(a)
    expect(A @ wide(v) - wide(v) * x, size, f"eig {what}")
    t, z = sl.schur(a)
    expect(wide(z) @ wide(t) @ wide(z).conj().T - A, size, f"schur {what}")
    for matrix, assumed in ((a, "gen"), (definite, "pos")):
        x = sl.solve(matrix, b, assume_a=assumed)
        expect(wide(matrix) @ wide(x) - wide(b), np.linalg.norm(matrix) * np.linalg.norm(x), f"solve {assumed} {what}")
    ab = np.ones((5, n), a.dtype)
    ab[2] = 6
    band = 5 * np.eye(n) + np.triu(np.tril(np.ones((n, n)), 2), -2)
    for x in (sl.solve_banded((2, 2), ab, b), sl.solveh_banded(ab[:3], b)):
        expect(band @ wide(x) - wide(b), np.linalg.norm(b), f"band {what}")

try:
    sl.lapack.sgetrf(np.zeros((0, 0), np.float32))
    failures += 1
    print("failed: a bad argument raises no exception")
except ValueError:
    pass
sys.exit(failures != 0)
