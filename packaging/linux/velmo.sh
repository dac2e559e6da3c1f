#!/bin/sh
# Velmo finds its pages, images and translations in its working directory.
cd "$(dirname "$(readlink -f "$0")")/../lib/velmo" || exit 1
exec ./velmo "$@"
