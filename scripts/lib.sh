# Shared by the scripts in this folder; to be sourced by bash. All output goes to standard error.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

build_packages=(cmake ninja-build g++ pkg-config libpcre2-dev libboost-dev nlohmann-json3-dev libcurl4-openssl-dev
  libpugixml-dev libssl-dev libgtest-dev libgmock-dev libbenchmark-dev python3)

test_packages=(python3-swift openssl zsh fish)

# The second object store, for the tests on demand. Its packages come with services, which nothing starts.
ceph_packages=(ceph-mon ceph-osd radosgw ceph-common)

# What pip needs to install the Python package without a package index.
python_packages=(python3-pip python3-setuptools python3-wheel)

# The second compiler that the code must build with.
clang_packages=(clang)

# What the fuzz targets are built with; libclang-rt-dev has the fuzzer and the sanitizers.
fuzz_packages=("${clang_packages[@]}" libclang-rt-dev)

# The tools that kglob is compared with, and strace, which counts its system calls.
bench_packages=(fd-find gnuplot-nox ripgrep zsh rclone strace)

# The tools that build Debian packages.
package_packages=(dpkg-dev fakeroot file lintian)

# require_packages NAME...: installs those of the Debian packages that are missing; silent if none is.
require_packages() {
  local missing=() name
  for name in "$@"; do
    [[ $(dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null) == installed ]] || missing+=("$name")
  done
  ((${#missing[@]})) || return 0
  echo "installing: ${missing[*]}" >&2
  local as_root=()
  ((EUID == 0)) || as_root=(sudo)
  "${as_root[@]}" apt-get update -qq >&2
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
}

# build PRESET [TARGET...]: configures if necessary, then builds; silent if there is nothing to do.
build() {
  local preset=$1
  shift
  local folder=$root/build/$preset
  if [[ ! -f $folder/build.ninja ]]; then
    (cd "$root" && cmake --preset "$preset") >&2
  fi
  cmake --build "$folder" ${1:+--target "$@"} -- --quiet >&2
}
