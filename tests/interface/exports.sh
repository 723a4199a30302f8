# Usage: exports.sh libqrv.so
# The shared library exports the upper-case entries, the public qrv_serv_ controls and the provider classes, and
# nothing else.
set -eu
header_names=$(cat "$(dirname "$0")"/../../include/qrv/native.h "$(dirname "$0")"/../../include/qrv/service.h |
  tr '\n' ' ' | sed 's/QRV_API/\n/g' | sed -n 's/^[^(;]*[ *]\([A-Za-z0-9_]*\)(.*/\1/p' | sort -u)
exported=$(nm -D --defined-only "$1" | awk '{ print $3 }' | sort -u)
classes='^_ZT?[A-Za-z]*N[A-Z0-9]*K?6Corvex11Mathematics'
others=$(printf '%s\n' "$exported" | grep -vE "$classes" || true)
if [ "$others" != "$header_names" ]; then
  echo "exported and declared names differ (< declared, > exported):"
  printf '%s\n' "$header_names" > exports.declared
  printf '%s\n' "$others" > exports.found
  diff exports.declared exports.found
  exit 1
fi
echo "$(printf '%s\n' "$others" | wc -l) entries and controls, $(printf '%s\n' "$exported" | grep -cE "$classes") class symbols"
