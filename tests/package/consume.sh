# Usage: consume.sh BUILD_DIR PACKAGE_DIR COMPILER C_COMPILER FLAGS
# Installs into a scratch prefix, moves it, and builds small hosts against it with CMake and with pkg-config, in C++,
# shared and static, and in C.
set -eu
build=$1 package=$2 compiler=$3 cCompiler=$4 flags=$5
scratch=$build/package-test
rm -rf "$scratch"
mkdir -p "$scratch"
cmake --install "$build" --prefix "$scratch/first" > /dev/null
mv "$scratch/first" "$scratch/moved"

# Usage: build_host SOURCE NAME
build_host() {
  cmake -S "$1" -B "$scratch/$2" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" \
    -DCMAKE_C_COMPILER="$cCompiler" -DCMAKE_C_FLAGS="$flags" -DCMAKE_PREFIX_PATH="$scratch/moved" --no-warn-unused-cli \
    > "$scratch/$2.log" && cmake --build "$scratch/$2" >> "$scratch/$2.log" || { cat "$scratch/$2.log"; exit 1; }
}
build_host "$package" consumer
"$scratch/consumer/host_shared"
"$scratch/consumer/host_static"
build_host "$package/c" c_consumer
"$scratch/c_consumer/host_c"

if ! command -v pkg-config > /dev/null; then
  echo "pkg-config is not installed: its file was not tried"
  exit 0
fi
libraries=$(dirname "$(find "$scratch/moved" -name libqrv.a)")
export PKG_CONFIG_PATH="$libraries/pkgconfig"
$compiler $flags -std=c++20 "$package/host.cpp" -o "$scratch/host_pc" \
  $(pkg-config --cflags --libs qrv) -Wl,-rpath,"$libraries"
"$scratch/host_pc"
$cCompiler $flags "$package/c/host.c" -o "$scratch/host_c_pc" \
  $(pkg-config --cflags --libs qrv-blas) -Wl,-rpath,"$libraries"
"$scratch/host_c_pc"
mkdir "$scratch/static" && cp "$libraries/libqrv.a" "$scratch/static/"
$compiler $flags -std=c++20 "$package/host.cpp" -o "$scratch/host_pc_static" \
  -L"$scratch/static" $(pkg-config --static --cflags --libs qrv | sed "s# -L[^ ]*# #; s#-lqrv#$scratch/static/libqrv.a#")
"$scratch/host_pc_static"
