"""NumPy on libqrv_blas, which is preloaded over the BLAS that NumPy is linked with, against float64; and every routine of
the C interface in both layouts."""
import ctypes
import itertools
import sys

import numpy as np

LIBRARY = ctypes.CDLL(sys.argv[1])
ROWS, COLUMNS = 101, 102
NONE, TRANSPOSE, ADJOINT, UPPER, LOWER, NON_UNIT, UNIT, LEFT, RIGHT = 111, 112, 113, 121, 122, 131, 132, 141, 142
random = np.random.default_rng(1)
failures = 0


def expect(actual, expected, what, scale=1):
    global failures
    bound = 3e-6 * scale * max(1, np.abs(expected).max(initial=0)) * 10
    if not np.abs(actual - expected).max(initial=0) <= bound:
        failures += 1
        print("failed:", what)


def sample(kind, *shape):
    x = random.uniform(-1, 1, shape)
    if kind == "c":
        return (x + 1j * random.uniform(-1, 1, shape)).astype(np.complex64)
    return x.astype(np.float32)


# ---- The C interface -------------------------------------------------------------------------------------------------


def wide(x):
    return np.asarray(x).astype(np.complex128)


def op(option, a):
    return a if option == NONE else a.T if option == TRANSPOSE else a.conj().T


def triangle(uplo, diag, a):
    """The triangle as a whole matrix; elements outside of it are not looked at."""
    t = np.triu(a) if uplo == UPPER else np.tril(a)
    if diag == UNIT:
        np.fill_diagonal(t, 1)
    return t


def symmetric(uplo, a, hermitian):
    t = triangle(uplo, NON_UNIT, a)
    if hermitian:
        np.fill_diagonal(t, t.diagonal().real)
    mirrored = t.conj().T if hermitian else t.T
    return t + mirrored - np.diag(mirrored.diagonal())


def band(layout, a, kl, ku, shape, dtype):
    """The band of a in the storage of its layout, what lies outside of the matrix NaN."""
    m, n = shape
    lines, width = (m, n) if layout == ROWS else (n, m)
    below, above = (kl, ku) if layout == ROWS else (ku, kl)
    stored = np.full((lines, kl + ku + 1), np.nan, dtype)
    for line in range(lines):
        for p in range(max(0, line - below), min(width, line + above + 1)):
            stored[line, below + p - line] = a[line, p] if layout == ROWS else a[p, line]
    return stored


PACKED = {"syr": "sspr", "her": "chpr"}


def packed(layout, uplo, a):
    """The triangle of a in the storage of its layout: line by line."""
    indices = np.tril_indices(len(a)) if (uplo == LOWER) == (layout == ROWS) else np.triu_indices(len(a))
    return (a if layout == ROWS else a.T)[indices].copy()


class Call:
    """One call: arrays in a layout with their leading dimensions, complex scalars by address."""

    def __init__(self, kind, layout):
        self.kind, self.layout, self.keep = kind, layout, []

    def matrix(self, a):
        stored = np.array(a if self.layout == ROWS else a.T, order="C")
        padded = np.full((stored.shape[0], stored.shape[1] + 3), np.nan, stored.dtype)
        padded[:, :-3] = stored
        self.keep.append(padded)
        return padded

    def value(self, padded):
        return padded[:, :-3] if self.layout == ROWS else padded[:, :-3].T

    def run(self, name, *arguments):
        converted = [self.layout]
        for x in arguments:
            if isinstance(x, np.ndarray):
                converted.append(x.ctypes.data_as(ctypes.c_void_p))
                if x.ndim == 2:
                    converted.append(x.shape[1])
            elif isinstance(x, float):
                converted.append(ctypes.c_float(x))
            elif isinstance(x, complex):
                scalar = np.array([x], np.complex64)
                self.keep.append(scalar)
                converted.append(scalar.ctypes.data_as(ctypes.c_void_p))
            else:
                converted.append(x)
        getattr(LIBRARY, "cblas_" + name)(*converted)


