"""NumPy on libqrv_blas, which is preloaded over the BLAS that NumPy is linked with, against float64; and the C interface of
levels 2 and 3: by columns it does what the Fortran names do, which are the entries, and by rows the same."""
import ctypes
import itertools
import re
import sys

import numpy as np

LIBRARY = ctypes.CDLL(sys.argv[1])
ROWS, COLUMNS = 101, 102
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


def wide(x):
    return np.asarray(x).astype(np.complex128)


# ---- The C interface -------------------------------------------------------------------------------------------------

# Element types, names and arguments, of which the last one is the result. t, v, u, d and s are options; alpha and beta are
# of the element type, real and less are not. A[rows,columns] is a matrix, B one in band storage, S a band of a triangle,
# P a packed triangle, x[length] a vector; N(t,..) and L(s,..) choose what goes without a transpose and on the left.
ROUTINES = """
sc gemv t m n alpha A[m,n] x[N(t,n,m)] beta x[N(t,m,n)]
sc gbmv t m n kl ku alpha B[m,n] x[N(t,n,m)] beta x[N(t,m,n)]
s symv u n alpha A[n,n] x[n] beta x[n]
c hemv u n alpha A[n,n] x[n] beta x[n]
s sbmv u n k alpha S[n,n] x[n] beta x[n]
c hbmv u n k alpha S[n,n] x[n] beta x[n]
s spmv u n alpha P[n,n] x[n] beta x[n]
c hpmv u n alpha P[n,n] x[n] beta x[n]
s syr u n real x[n] A[n,n]
c her u n real x[n] A[n,n]
s spr u n real x[n] P[n,n]
c hpr u n real x[n] P[n,n]
s syr2 u n alpha x[n] x[n] A[n,n]
c her2 u n alpha x[n] x[n] A[n,n]
s spr2 u n alpha x[n] x[n] P[n,n]
c hpr2 u n alpha x[n] x[n] P[n,n]
sc trmv,trsv u t d n A[n,n] x[n]
sc tpmv,tpsv u t d n P[n,n] x[n]
sc tbmv,tbsv u t d n k S[n,n] x[n]
s ger m n alpha x[m] x[n] A[m,n]
c geru,gerc m n alpha x[m] x[n] A[m,n]
sc gemm t v m n k alpha A[N(t,m,k),N(t,k,m)] A[N(v,k,n),N(v,n,k)] beta A[m,n]
sc symm s u m n alpha A[L(s,m,n),L(s,m,n)] A[m,n] beta A[m,n]
c hemm s u m n alpha A[L(s,m,n),L(s,m,n)] A[m,n] beta A[m,n]
sc trmm,trsm s u t d m n alpha A[L(s,m,n),L(s,m,n)] A[m,n]
sc syrk u t n k alpha A[N(t,n,k),N(t,k,n)] beta A[n,n]
sc syr2k u t n k alpha A[N(t,n,k),N(t,k,n)] A[N(t,n,k),N(t,k,n)] beta A[n,n]
c herk u t n k real A[N(t,n,k),N(t,k,n)] less A[n,n]
c her2k u t n k alpha A[N(t,n,k),N(t,k,n)] A[N(t,n,k),N(t,k,n)] less A[n,n]
"""
OPTIONS = {"t": {111: b"N", 112: b"T", 113: b"C"}, "u": {121: b"U", 122: b"L"}, "d": {131: b"N", 132: b"U"}, "s": {141: b"L", 142: b"R"}}
OPTIONS["v"] = OPTIONS["t"]
SIZES = {"m": 5, "n": 7, "k": 4, "kl": 1, "ku": 2}


