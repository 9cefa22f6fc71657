#!/bin/sh
# SPDX-License-Identifier: MIT
# What doxygen reads of a header.
exec sed -E -e '/^ *friend .*;/d' -e '/^ *friend /,/;/d' -e '/^ *\/\/\//s/\b([A-Z])\. /\1.\\ /g' "$1"
