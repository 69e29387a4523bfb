# shellcheck shell=bash
# hardened BUILD PROGRAM...: checks that the programs in BUILD/bin have what cmake/Hardening.cmake asks
# for. What leaves no mark in a program is looked for in the commands that compiled it.

# lacking PROGRAM: a line for each protection that it lacks.
lacking() {
  local facts symbols
  facts="$(readelf --wide --file-header --program-headers --dynamic --notes "$1" 2>/dev/null)"
  symbols="$(readelf --wide --dyn-syms "$1" 2>/dev/null)"
  has() { grep -qE -- "$2" <<<"$1" || echo "$3"; }
  has "$facts" 'FLAGS_1.*PIE' "a position-independent program"
  has "$facts" 'GNU_RELRO' "relocations that are read-only"
  has "$facts" 'FLAGS_1.*NOW' "relocations that are all made at start"
  has "$facts" 'GNU_STACK.* RW ' "a stack that is not executable"
  has "$symbols" '__stack_chk_fail' "stack protector"
  has "$symbols" '__[a-z]+_chk(@|$| )' "checked library functions"
  has "$symbols" '__glibcxx_assert_fail' "assertions of the C++ library"
}

# uncompiled FLAG BUILD: how many of our sources were compiled without FLAG. Generated tables do not count.
uncompiled() {
  grep '"command"' "$2/compile_commands.json" | grep -F -- " -c $ROOT/src/" |
    grep -cvE -- " $1( |\")" || true
}

hardened() {
  local build="$1" program line flag missing bad=0
  shift
  for program in "$@"; do
    while read -r line; do
      say "$program lacks $line"
      bad=1
    done < <(lacking "$build/bin/$program")
  done
  local flags=(-fstack-protector-strong -fstack-clash-protection -D_GLIBCXX_ASSERTIONS
    '-D_FORTIFY_SOURCE=[23]')
  [[ "$(uname -m)" == x86_64 ]] && flags+=(-fcf-protection=full)
  [[ "$(uname -m)" == aarch64 ]] && flags+=(-mbranch-protection=standard)
  for flag in "${flags[@]}"; do
    missing="$(uncompiled "$flag" "$build")"
    if ((missing)); then
      say "$missing sources were compiled without $flag"
      bad=1
    fi
  done
  ((bad == 0))
}
