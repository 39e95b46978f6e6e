#!/usr/bin/env bash
# Checks what was built: PE32 for i386, only system DLLs imported (the GCC
# runtime is linked in), the version resource and string table present, and
# the exports a host program links against.
set -uo pipefail
OBJDUMP="$1"; DLL="$2"; shift 2
fail=0
err() { echo "FAIL: $*"; fail=1; }

# Anything a stock 32-bit Windows has; RL132.dll itself for the programs.
system_dll='^(KERNEL32|USER32|GDI32|ADVAPI32|msvcrt|ole32|OLEAUT32|MPR|SHELL32|COMDLG32|WINMM|RL132)\.dll$'

check_pe() {
  local f="$1"
  grep -q 'file format pei-i386' <<< "$("$OBJDUMP" -f "$f")" || err "$f is not PE32 i386"
  grep -q 'architecture: i386' <<< "$("$OBJDUMP" -f "$f")" || err "$f: architecture is not i386"
  local imports
  imports=$("$OBJDUMP" -p "$f" | sed -n 's/^\s*DLL Name: //p' | sort -u)
  [ -n "$imports" ] || err "$f imports nothing?"
  while read -r d; do
    [ -z "$d" ] && continue
    echo "$d" | grep -Eqi "$system_dll" || err "$f needs a non-system DLL: $d"
  done <<< "$imports"
}

check_pe "$DLL"
grep -q "DLL Name: RL132.dll" <<< "$("$OBJDUMP" -p "$DLL")" && err "RL132.dll imports itself"
dump=$("$OBJDUMP" -p "$DLL")
# Resource types: 6 is the string table, 0x10 the version resource.
grep -q 'Entry: ID: 0x000006' <<< "$dump" || err "no string table resource"
grep -q 'Entry: ID: 0x000010' <<< "$dump" || err "no version resource"
for sym in WEP WEP@4 _Z9vMemAllocm _Z8vMemFreePv _ZN7vSYSTEM13GetTraceLevelEv; do
  grep -Eq "\] $sym\$" <<< "$dump" || err "export missing: $sym"
done
for prog in "$@"; do
  check_pe "$prog"
done
[ "$fail" = 0 ] && echo "binaries ok: $(basename "$DLL") $(for p in "$@"; do basename "$p"; done | tr '\n' ' ')"
exit $fail
