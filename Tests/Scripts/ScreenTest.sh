#!/usr/bin/env bash
# .ci/screen compares what a page shows of a command's output with that output.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

failures=0
# expect OUTCOME NAME SHOWN PRINTED: whether the page with the lines SHOWN agrees with the output PRINTED.
expect() {
    printf '# A page\n\n    $ tool\n%s\n\nAfter it.\n' "$(sed 's/^/    /' <<<"$3")" >"$work/page.md"
    printf '%s\n' "$4" >"$work/output"
    local outcome=same
    .ci/screen check "$work/page.md" tool "$work/output" 2>"$work/errors" || outcome=different
    [ "$outcome" = "$1" ] || { echo "$2: expected $1, but it is $outcome"; failures=$((failures + 1)); }
}

printed='00:00.001  host     starts App: debug off, plug-ins A, B
00:00.002  network  wifi

00:00.003  host     made 2026-11-23 13:00:00 as F4CDF22C-66A7-4136-A47D-A8C00879EFF7 at 127.0.0.1:8080
00:00.004  sink     got open connection_status=wifi n=1'

expect same 'all lines' "$printed" "$printed"
expect same 'what changes from run to run' \
    '09:59.999  network  not reachable
00:01.000  host     made 2020-01-01 00:00:00 as 00000000-0000-4000-8000-000000000000 at 127.0.0.1:1' "$printed"
expect same 'lines left out' $'…\n00:00.002  network  wifi\n…\n00:00.004  sink     got open connection_status=cellular n=1' "$printed"
expect same 'text left out' '00:00.001  host     starts App: …, plug-ins A, …' "$printed"
expect different 'another text' '00:00.001  host     starts App: debug on, plug-ins A, B' "$printed"
expect different 'another text around what is left out' '00:00.001  host     starts App: …, plug-ins B' "$printed"
expect different 'more text' '00:00.001  host     starts App: debug off, plug-ins A' "$printed"
expect different 'another value of an event' '…
00:00.004  sink     got open connection_status=wifi n=2' "$printed"
expect different 'another order' $'00:00.002  network  wifi\n…\n00:00.001  host     starts App: debug off, plug-ins A, B' "$printed"
expect different 'lines left out without a sign' \
    $'00:00.001  host     starts App: debug off, plug-ins A, B\n00:00.004  sink     got open connection_status=wifi n=1' "$printed"
expect different 'no output' '00:00.002  network  wifi' ''
grep -q 'page.md:4: tool prints no such line' "$work/errors" || { echo "the line is not named:"; cat "$work/errors"; failures=$((failures + 1)); }

# An update shows the lines that are shown as they are printed now; the rest of the page stays.
printf '# A page\n\n    $ tool\n%s\n\nAfter it.\n' '    00:09.000  host     starts App: debug on, …
    00:09.000  network  wifi
    …
    00:09.000  sink     got open connection_status=… n=1' >"$work/page.md"
printf '%s\n' "$printed" | sed 's/network  wifi/network  cellular/' >"$work/output"
.ci/screen update "$work/page.md" tool "$work/output"
diff "$work/page.md" - <<'PAGE' || failures=$((failures + 1))
# A page

    $ tool
    00:00.001  host     starts App: debug off, plug-ins A, B
    00:00.002  network  cellular
    …
    00:00.004  sink     got open connection_status=… n=1

After it.
PAGE
[ "$failures" -eq 0 ]
