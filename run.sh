#!/usr/bin/env bash
# The two front-door commands of MarlixLibQt.
#   ./run.sh demo [--preset P] [-- studio arguments]   build and start the studio (offscreen without a display:
#                                                      it writes its screenshots and prints the folder)
#   ./run.sh test [--preset P] [-- ctest arguments]    build and run every test through CTest
#   ./run.sh bench                                     build the release preset and run the benchmarks
# Presets: dev (default), asan (address + undefined-behaviour sanitizers), ci, release.
set -euo pipefail
cd "$(dirname "$0")"

command=${1:-}
shift || true
preset=dev
[ "$command" = bench ] && preset=release
extra=()
while [ $# -gt 0 ]; do
    case "$1" in
        --preset) preset=$2; shift 2 ;;
        --preset=*) preset=${1#--preset=}; shift ;;
        --asan) preset=asan; shift ;;
        --) shift; extra=("$@"); break ;;
        *) extra+=("$1"); shift ;;
    esac
done

packages=(cmake ninja-build g++ pkg-config ccache qt6-base-dev qt6-base-dev-tools libqt6opengl6-dev libgl-dev
          libglx-dev nlohmann-json3-dev fonts-dejavu-core)
[ "$command" = bench ] && packages+=(libbenchmark-dev)

install_missing() {
    local missing=()
    for p in "${packages[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    if [ "$(id -u)" -eq 0 ]; then
        echo "Installing ${missing[*]}" >&2
        apt-get update -qq
        DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
    else
        echo "Missing Debian packages. Install them with:" >&2
        echo "  sudo apt-get install -y ${missing[*]}" >&2
        exit 1
    fi
}

build() {
    install_missing
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset"
}

case "$command" in
    demo)
        build
        studio="build/$preset/examples/studio/marlix-studio"
        if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] || [ "${QT_QPA_PLATFORM:-}" = offscreen ]; then
            out="build/$preset/screenshots"
            QT_QPA_PLATFORM=offscreen "$studio" --screenshots "$out" "${extra[@]}"
        else
            exec "$studio" "${extra[@]}"
        fi
        ;;
    test)
        build
        ctest --preset "$preset" "${extra[@]}"
        ;;
    bench)
        build
        for b in build/"$preset"/benchmarks/bench_*; do
            [ -x "$b" ] && "$b" "${extra[@]}"
        done
        ;;
    *)
        sed -n '2,8p' "$0" | sed 's/^# \{0,1\}//'
        exit 2
        ;;
esac
