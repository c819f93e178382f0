# shellcheck shell=bash disable=SC2154  # `package` sets what is used here
# Sourced. Clean roots of Debian testing to build and to try packages in, kept in .deps/package for the next run.
#
# A root is a stack of folders, one over the other:
#   base    what a program that uses the library is built with: a compiler, CMake, pkgconf, and apt
#   build   over base: debian/control's build dependencies, and lintian
#   cross   over base: the build dependencies of arm64, its cross compiler, what its tests want, and qemu-user
# Whatever runs in a root works on one more folder on top, so that the stack stays clean. Mounts live in a namespace of
# their own and end with the command.
#
# Uses $store, $control (the file) and $fresh ('yes': make everything anew).

readonly suite=forky
readonly base_packages=(g++ cmake make pkgconf)
readonly build_tools=(build-essential dpkg-dev lintian ccache)
# The distribution's own tests' tools are not here: the packages are built without the tests.
readonly cross_tools=(build-essential crossbuild-essential-arm64 dpkg-dev ccache ninja-build qemu-user dbus-daemon)
readonly cross_packages=(libgtest-dev:arm64 libgmock-dev:arm64)

say() { printf '==> %s\n' "$*" >&2; }
die() { printf 'package: %s\n' "$*" >&2; exit 1; }

# Runs a command with its output in a log, which is shown when it fails.
logged() { # log, command...
  "${@:2}" >"$1" 2>&1 </dev/null || { tail -n 60 "$1" | cut -c1-400 >&2; die "failed; see $1"; }
}

# The archive of this machine's own release, as apt knows it; it carries the other suites too.
archive() {
  local codename
  # shellcheck source=/dev/null
  codename=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
  # shellcheck disable=SC2016  # apt's variables
  apt-get indextargets --format '$(SITE) $(CODENAME) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
    awk -v name="$codename" '($2 == name || $3 == name) && $NF == "main" {print $1; exit}'
}

# How this machine's apt reaches an archive, and whether it takes one that has not been renewed, holds in the roots too.
apt_options() {
  apt-config dump | grep -E '^Acquire::(Check-Valid-Until|Retries|https?::Proxy|ForceIPv[46]) ' || true
}

# Runs a command in a stack of folders, top first and separated by colons, on top of which is a folder for all that
# changes. With 'bind SOURCE TARGET' further folders are shown inside.
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

# A layer is remade when what went into it changes, and 'fresh' asks for it. The archive moving on is no reason: every
# run brings the packages it tries up to date.
layer_is_there() { # name, what goes into it
  [ "$fresh" != yes ] && [ -d "$store/$1" ] && [ "$(cat "$store/$1.made-of" 2>/dev/null)" = "$2" ]
}

make_base() {
  local site options option new=$store/base.new made_of
  made_of="$suite $(IFS=,; echo "${base_packages[*]}")"
  if layer_is_there base "$made_of"; then return; fi
  site=$(archive)
  [ -n "$site" ] || die "apt knows no archive that carries this release's main component; run apt-get update"
  say "making a root of $suite (once)"
  throw_away "$new"
  throw_away "$store/build"
  throw_away "$store/cross"
  options=(--aptopt='APT::Install-Recommends "false"' --dpkgopt=force-unsafe-io)
  while IFS= read -r option; do options+=("--aptopt=$option"); done < <(apt_options)
  mkdir -p "$store"
  TMPDIR=$store logged "$store/base.log" mmdebstrap --variant=apt --format=directory --skip=cleanup/apt/lists \
    "${options[@]}" --include="$(IFS=,; echo "${base_packages[*]}")" "$suite" "$new" "deb $site $suite main"
  throw_away "$store/base"
  mv "$new" "$store/base"
  echo "$made_of" >"$store/base.made-of"
}

# Nobody reads manuals where packages are built.
readonly without_manuals="
  printf 'path-exclude=/usr/share/%s/*\n' doc locale man info >/etc/dpkg/dpkg.cfg.d/without-manuals
  echo 'man-db man-db/auto-update boolean false' | debconf-set-selections"

# The build dependencies of debian/control, with the option given.
build_dependencies() { # [option]
  echo "
    mkdir -p /tmp/of/debian
    cp /control/control /tmp/of/debian/
    cd /tmp/of
    apt-get build-dep -y -q --no-install-recommends $* ./
    rm -rf /tmp/of"
}

# Makes a layer over base by a script that runs in it.
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
