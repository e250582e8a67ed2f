#!/bin/sh
# bootstrap_test.sh BOOTSTRAP: it waits while another apt holds the locks, and for nothing else. The
# package tools are stand-ins: apt-get fails as often as the file "busy" has lines, with its text.
set -eu
bootstrap=$1
tools=$(mktemp -d)
trap 'rm -rf "$tools"' EXIT
cat >"$tools/dpkg-query" <<'END'
#!/bin/sh
exit 1
END
cat >"$tools/sudo" <<'END'
#!/bin/sh
exec "$@"
END
cat >"$tools/sleep" <<'END'
#!/bin/sh
exit 0
END
cat >"$tools/apt-get" <<'END'
#!/bin/sh
echo "$*" >>"$tools/calls"
if [ -s "$tools/busy" ]; then
    head -n 1 "$tools/busy" >&2
    sed -i 1d "$tools/busy"
    exit 100
fi
END
chmod +x "$tools"/*
export tools PATH="$tools:$PATH"

yes 'E: Could not get lock /var/lib/apt/lists/lock.' | head -n 3 >"$tools/busy"
"$bootstrap" 2>/dev/null
[ "$(grep -c ' update' "$tools/calls")" -eq 4 ]
[ "$(grep -c ' install .*g++' "$tools/calls")" -eq 1 ]

echo 'E: Unable to locate package' >"$tools/busy"
if "$bootstrap" 2>"$tools/output"; then echo "a failure was passed over"; exit 1; fi
grep -q 'Unable to locate package' "$tools/output"
