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
    changes=(--redefine-sym malloc=RuntimeAllocate --weaken-symbol soap_resolve)
    changes+=(--wildcard --weaken-symbol 'soap_new_REQUIRE_*')
    # Behind ours their own ones are still wanted, and so have a second name.
    for names in soap_begin=RuntimeBegin soap_free_temp=RuntimeFreeTemp soap_string_in=RuntimeStringIn; do
        changes+=(--weaken-symbol "${names%=*}")
        place=$("$nm" "$object" | awk -v name="${names%=*}" '$2 == "T" && $3 == name { print $1 }')
        if [ -n "$place" ]; then
            changes+=(--add-symbol "${names#*=}=.text:0x$place,function,global")
        fi
    done
    "$objcopy" "${changes[@]}" "$object"
done
rm -f "$copy"
"$ar" rcs "$copy" "$folder"/*.o
