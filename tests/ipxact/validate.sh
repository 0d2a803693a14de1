#!/bin/sh
# Validates every document under $2 against the schema $1: fails when one is
# invalid, or when nothing was written.
schema=$1
dir=$2
if [ ! -f "$schema" ]; then echo "skipped: schema $schema is absent"; exit 77; fi
command -v xmllint >/dev/null || { echo "xmllint is not installed (Debian libxml2-utils)"; exit 1; }
count=$(find "$dir" -name '*.xml' | wc -l)
if [ "$count" -eq 0 ]; then echo "no documents under $dir"; exit 1; fi
out=$(find "$dir" -name '*.xml' -print0 | xargs -0 -n 200 xmllint --noout --schema "$schema" 2>&1)
status=$?
echo "$out" | grep -v ' validates$'
echo "$count documents checked"
[ $status -eq 0 ]
