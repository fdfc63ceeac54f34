# Sourced by the commands of this folder.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/Tools/packages.sh"
clips="$root/build/benchmark-clips"

# build_benchmark NAME: installs what is missing and builds that program of the release.
build_benchmark() {
  install_packages "${build_packages[@]}" "${run_packages[@]}" "${bench_packages[@]}"
  local log="$root/build/release.log"
  mkdir -p "$clips"
  if ! { (cd "$root" && cmake --preset release -D TQ_BENCHMARKS=ON) &&
         cmake --build "$root/build/release" --target "$1"; } >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    echo "The build failed; all of its output is in $log." >&2
    return 1
  fi
}