def strided(x, inc):
    """x as the interface stores it with an increment, NaN between."""
    y = np.full((len(x) - 1) * abs(inc) + 1, np.nan, x.dtype)
    y[:: abs(inc)] = x if inc > 0 else x[::-1]
    return y


def unstrided(y, inc):
    return y[:: abs(inc)] if inc > 0 else y[:: abs(inc)][::-1]


def general_matrix_vector(kind, layout):
    alpha, beta = (0.75 + 0.25j, -0.5 + 1j) if kind == "c" else (0.75, -0.5)
    for trans, incx, incy in itertools.product((NONE, TRANSPOSE, ADJOINT), (1, -2), (1, 3, -1)):
        m, n = 5, 7
        a, x = sample(kind, m, n), sample(kind, n if trans == NONE else m)
        y = sample(kind, m if trans == NONE else n)
        call = Call(kind, layout)
        out, inputs = strided(y, incy), strided(x, incx)
        call.run(kind + "gemv", trans, m, n, alpha, call.matrix(a), inputs, incx, beta, out, incy)
        expect(unstrided(out, incy), alpha * op(trans, wide(a)) @ wide(x) + beta * wide(y), f"{kind}gemv {layout} {trans}")
        kl, ku = 1, 2
        banded = np.triu(np.tril(wide(a), ku), -kl)
        out = strided(y, incy)
        stored = band(layout, a, kl, ku, (m, n), a.dtype)
        call.run(kind + "gbmv", trans, m, n, kl, ku, alpha, stored, inputs, incx, beta, out, incy)
        expect(unstrided(out, incy), alpha * op(trans, banded) @ wide(x) + beta * wide(y), f"{kind}gbmv {layout} {trans}")


