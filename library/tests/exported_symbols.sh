#!/bin/sh
# usage: exported_symbols.sh NM LIBRARY. Fails on a symbol that is no part of the component's interface, and where
# a part of it is missing.
nm=$1
library=$2
listed=$("$nm" -D --defined-only -C "$library" | cut -c20- | sort -u) || exit 1

status=0
strange=$(printf '%s\n' "$listed" | grep -vE \
  -e '^Dll(GetClassObject|CanUnloadNow|RegisterServer|UnregisterServer)$' \
  -e '^(non-virtual thunk to )?(qkel4x|host|automation)::' \
  -e '^(vtable|typeinfo|typeinfo name) for (qkel4x|host|automation)::')
if [ -n "$strange" ]; then
  echo "not part of the interface, yet exported:"
  printf '%s\n' "$strange"
  status=1
fi
while read -r wanted; do
  printf '%s\n' "$listed" | grep -qF -- "$wanted" || { echo "not exported: $wanted"; status=1; }
done <<'END'
qkel4x::clsKEL4x::clsKEL4x()
qkel4x::clsKEL4x::MeasureVsbMerRmsDb()
qkel4x::clsStatistics::Statistics(
typeinfo for host::AutomationError
host::SetCurrentHost(host::Host*)
automation::kDriverClass
automation::Create(
END
exit $status
