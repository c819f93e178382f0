# Sourced by the scripts beside it.
set -euo pipefail
export LC_ALL=C.UTF-8
unset LD_LIBRARY_PATH PKG_CONFIG_PATH CMAKE_PREFIX_PATH CXXFLAGS LDFLAGS

fail() {
  printf 'FAILED: %s\n' "$*" >&2
  exit 1
}

# The libraries of the product in the installed tree $1, without the links to them.
product_libraries() { find "$1/lib" -name 'libkaz*.so.*' -type f; }

# Runs a program that uses the library as on a machine without a system bus: it must start, and end.
run_without_bus() {
  local folder
  folder=$(mktemp -d)
  # shellcheck disable=SC2064  # the folder of now is meant
  trap "rm -rf '$folder'" EXIT
  DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent KAZ_CONFIG_FILE=$folder/kaz.conf timeout 60 "$@" </dev/null
}