def structured_matrix_vector(kind, layout):
    alpha, beta = (0.75 + 0.25j, -0.5 + 1j) if kind == "c" else (0.75, -0.5)
    n, k = 6, 2
    for uplo, incx, incy in itertools.product((UPPER, LOWER), (1, -2), (1, -3)):
        a, x, y = sample(kind, n, n), sample(kind, n), sample(kind, n)
        full = symmetric(uplo, wide(a), kind == "c")
        call = Call(kind, layout)
        stored, inputs, out = call.matrix(a), strided(x, incx), strided(y, incy)
        call.run("chemv" if kind == "c" else "ssymv", uplo, n, alpha, stored, inputs, incx, beta, out, incy)
        expect(unstrided(out, incy), alpha * full @ wide(x) + beta * wide(y), f"{kind} symv {layout} {uplo}")
        below, above = (0, k) if uplo == UPPER else (k, 0)
        product = alpha * np.triu(np.tril(full, k), -k) @ wide(x) + beta * wide(y)
        out = strided(y, incy)
        call.run("chbmv" if kind == "c" else "ssbmv", uplo, n, k, alpha, band(layout, a, below, above, (n, n), a.dtype), inputs,
                 incx, beta, out, incy)
        expect(unstrided(out, incy), product, f"{kind} sbmv {layout} {uplo}")
        out = strided(y, incy)
        call.run("chpmv" if kind == "c" else "sspmv", uplo, n, alpha, packed(layout, uplo, a), inputs, incx, beta, out, incy)
        expect(unstrided(out, incy), alpha * full @ wide(x) + beta * wide(y), f"{kind} spmv {layout} {uplo}")
        for name, hermitian, scalar in (("her", True, 0.5),) if kind == "c" else (("syr", False, 0.5),):
            stored = call.matrix(a)
            call.run(kind + name, uplo, n, scalar, inputs, incx, stored)
            update = full + scalar * np.outer(wide(x), wide(x).conj() if hermitian else wide(x))
            expect(triangle(uplo, NON_UNIT, call.value(stored)), triangle(uplo, NON_UNIT, update), f"{kind}{name} {layout}")
            stored = packed(layout, uplo, a)
            call.run(PACKED[name], uplo, n, scalar, inputs, incx, stored)
            expect(stored, packed(layout, uplo, update), f"{PACKED[name]} {layout}")
            stored = call.matrix(a)
            call.run(kind + name + "2", uplo, n, alpha, inputs, incx, strided(y, incy), incy, stored)
            update = full + alpha * np.outer(wide(x), wide(y).conj() if hermitian else wide(y))
            update += np.conj(alpha) * np.outer(wide(y), wide(x).conj() if hermitian else wide(x))
            expect(triangle(uplo, NON_UNIT, call.value(stored)), triangle(uplo, NON_UNIT, update), f"{kind}{name}2 {layout}")
            stored = packed(layout, uplo, a)
            call.run(PACKED[name] + "2", uplo, n, alpha, inputs, incx, strided(y, incy), incy, stored)
            expect(stored, packed(layout, uplo, update), f"{PACKED[name]}2 {layout}")
        for trans, diag in itertools.product((NONE, TRANSPOSE, ADJOINT), (NON_UNIT, UNIT)):
            t = a / 4 + 2 * np.eye(n, dtype=a.dtype)
            whole = op(trans, triangle(uplo, diag, wide(t)))
            for name, expected in (("trmv", whole @ wide(x)), ("trsv", np.linalg.solve(whole, wide(x)))):
                out = strided(x, incx)
                call.run(kind + name, uplo, trans, diag, n, call.matrix(t), out, incx)
                expect(unstrided(out, incx), expected, f"{kind}{name} {layout} {uplo} {trans} {diag}")
            for name, expected in (("tpmv", whole @ wide(x)), ("tpsv", np.linalg.solve(whole, wide(x)))):
                out = strided(x, incx)
                call.run(kind + name, uplo, trans, diag, n, packed(layout, uplo, t), out, incx)
                expect(unstrided(out, incx), expected, f"{kind}{name} {layout} {uplo} {trans} {diag}")
            whole = op(trans, np.triu(np.tril(triangle(uplo, diag, wide(t)), k), -k))
            for name, expected in (("tbmv", whole @ wide(x)), ("tbsv", np.linalg.solve(whole, wide(x)))):
                out = strided(x, incx)
                stored = band(layout, t, below, above, (n, n), a.dtype)
                call.run(kind + name, uplo, trans, diag, n, k, stored, out, incx)
                expect(unstrided(out, incx), expected, f"{kind}{name} {layout} {uplo} {trans} {diag}")
    m, x, y, a = 5, sample(kind, 5), sample(kind, n), sample(kind, 5, n)
    for name, second in (("ger", y),) if kind == "s" else (("geru", y), ("gerc", y.conj())):
        call = Call(kind, layout)
        stored = call.matrix(a)
        call.run(kind + name, m, n, alpha, strided(x, 2), 2, strided(y, -2), -2, stored)
        expect(call.value(stored), wide(a) + alpha * np.outer(wide(x), wide(second)), f"{kind}{name} {layout}")


