#!/bin/sh
# Measures the running program on a virtual X display: how soon the first
# frame is presented, CPU time a frame while idle and while the demo song
# plays with the grid following it, and the peak memory.
#
#   scripts/measure-program.sh [BIN_DIR]     # BIN_DIR defaults to build-rel/bin
#
# The program runs from a scratch copy of BIN_DIR (sondrel, skins, modfont.png,
# demo.sdrltk), so its preferences stay out of the build. Sound goes to the
# disk driver writing to /dev/null, which plays in real time as a sound card
# would. CPU a frame is the difference between a run of 660 frames and one of
# 60, over 600, so that start-up and shutdown drop out. It all takes about
# a minute and a half.
set -eu

bin=$(cd "${1:-build-rel/bin}" && pwd)
for tool in xvfb-run /usr/bin/time; do
    command -v "$tool" >/dev/null || { echo "measure-program: $tool is missing" >&2; exit 1; }
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$bin/sondrel" "$bin/skins" "$bin/modfont.png" "$bin/demo.sdrltk" "$work/"
cd "$work"

display() {
    env SDL_AUDIODRIVER=disk SDL_DISKAUDIOFILE=/dev/null "$@" \
        xvfb-run -a -s "-screen 0 1024x768x24" sh -c 'date +%s.%N >start; exec /usr/bin/time -f "%U %S %M" -o time ./sondrel demo.sdrltk' \
        2>>log
}

# Prints "CPU-seconds peak-kB" of a run of $1 frames; the rest is its environment.
run() {
    frames=$1
    shift
    rm -f sondrel.prefs
    display SONDREL_EXIT_AFTER_FRAMES="$frames" "$@"
    tail -n 1 time | awk '{ print $1 + $2, $3 }'
    tail -n 1 time | awk '{ print $3 }' >>peaks
}

# Milliseconds from starting the program to its first presented frame: the median of five runs.
for round in 1 2 3 4 5; do
    rm -f first
    display SONDREL_EXIT_AFTER_FRAMES=1 SONDREL_FIRST_FRAME_LOG="$work/first"
    [ -s first ] || { echo "measure-program: no first-frame time was written" >&2; exit 1; }
    awk -v start="$(cat start)" '{ printf "%.0f\n", ($1 - start) * 1000 }' first >>firsts
done

# Milliseconds of CPU a frame: the median of three pairs of runs.
per_frame() {
    for round in 1 2 3; do
        set -- $(run 60 "$@") $(run 660 "$@") "$@"
        awk -v short="$1" -v long="$3" 'BEGIN { printf "%.2f\n", (long - short) / 600 * 1000 }'
        shift 4
    done | sort -n | sed -n 2p
}
idle=$(per_frame)
playing=$(per_frame SONDREL_PLAY_ON_START=1)

echo "first frame:            $(sort -n firsts | sed -n 3p) ms"
echo "CPU a frame, idle:      $idle ms"
echo "CPU a frame, playing:   $playing ms"
echo "peak memory (max RSS):  $(sort -n peaks | tail -n 1 | awk '{ printf "%.1f", $1 / 1024 }') MB"
