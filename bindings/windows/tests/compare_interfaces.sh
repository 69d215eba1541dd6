#!/bin/sh
# Holds the checked-in interface definition and the code that goes with it against the member table.
# usage: compare_interfaces.sh INTERFACE_TEXT   (set UPDATE=1 to write them anew)
set -eu
program=$1
folder=$(dirname "$0")/..
compare() {
  if [ "${UPDATE:-0}" = 1 ]; then "$program" "$1" >"$folder/$2"; fi
  "$program" "$1" | diff -u "$folder/$2" - || {
    echo "$2 is not what the member table says: UPDATE=1 $0 $program writes it anew" >&2
    return 1
  }
}
compare idl qkel4x.idl
compare methods dual_methods.h
compare client tests/early_members.h