def matrix_matrix(kind, layout):
    alpha, beta = (0.75 + 0.25j, -0.5 + 1j) if kind == "c" else (0.75, -0.5)
    m, n, k = 5, 7, 4
    transposes = (NONE, TRANSPOSE, ADJOINT)
    for ta, tb in itertools.product(transposes, transposes):
        a = sample(kind, *((m, k) if ta == NONE else (k, m)))
        b, c = sample(kind, *((k, n) if tb == NONE else (n, k))), sample(kind, m, n)
        call = Call(kind, layout)
        out = call.matrix(c)
        call.run(kind + "gemm", ta, tb, m, n, k, alpha, call.matrix(a), call.matrix(b), beta, out)
        expect(call.value(out), alpha * op(ta, wide(a)) @ op(tb, wide(b)) + beta * wide(c), f"{kind}gemm {layout} {ta} {tb}")
    for side, uplo in itertools.product((LEFT, RIGHT), (UPPER, LOWER)):
        order = m if side == LEFT else n
        a, b, c = sample(kind, order, order), sample(kind, m, n), sample(kind, m, n)
        for name, hermitian in (("symm", False), ("hemm", True))[: 1 + (kind == "c")]:
            call = Call(kind, layout)
            full, out = symmetric(uplo, wide(a), hermitian), call.matrix(c)
            call.run(kind + name, side, uplo, m, n, alpha, call.matrix(a), call.matrix(b), beta, out)
            product = full @ wide(b) if side == LEFT else wide(b) @ full
            expect(call.value(out), alpha * product + beta * wide(c), f"{kind}{name} {layout} {side} {uplo}")
        for trans, diag in itertools.product(transposes, (NON_UNIT, UNIT)):
            t = a / 4 + 2 * np.eye(order, dtype=a.dtype)
            whole = op(trans, triangle(uplo, diag, wide(t)))
            inverse = np.linalg.inv(whole)
            for name, factor in (("trmm", whole), ("trsm", inverse)):
                call = Call(kind, layout)
                out = call.matrix(b)
                call.run(kind + name, side, uplo, trans, diag, m, n, alpha, call.matrix(t), out)
                product = factor @ wide(b) if side == LEFT else wide(b) @ factor
                expect(call.value(out), alpha * product, f"{kind}{name} {layout} {side} {uplo} {trans} {diag}")
    updates = [("syr", TRANSPOSE, alpha, beta)]
    if kind == "c":
        updates.append(("her", ADJOINT, 0.75, -0.5))
    for (name, other, first, last), uplo, plain in itertools.product(updates, (UPPER, LOWER), (True, False)):
        trans = NONE if plain else other
        shape = (n, k) if plain else (k, n)
        a, b, c = sample(kind, *shape), sample(kind, *shape), sample(kind, n, n)
        before = symmetric(uplo, wide(c), name == "her")
        opA, opB = op(trans, wide(a)), op(trans, wide(b))
        call = Call(kind, layout)
        out = call.matrix(c)
        call.run(kind + name + "k", uplo, trans, n, k, first, call.matrix(a), last, out)
        expected = first * opA @ op(other, opA) + last * before
        expect(triangle(uplo, NON_UNIT, call.value(out)), triangle(uplo, NON_UNIT, expected), f"{kind}{name}k {layout} {trans}")
        out = call.matrix(c)
        call.run(kind + name + "2k", uplo, trans, n, k, alpha, call.matrix(a), call.matrix(b), last, out)
        second = np.conj(alpha) if name == "her" else alpha
        expected = alpha * opA @ op(other, opB) + second * opB @ op(other, opA) + last * before
        expect(triangle(uplo, NON_UNIT, call.value(out)), triangle(uplo, NON_UNIT, expected), f"{kind}{name}2k {layout} {trans}")


for kind, layout in itertools.product("sc", (ROWS, COLUMNS)):
    general_matrix_vector(kind, layout)
    structured_matrix_vector(kind, layout)
    matrix_matrix(kind, layout)

# ---- NumPy itself ----------------------------------------------------------------------------------------------------

address = lambda library: ctypes.cast(library.cblas_sgemm, ctypes.c_void_p).value
if address(ctypes.CDLL(None)) != address(LIBRARY):
    sys.exit("the library is not preloaded")
for kind, n in itertools.product("sc", (1, 3, 64, 130)):
    a, b = sample(kind, n, n) + n**0.5 * np.eye(n, dtype=np.float32), sample(kind, n, 5)
    expect(a @ b, wide(a) @ wide(b), f"{kind} product {n}", n)
    expect(a.T @ a, wide(a).T @ wide(a), f"{kind} A'A {n}", n)
    expect(a @ b[:, 0], wide(a) @ wide(b)[:, 0], f"{kind} matrix times vector {n}", n)
    expect(np.vdot(a, a), np.vdot(wide(a), wide(a)), f"{kind} vdot {n}", n)
    expect(np.linalg.solve(a, b), np.linalg.solve(wide(a), wide(b)), f"{kind} solve {n}", n)
    expect(np.linalg.inv(a), np.linalg.inv(wide(a)), f"{kind} inv {n}", n)
    sign, logarithm = np.linalg.slogdet(a)
    wideSign, wideLogarithm = np.linalg.slogdet(wide(a))
    expect(sign, wideSign, f"{kind} sign of det {n}", n)
    expect(logarithm, wideLogarithm, f"{kind} log of det {n}", n)
sys.exit(failures != 0)