def stored(form, a, byRows, env):
    """A matrix as a layout has it, NaN beside its elements, and the places of these."""
    lines = np.arange(a.size).reshape(a.shape) if byRows else np.arange(a.size).reshape(a.shape).T
    i, j = np.indices(a.shape) if byRows else np.indices(a.T.shape)[::-1]
    flat = a.ravel()
    upper = env.get("u") == 121
    if form == "P":
        places = lines[i <= j] if upper else lines[i >= j]
        return flat[places].copy(), places
    if form == "A":
        padded = np.full((lines.shape[0], lines.shape[1] + 3), np.nan, a.dtype)
        padded[:, :-3] = flat[lines]
        return padded, None
    below, above = (env["kl"], env["ku"]) if form == "B" else (0, env["k"]) if upper else (env["k"], 0)
    first, last = (-below, above) if byRows else (-above, below)
    band = np.full((lines.shape[0], last - first + 1), np.nan, a.dtype)
    for line in range(lines.shape[0]):
        for p in range(max(0, line + first), min(lines.shape[1], line + last + 1)):
            band[line, p - line - first] = flat[lines[line, p]]
    return band, None


def result(name, layout, arguments, env, values):
    """What a call makes of its last argument, as a matrix or a vector; layout None is the Fortran name."""
    converted, keep = [] if layout is None else [layout], []
    increments = iter(env["inc"])

    def add(value, kind, letter=None):
        if layout is None and letter:
            converted.append(ctypes.c_char_p(letter))
        elif layout is None or isinstance(value, complex):
            keep.append(np.array([value], np.complex64 if isinstance(value, complex) else kind))
            converted.append(keep[-1].ctypes.data_as(ctypes.c_void_p))
        else:
            converted.append(ctypes.c_float(value) if kind == np.float32 else int(value))

    for argument, value in zip(arguments, values):
        if argument in OPTIONS:
            add(value, np.int32, OPTIONS[argument][value])
        elif not isinstance(value, np.ndarray):
            add(value, np.int32 if argument in SIZES else np.float32)
        else:
            if argument[0] == "x":
                inc = next(increments)
                array, places = np.full((len(value) - 1) * abs(inc) + 1, np.nan, value.dtype), None
                array[:: abs(inc)] = value if inc > 0 else value[::-1]
            else:
                array, places = stored(argument[0], value, layout == ROWS, env)
            keep.append(array)
            converted.append(array.ctypes.data_as(ctypes.c_void_p))
            if argument[0] != "P":
                add(inc if argument[0] == "x" else array.shape[1], np.int32)
    getattr(LIBRARY, name + "_" if layout is None else "cblas_" + name)(*converted)
    if argument[0] == "x":
        return array[:: abs(inc)] if inc > 0 else array[:: abs(inc)][::-1]
    if argument[0] == "P":
        whole = values[-1].copy().ravel()
        whole[places] = array
        return whole
    return array[:, :-3] if layout == ROWS else array[:, :-3].T


def check(kind, name, arguments):
    options = [a for a in arguments if a in OPTIONS]
    for chosen in itertools.product(*(OPTIONS[o] for o in options), ((1, 1), (-2, 3), (1, -1))):
        env = {**SIZES, **dict(zip(options, chosen)), "inc": chosen[-1]}
        if env.get("t") == (112 if name.startswith("cher") else 113 if name.startswith("csyr") else 0):
            continue  # not for these
        env |= {"N": lambda t, plain, other: plain if t == 111 else other, "L": lambda s, left, right: left if s == 141 else right}
        values = []
        for argument in arguments:
            shape = re.search(r"\[(.*)\]", argument)
            if shape:
                size = eval("(" + shape[1] + ",)", env)
                values.append(sample(kind, *size) / 4 + 2 * np.eye(*size, dtype=np.float32) if len(size) > 1 else sample(kind, *size))
            else:
                scalars = {"alpha": 0.75 + 0.25j, "beta": -0.5 + 1j, "real": 0.5, "less": -0.5}
                scalar = scalars.get(argument, env.get(argument))
                values.append(scalar.real if kind == "s" and isinstance(scalar, complex) else scalar)
        fortran, columns, rows = (result(name, layout, arguments, env, values) for layout in (None, COLUMNS, ROWS))
        what = f"{name} {chosen}"
        if not np.array_equal(columns, fortran, equal_nan=True):
            expect(columns, np.full_like(fortran, np.nan), what + " by columns")
        expect(rows, fortran, what + " by rows")


for line in ROUTINES.strip().splitlines():
    kinds, names, *arguments = line.split()
    for kind, name in itertools.product(kinds, names.split(",")):
        check(kind, kind + name, arguments)

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
sys.exit(failures != 0)
