#!/usr/bin/env bash
# Redraws the icon in all sizes from its one drawing, packaging/icons/scn4070a.svg.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh

install_packages librsvg2-bin
for size in 16 24 32 48 64 128 256; do
    rsvg-convert -w "$size" -h "$size" -o "packaging/icons/scn4070a-$size.png" packaging/icons/scn4070a.svg
done
