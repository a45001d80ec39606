#!/usr/bin/env bash
# Makes a copy of the installed SOAP runtime that has some functions of ours (Runtime.cpp) instead of its own;
# its code stays as it is.
#
#   lead-runtime.sh AR NM OBJCOPY INSTALLED COPY
set -euo pipefail
ar=$1 nm=$2 objcopy=$3 installed=$4 copy=$5

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
(cd "$folder" && "$ar" x "$installed")
for object in "$folder"/*.o; do
    changes=(--redefine-sym malloc=RuntimeAllocate --weaken-symbol soap_resolve --weaken-symbol soap_free_temp)
    # Behind ours its own one is still wanted, and so has a second name.
    place=$("$nm" "$object" | awk '$2 == "T" && $3 == "soap_free_temp" { print $1 }')
    if [ -n "$place" ]; then
        changes+=(--add-symbol "RuntimeFreeTemp=.text:0x$place,function,global")
    fi
    "$objcopy" "${changes[@]}" "$object"
done
rm -f "$copy"
"$ar" rcs "$copy" "$folder"/*.o
