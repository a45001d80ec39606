#!/usr/bin/env bash
# Checks that each file and each test that docs/compliance.md names is there.
set -euo pipefail
cd "$(dirname "$0")/../.."
named=$(grep -o '`[^` ]*`' docs/compliance.md | tr -d '`' | sed -E 's,^wire\.([a-z_]+)$,tests/wire/test_\1.py,' | grep -E '/|\.(md|py|sh|json)$' | grep -vE '^/|NAME' | sort -u)
[ -n "$named" ]
for file in $named
do
    [ -e "$file" ] || { echo "docs/compliance.md names $file, which isn't there" >&2; exit 1; }
done
echo "docs/compliance.md names $(echo "$named" | wc -l) files, all there"
