# Usage: cluster.sh PROGRAM LAUNCH DATA
# Each job of the example on 4 processes of this machine, which judges its own results; values as on one process.
set -eu
program=$1 launch=$2 data=$3
[ -x "$program" ] && command -v mpirun > /dev/null || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 OMP_WAIT_POLICY=passive
run() { # PROCESSES ARGUMENT...
  processes=$1
  shift
  timeout 60 mpirun -np "$processes" --oversubscribe --bind-to none sh "$launch" "$program" "$@" > "$work/log" 2>&1 ||
    { cat "$work/log" && exit 1; }
}

run 4 lu "$data/west0479.mtx"
run 4 lu --random 100 --block 16
run 4 cholesky "$data/494_bus.mtx" -o "$work/x.npy"
run 4 svd --random 60 --block 8
for processes in 1 4; do
  run "$processes" eig --random 100 --block 8 -o "$work/$processes.mtx"
done
# The first to seventh digit differ by rounding at most: sizes agree to a part in 10,000.
paste "$work/1.mtx" "$work/4.mtx" | awk '!/%/ && NF == 2 && ($1 - $2) ^ 2 > (1e-4 * $2) ^ 2 { exit 1 }'
# A failure of one ends all.
! timeout 60 mpirun -np 4 --oversubscribe sh "$launch" "$program" lu "$work/none.mtx" > "$work/log" 2>&1
grep -q 'cannot read' "$work/log"
