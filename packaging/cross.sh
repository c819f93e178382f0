# shellcheck shell=bash disable=SC2154  # `package` sets what is used here
# Sourced by `package`: the packages for arm64, and the unit tests on an emulated processor.

readonly cross_stack=$store/cross:$store/base

cross_build() {
  say "cross-building the packages for arm64"
  debuild "$work/build.log" "$cross_stack" "$work/root-build" "$work/sources" \
    'export CC=aarch64-linux-gnu-gcc;' -b --host-arch=arm64 -Pcross,nocheck
  find "$work/sources" -maxdepth 1 -type f -name '*_arm64.*' -exec mv -t "$work" {} +
  local deb file
  for deb in "$work"/*.deb; do
    [ "$(dpkg-deb --field "$deb" Architecture)" = arm64 ] || die "$deb is not for arm64"
  done
  file=$(mktemp)
  dpkg-deb --fsys-tarfile "$work"/libkazwifi0_*.deb |
    tar --extract --to-stdout ./usr/lib/aarch64-linux-gnu/libkazwifi.so."$version" >"$file"
  readelf --file-header "$file" | grep 'Machine:.*AArch64' >/dev/null || die "the library is for another processor"
  readelf --notes --wide "$file" | grep 'BTI, PAC' >/dev/null || die "the library does not guard its branches"
  rm "$file"
  holds "the packages of version $version cross-build for arm64 without a warning"
}

# The tests use a dbus-daemon of the machine's own architecture. not_under_qemu lists the tests that cannot run under
# qemu-user, with the reasons.
cross_test() {
  say "running the unit tests for arm64 under qemu-user"
  # shellcheck disable=SC2016  # for the shell in there
  logged "$work/test.log" enter "$cross_stack" "$work/root-build" \
    bind "$work/sources" /build bind "$store/ccache" /ccache bind "$here" /packaging \
    env PATH=/usr/lib/ccache:/usr/sbin:/usr/bin:/sbin:/bin CCACHE_DIR=/ccache \
    CCACHE_SLOPPINESS=pch_defines,time_macros KAZ_JOBS="$jobs" /packaging/test_under_qemu "/build/kazwifi-$version"
  if grep 'warning: ' "$work/test.log" >&2; then die "the build of the tests warns; see $work/test.log"; fi
  grep -E '^[0-9]+% tests passed' "$work/test.log" | sed "s/^/ok: for arm64, /"
}
