# Usage: kernel_objects.sh BUILD OBJECT...
# Kernel objects are compiled for different processors. None may hold what the linker could merge with another
# build's (a weak symbol outside the build's namespace), code that runs at load, or mutable data.
set -eu
build=$1
shift
status=0
for object in "$@"; do
  weak=$(nm -C "$object" | grep -E ' [WVu] ' | grep -v "qrv::kernel::$build::" || true)
  # Tables of addresses are constants that the loader relocates; they lie in .data.rel.ro.
  data=$(objdump -tC "$object" | grep -E ' O (\.data|\.bss|\*COM\*)' | grep -v ' \.data\.rel\.ro' || true)
  if [ -n "$weak$data" ] || objdump -h "$object" | grep -qE '\.(init_array|ctors)'; then
    printf '%s\n' "$object: shared inline code, mutable data or a static initialiser" "$weak" "$data"
    status=1
  fi
done
exit $status
