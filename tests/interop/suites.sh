# Usage: suites.sh libqrv_blas.so
# The test suites of NumPy's and SciPy's linear algebra as Debian installs them, with our library preloaded; then the checks
# of this folder. What is not installed is named and not tried.
set -eu
library=$1 folder=$(dirname "$0") python=/usr/bin/python3 status=0

suite() { # MODULE PACKAGE...
  module=$1
  shift
  if ! "$python" -c "import pytest, $module" 2> /dev/null; then
    echo "$module or its tests are not installed (Debian: $* python3-pytest): not tried"
    return
  fi
  echo "== $module"
  log=$(mktemp)
  (cd / && LD_PRELOAD=$library "$python" -m pytest -q -p no:cacheprovider --tb=short -W ignore --pyargs "$module" > "$log" 2>&1) ||
    status=1
  tail -12 "$log"
  rm -f "$log"
}
suite numpy.linalg python3-numpy
suite numpy.core.tests.test_multiarray python3-numpy
suite numpy.core.tests.test_einsum python3-numpy
suite scipy.linalg python3-scipy
suite scipy.sparse.linalg python3-scipy

for check in numpy scipy torch multiprocessing; do
  echo "== ${check}_check.py"
  QRV_DYNAMIC=FALSE QRV_NUM_THREADS=3 sh "$folder/numpy.sh" "$library" "${check}_check.py" || [ $? -eq 77 ] || status=1
done
exit $status
