# shellcheck shell=bash disable=SC2154  # `package` and `root` set the variables
# Sourced. Clean roots of Debian. `root` runs a command in one; `package` builds and tests packages in roots of Debian
# testing and keeps them in .deps/package for the next run.
#
# A root is a stack of folders:
#   base    what a program that uses the library needs to build: a compiler, CMake, pkgconf, and apt
#   build   above base: debian/control's build dependencies, and lintian
#   cross   above base: the build dependencies for arm64, its cross compiler, what its tests need, and qemu-user
# A command in a root writes to one more folder on top, so that the stack stays clean. Its mounts have their own
# namespace and end with the command.
#
# Uses $store, $control (the file) and $fresh ('yes': make new roots).

readonly suite=forky
readonly base_packages=(g++ cmake make pkgconf)
readonly build_tools=(build-essential dpkg-dev lintian ccache)
# The packages are built without the tests, so the tools that the tests need are missing here.
readonly cross_tools=(build-essential crossbuild-essential-arm64 dpkg-dev ccache ninja-build qemu-user dbus-daemon)
readonly cross_packages=(libgtest-dev:arm64 libgmock-dev:arm64)

say() { printf '==> %s\n' "$*" >&2; }
die() { printf '%s: %s\n' "$(basename "$0")" "$*" >&2; exit 1; }

# Runs a command and writes its output to a log. Shows the end of the log when the command fails.
logged() { # log, command...
  "${@:2}" >"$1" 2>&1 </dev/null || { tail -n 60 "$1" | cut -c1-400 >&2; die "failed; see $1"; }
}

# The archive of this machine's release, from apt's configuration. It has the other suites too.
archive() {
  local codename
  # shellcheck source=/dev/null
  codename=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
  # shellcheck disable=SC2016  # apt's variables
  apt-get indextargets --format '$(SITE) $(CODENAME) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
    awk -v name="$codename" '($2 == name || $3 == name) && $NF == "main" {print $1; exit}'
}

# The roots use this machine's apt options for proxies, retries and expired archives.
apt_options() {
  apt-config dump | grep -E '^Acquire::(Check-Valid-Until|Retries|https?::Proxy|ForceIPv[46]) ' || true
}

# Runs a command in a stack of folders, separated by colons, the top one first. All changes go to one more folder on top.
# 'bind SOURCE TARGET' mounts further folders inside.
enter() { # stack, folder for changes, [bind SOURCE TARGET]... command...
  local stack=$1 changing=$2 binds=() inside
  shift 2
  while [ "$1" = bind ]; do binds+=("$2" "$3"); shift 3; done
  mkdir -p "$changing"/{changes,work,root}
  # shellcheck disable=SC2016  # for the shell in there
  inside='
    stack=$1 changing=$2 count=$3; shift 3
    mount -t overlay overlay -o "lowerdir=$stack,upperdir=$changing/changes,workdir=$changing/work" "$changing/root"
    mount -t proc proc "$changing/root/proc"
    mount -t tmpfs -o mode=1777 tmpfs "$changing/root/dev/shm"
    mount -t devpts -o newinstance,ptmxmode=0666 devpts "$changing/root/dev/pts"
    mount -t sysfs sysfs "$changing/root/sys"
    for file in /etc/resolv.conf /etc/hosts; do
      [ ! -e "$file" ] || [ ! -e "$changing/root$file" ] || mount --bind "$file" "$changing/root$file"
    done
    for ((; count > 0; count -= 2)); do
      mkdir -p "$changing/root$2"
      mount --bind "$1" "$changing/root$2"
      shift 2
    done
    exec chroot "$changing/root" "$@"'
  unshare --mount --pid --fork --kill-child -- bash -euc "$inside" enter "$stack" "$changing" ${#binds[@]} "${binds[@]}" \
    env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 TZ=UTC \
    DEBIAN_FRONTEND=noninteractive "$@"
}

throw_away() { # folder of enter's
  rm -rf --one-file-system "$1"
}

# A layer is rebuilt when its inputs change or 'fresh' requests it. A new state of the archive is no reason, because
# every run updates the root in which packages are tested.
layer_is_there() { # name, what goes into it
  [ "$fresh" != yes ] && [ -d "$store/$1" ] && [ "$(cat "$store/$1.made-of" 2>/dev/null)" = "$2" ]
}

# Debian's essential packages, apt, and those named; apt keeps its lists.
make_root() { # folder, suite, log, [package...]
  local site options option
  site=$(archive)
  [ -n "$site" ] || die "apt has no archive with this release's main component; run apt-get update"
  options=(--aptopt='APT::Install-Recommends "false"' --dpkgopt=force-unsafe-io)
  while IFS= read -r option; do options+=("--aptopt=$option"); done < <(apt_options)
  if [ $# -gt 3 ]; then options+=("--include=$(IFS=,; echo "${*:4}")"); fi
  TMPDIR=$(dirname "$1") logged "$3" mmdebstrap --variant=apt --format=directory --skip=cleanup/apt/lists \
    "${options[@]}" "$2" "$1" "deb $site $2 main"
}

make_base() {
  local new=$store/base.new made_of
  made_of="$suite $(IFS=,; echo "${base_packages[*]}")"
  if layer_is_there base "$made_of"; then return; fi
  say "making a root of $suite (once)"
  throw_away "$new"
  throw_away "$store/build"
  throw_away "$store/cross"
  mkdir -p "$store"
  make_root "$new" "$suite" "$store/base.log" "${base_packages[@]}"
  throw_away "$store/base"
  mv "$new" "$store/base"
  echo "$made_of" >"$store/base.made-of"
}

# The roots need no manuals.
readonly without_manuals="
  printf 'path-exclude=/usr/share/%s/*\n' doc locale man info >/etc/dpkg/dpkg.cfg.d/without-manuals
  echo 'man-db man-db/auto-update boolean false' | debconf-set-selections"

# A script that installs the build dependencies of debian/control, with the given option.
build_dependencies() { # [option]
  echo "
    mkdir -p /tmp/of/debian
    cp /control/control /tmp/of/debian/
    cd /tmp/of
    apt-get build-dep -y -q --no-install-recommends $* ./
    rm -rf /tmp/of"
}

# Makes a layer above base with a script that runs in it.
make_layer() { # name, script
  local made_of new=$store/$1.new
  made_of="$(cat "$store/base.made-of") $(cat "$control") $2"
  if [ "$store/base.made-of" -ot "$store/$1.made-of" ] && layer_is_there "$1" "$made_of"; then return; fi
  say "adding what '$1' needs (once)"
  throw_away "$new"
  throw_away "$store/$1"
  logged "$store/$1.log" enter "$store/base" "$new" bind "$(dirname "$control")" /control bash -euc "$2"
  mv "$new/changes" "$store/$1"
  throw_away "$new"
  echo "$made_of" >"$store/$1.made-of"
}

make_build() {
  make_base
  make_layer build "$without_manuals
    apt-get update -q
    apt-get install -y -q --no-install-recommends ${build_tools[*]} $(build_dependencies)"
}

make_cross() {
  make_base
  make_layer cross "$without_manuals
    dpkg --add-architecture arm64
    apt-get update -q
    apt-get install -y -q --no-install-recommends ${cross_tools[*]} ${cross_packages[*]}
    $(build_dependencies --host-architecture arm64)"
}
