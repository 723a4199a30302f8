# Usage: numpy.sh libqrv_blas.so PROGRAM
# Debian's NumPy, which is linked with whatever BLAS is installed, with our library preloaded.
set -eu
python=/usr/bin/python3
if ! "$python" -c 'import numpy' 2> /dev/null; then
  echo "NumPy is not installed (Debian: python3-numpy): not tried"
  exit 77
fi
LD_PRELOAD=$1 exec "$python" "$(dirname "$0")/$2" "$1"
