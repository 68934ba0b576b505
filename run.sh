#!/usr/bin/env bash
# The two front-door commands of MarlixLibQt.
#   ./run.sh demo [--preset P] [-- studio arguments]   build and start the studio (offscreen without a display:
#                                                      it writes its screenshots and prints the folder)
#   ./run.sh test [--preset P] [-- ctest arguments]    build and run every test through CTest
#   ./run.sh bench                                     build the release preset and run the benchmarks
#   ./run.sh fuzz [SECONDS]                            build the fuzz preset (clang) and run every fuzz target
#                                                      on its corpus for SECONDS each (default 60)
#   ./run.sh docs                                      write the API reference to build/docs/html (fails on any
#                                                      undocumented public declaration)
#   ./run.sh gallery                                   render the studio offscreen and refresh the README's
#                                                      screenshots in docs/images
# Presets: dev (default), asan (address + undefined-behaviour sanitizers), ci, tsan (thread sanitizer), release, fuzz.
set -euo pipefail
cd "$(dirname "$0")"

command=${1:-}
shift || true
preset=dev
[ "$command" = bench ] && preset=release
[ "$command" = fuzz ] && preset=fuzz
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

packages=(cmake ninja-build g++ pkg-config ccache qt6-base-dev qt6-base-private-dev qt6-base-dev-tools libqt6opengl6-dev libgl-dev
          libglx-dev nlohmann-json3-dev fonts-dejavu-core qt6-tools-dev qt6-l10n-tools)
# Qt's own catalogues, so the studio's Qt dialogs speak the user's language as well.
[ "$command" = demo ] && packages+=(qt6-translations-l10n)
[ "$command" = bench ] && packages+=(libbenchmark-dev)
# The test docs.reference runs doxygen over the public headers.
[ "$command" = test ] && packages+=(doxygen)
[ "$command" = docs ] && packages=(doxygen)
# libFuzzer's runtime comes with clang's sanitizer runtimes.
[ "$command" = fuzz ] && packages+=(clang libclang-rt-14-dev)

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
    gallery)
        build
        out="build/$preset/gallery"
        rm -rf "$out"
        QT_QPA_PLATFORM=offscreen "build/$preset/examples/studio/marlix-studio" --screenshots "$out"
        # Every page at scale 1, and a few in German and at scale 2: enough to show them without growing the history
        # by every variant of every page.
        mkdir -p docs/images/de docs/images/scale-2
        cp "$out"/*.png docs/images/
        for page in workspace properties colour; do cp "$out/de/$page.png" docs/images/de/; done
        for page in workspace curves colour; do cp "$out/scale-2/$page.png" docs/images/scale-2/; done
        echo "Gallery refreshed in $PWD/docs/images (commit it with the change that altered the pictures)"
        ;;
    test)
        build
        ctest --preset "$preset" "${extra[@]}"
        ;;
    bench)
        build
        # The glob also matches the *_autogen folders, which pass -x.
        for b in build/"$preset"/benchmarks/bench_*; do
            if [ -f "$b" ] && [ -x "$b" ]; then
                "$b" "${extra[@]}"
            fi
        done
        ;;
    fuzz)
        seconds=${extra[0]:-60}
        case "$seconds" in
            '' | *[!0-9]*) echo "fuzz: SECONDS must be a whole number, not \"$seconds\"" >&2; exit 2 ;;
        esac
        build
        work="build/$preset/fuzz-findings"
        mkdir -p "$work"
        status=0
        for target in build/"$preset"/fuzz/fuzz_*; do
            [ -f "$target" ] && [ -x "$target" ] || continue
            name=$(basename "$target")
            # New inputs go to a folder of the build, so the committed seed corpus only changes by hand.
            corpus="$work/$name-corpus"
            mkdir -p "$corpus"
            log="$work/$name.log"
            echo "== $name: ${seconds} s" >&2
            if "$target" -max_total_time="$seconds" -artifact_prefix="$work/$name-" -print_final_stats=1 \
                "$corpus" $( [ -d "fuzz/corpus/$name" ] && echo "fuzz/corpus/$name") >"$log" 2>&1; then
                runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
                echo "$name: ${runs:-?} inputs run, no crash"
            else
                status=1
                echo "$name: FAILED, see $log (the failing input is in $work)"
                tail -n 30 "$log" >&2
            fi
        done
        exit $status
        ;;
    docs)
        install_missing
        # FAIL_ON_WARNINGS lets doxygen write the whole reference and then fail, so every gap is listed at once.
        if ! doxygen docs/Doxyfile; then
            echo "docs: the reference has warnings (listed above); every public declaration needs a summary" >&2
            exit 1
        fi
        echo "API reference: $PWD/build/docs/html/index.html"
        ;;
    *)
        sed -n '2,11p' "$0" | sed 's/^# \{0,1\}//'
        exit 2
        ;;
esac
