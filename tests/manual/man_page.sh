#!/usr/bin/env bash
# man_page.sh PAGE: the page is read without a warning by the man programs that are here.
set -euo pipefail

page=$1
[ -s "$page" ]
if command -v mandoc >/dev/null; then mandoc -T lint -W style "$page"; fi
if command -v groff >/dev/null; then
    warnings=$(groff -ww -z -man "$page" 2>&1)
    if [ -n "$warnings" ]; then
        printf '%s\n' "$warnings"
        exit 1
    fi
fi
