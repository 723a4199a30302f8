"""PyTorch's linear algebra of float32 and complex64 tensors on libqrv_blas, which is preloaded, by residuals in double."""
import sys

try:
    import torch
except ImportError:
    print("PyTorch is not installed (Debian: python3-torch): not tried")
    sys.exit(77)

torch.manual_seed(1)
failures = 0


def wide(x):
    return x.to(torch.complex128)


def expect(rest, size, what):
    """rest is what remains of matrices of that norm: some roundings for each row."""
    global failures
    if not torch.linalg.norm(rest) <= 1.2e-7 * 20 * max(rest.shape) * size:
        failures += 1
        print("failed:", what)


for kind, n in ((kind, n) for kind in (torch.float32, torch.complex64) for n in (1, 5, 40, 150)):
    a, b = torch.randn(n, n, dtype=kind), torch.randn(n, 3, dtype=kind)
    batch = torch.randn(4, n, n, dtype=kind)
    A, size, what = wide(a), float(torch.linalg.norm(a)), f"{kind} {n}"
    expect(wide(a @ a) - A @ A, size * size, f"product {what}")
    expect(wide(batch @ batch) - wide(batch) @ wide(batch), size * size, f"batch of products {what}")
    x = torch.linalg.solve(a, b)
    expect(A @ wide(x) - wide(b), size * float(torch.linalg.norm(x)), f"solve {what}")
    expect(A @ wide(torch.linalg.inv(a)) @ A - A, size * float(torch.linalg.cond(a)), f"inv {what}")
    definite = a @ a.mH + n * torch.eye(n, dtype=kind)
    factor = wide(torch.linalg.cholesky(definite))
    expect(factor @ factor.mH - wide(definite), float(torch.linalg.norm(definite)), f"cholesky {what}")
    q, r = torch.linalg.qr(a)
    expect(wide(q) @ wide(r) - A, size, f"qr {what}")
    u, s, vh = torch.linalg.svd(a)
    expect(wide(u) * s @ wide(vh) - A, size, f"svd {what}")
    w, v = torch.linalg.eigh(definite)
    expect(wide(definite) @ wide(v) - wide(v) * w, float(torch.linalg.norm(definite)), f"eigh {what}")
    w, v = torch.linalg.eig(a)
    expect(A @ wide(v) - wide(v) * wide(w), size, f"eig {what}")
    x = torch.linalg.lstsq(torch.cat((a, a)), torch.cat((b, b)), driver="gels").solution
    expect(A @ wide(x) - wide(b), size * float(torch.linalg.norm(x)), f"lstsq {what}")


sys.exit(failures != 0)
