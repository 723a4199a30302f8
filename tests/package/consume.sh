# Usage: consume.sh BUILD_DIR PACKAGE_DIR COMPILER FLAGS
# Installs into a scratch prefix, moves it, and builds a small host against it with CMake and with pkg-config,
# shared and static.
set -eu
build=$1 package=$2 compiler=$3 flags=$4
scratch=$build/package-test
rm -rf "$scratch"
mkdir -p "$scratch"
cmake --install "$build" --prefix "$scratch/first" > /dev/null
mv "$scratch/first" "$scratch/moved"

cmake -S "$package" -B "$scratch/consumer" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" \
  -DCMAKE_PREFIX_PATH="$scratch/moved" > "$scratch/configure.log" || { cat "$scratch/configure.log"; exit 1; }
cmake --build "$scratch/consumer" > "$scratch/build.log" || { cat "$scratch/build.log"; exit 1; }
"$scratch/consumer/host_shared"
"$scratch/consumer/host_static"
"$scratch/consumer/host_blas"

if ! command -v pkg-config > /dev/null; then
  echo "pkg-config is not installed: its file was not tried"
  exit 0
fi
libraries=$(dirname "$(find "$scratch/moved" -name libqrv.a)")
export PKG_CONFIG_PATH="$libraries/pkgconfig"
$compiler $flags -std=c++20 "$package/host.cpp" -o "$scratch/host_pc" \
  $(pkg-config --cflags --libs qrv) -Wl,-rpath,"$libraries"
"$scratch/host_pc"
$compiler $flags -std=c++20 "$package/blas_host.cpp" -o "$scratch/blas_host_pc" \
  $(pkg-config --cflags --libs qrv-blas) -Wl,-rpath,"$libraries"
"$scratch/blas_host_pc"
mkdir "$scratch/static" && cp "$libraries/libqrv.a" "$scratch/static/"
$compiler $flags -std=c++20 "$package/host.cpp" -o "$scratch/host_pc_static" \
  -L"$scratch/static" $(pkg-config --static --cflags --libs qrv | sed "s# -L[^ ]*# #; s#-lqrv#$scratch/static/libqrv.a#")
"$scratch/host_pc_static"
