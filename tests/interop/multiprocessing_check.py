"""Children that Python forks from a process that has used several threads: each computes on one, and comes to its end.
The library is preloaded."""
import multiprocessing
import sys

import numpy as np

N = 300
A = np.ones((N, N), np.float32)


def work(k):
    return float((A @ (k * A))[0, 0])


if __name__ == "__main__":
    work(1)
    with multiprocessing.get_context("fork").Pool(3) as pool:
        results = pool.map_async(work, range(12)).get(timeout=60)
    sys.exit(results != [float(k * N) for k in range(12)])
