#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs ./run, ./test and the scripts that they call in a copy of the tree, with a fake apt.
# Usage: scripts_test.sh REPOSITORY
# shellcheck disable=SC2016  # the fake programs made here expand the single-quoted text
set -uo pipefail

readonly repository=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
readonly work home=$work/home
failures=0

# Runs a command and checks its exit status and its output, against a pattern of [[ == ]].
expect() {
    local status=$1 wanted=$2 text actual
    shift 2
    text=$("$@" 2>&1)
    actual=$?
    # shellcheck disable=SC2053  # a pattern
    [[ $actual == "$status" && $text == $wanted ]] && return
    printf 'FAILED: %s\n  wanted %s: %s\n  got %s: %s\n' "$*" "$status" "$wanted" "$actual" "$text"
    failures=$((failures + 1))
}

# Puts a fake program before the machine's.
fake() {
    printf '#!/bin/bash\n%s\n' "$2" >"$work/bin/$1"
    chmod +x "$work/bin/$1"
}

mkdir -p "$work/bin" "$home"
cp -r "$repository"/{run,test,scripts} "$home"
PATH=$work/bin:$PATH

# The output of apt-cache for a package, long enough to fill a pipe.
fake apt-cache 'echo "  Candidate: ${CANDIDATE-4.6.0}"; head -c 1000000 /dev/zero | tr "\0" "x"'
fake dpkg-query '[[ $* == *quill-dev* && -n ${LACKS_QUILL-} ]] || printf installed'
fake apt-get 'echo "apt-get $*" >>'"$work"'/apt; [[ $1 != indextargets ]] || echo "http://mirror bookworm Debian Debian"'
fake sudo 'exec "$@"'
fake tee 'cat >/dev/null'

for _ in {1..10}; do
    expect 0 "" "$home/scripts/apt_offers" opencv-doc
done
CANDIDATE="(none)" expect 1 "" "$home/scripts/apt_offers" opencv-doc

# An apt source is announced before it is added; without apt, or without the right to use it, setup says what to do.
expect 0 "" "$home/scripts/setup"
# shellcheck source=/dev/null
if (. /etc/os-release && [[ $VERSION_CODENAME == bookworm ]]); then
    CANDIDATE="(none)" LACKS_QUILL=1 expect 0 "setup: installing quill-dev*adding Debian forky*sources.list.d/quill.sources*" \
        "$home/scripts/setup"
fi
if ((EUID == 0)); then
    as_nobody=(setpriv --reuid=65534 --regid=65534 --clear-groups)
    chmod -R a+rX "$work"
else
    as_nobody=()
fi
rm "$work/bin/sudo"
if ! command -v sudo >/dev/null; then
    LACKS_QUILL=1 expect 1 "setup: quill-dev must be installed*An administrator can run: *scripts/setup" \
        "${as_nobody[@]}" "$home/scripts/setup"
    expect 1 "as_root: *An administrator can run:*apt-get update" "${as_nobody[@]}" "$home/scripts/as_root" apt-get update
fi

# Output is hidden unless the command fails, and nothing outlives it.
expect 0 "" "$home/scripts/quietly" name "$work/log" echo hidden
QUIETLY_S=1 expect 0 "name: [1-9]* s  \[1/2\] a*" \
    "$home/scripts/quietly" name "$work/log" bash -c 'printf "[1/2] a\r\n"; sleep 1.5'
expect 3 "shown" "$home/scripts/quietly" name "$work/log" bash -c 'echo shown; exit 3'
expect 0 "" timeout 10 bash -c "'$home/scripts/quietly' name '$work/log' true | cat"

# From here on, setting up, building and fetching take no time and leave a trace.
for script in setup build fetch_stereo_pair; do
    printf '#!/bin/bash\necho %s >>%s/trace\nsleep 0.3\n' "$script" "$work" >"$home/scripts/$script"
done
mkdir -p "$home/build/main/examples"
printf '#!/bin/bash\nprintf "%%s\\n" "$*"\n' >"$home/build/main/examples/stereo_cloud"
chmod +x "$home/build/main/examples/stereo_cloud"
touch "$work/l.png" "$work/r.png"
pair=(--left "$work/l.png" --right "$work/r.png" --focal 700 --baseline 1.2e2)

expect 0 "usage: ./run*" "$home/run" --help
expect 0 "usage: ./run*" "$home/run" --left "$work/l.png" -h
expect 2 "run: unknown option '--lefft'; ./run --help*" "$home/run" --lefft x
expect 2 "run: --focal belongs to a pair of your own*" "$home/run" --focal 100
expect 2 "run: a pair of your own needs --right as well*" "$home/run" --left "$work/l.png"
expect 2 "run: a pair of your own needs --baseline as well*" "$home/run" "${pair[@]:0:6}"
expect 2 "run: cannot read '$work/none.png'*" "$home/run" "${pair[@]}" --right "$work/none.png"
expect 2 "run: --focal needs a number, not '7oo'*" "$home/run" "${pair[@]}" --focal 7oo
expect 2 "run: --out needs a value*" "$home/run" "${pair[@]}" --out
expect 2 "run: --left needs a value*" "$home/run" --left --right "$work/r.png"
expect 2 "*Usage: ./test*" "$home/test" --nosetup
[[ ! -e $work/trace ]] || { echo "FAILED: something was set up before the options were checked"; failures=$((failures + 1)); }

expect 0 "*--left $work/l.png*" "$home/run" --no-setup "${pair[@]}" --cx -3.5 --out "$work/out"
[[ $(cat "$work/trace") == build ]] || { echo "FAILED: --no-setup did: $(cat "$work/trace")"; failures=$((failures + 1)); }
ln -s "$home/run" "$work/linked_run"
expect 0 "*--focal 3740*" "$work/linked_run"

# Two at a time: the second waits until the first has prepared everything.
: >"$work/trace"
"$home/run" >/dev/null &
"$home/run" >/dev/null &
wait
[[ $(tr '\n' ' ' <"$work/trace") == "setup build fetch_stereo_pair setup build fetch_stereo_pair " ]] ||
    { echo "FAILED: two runs got into each other's way: $(cat "$work/trace")"; failures=$((failures + 1)); }

echo "$failures failures"
((failures == 0))
