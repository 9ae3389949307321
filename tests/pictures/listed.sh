#!/usr/bin/env bash
# Fails unless the pictures that a page names are exactly those in each folder.
#
#     listed.sh PAGE FOLDER...
set -eu
page=$1
shift
named=$(sed -n 's|^!.*(pictures/[^/]*/\(.*\.png\))$|\1|p' "$page" | sort)
[ -n "$named" ]
for folder in "$@"; do
    diff <(echo "$named") <(cd "$folder" && ls | sort) || {
        echo "differs: $page (<) and $folder (>)"
        exit 1
    }
done
