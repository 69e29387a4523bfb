# shellcheck shell=bash
# Sourced by every script of this folder: the checkout's folder, messages, and one way to build.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd -P)"
cd "$ROOT"

say() { printf '==> %s\n' "$*"; }

die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# Another checkout of the same sources then finds what this one has compiled.
export CCACHE_BASEDIR="$ROOT" CCACHE_NOHASHDIR=1
# Headers that are compiled once can be cached only so.
export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime

# configure PRESET: fast when nothing has changed; the compiler cache is used where there is one.
# FETCHCONTENT_SOURCE_DIR_WHISPER may name a folder with Whisper's sources, else they are downloaded.
configure() {
  local options=()
  if command -v ccache >/dev/null; then
    options=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  if [[ -n "${FETCHCONTENT_SOURCE_DIR_WHISPER:-}" ]]; then
    options+=("-DFETCHCONTENT_SOURCE_DIR_WHISPER=$FETCHCONTENT_SOURCE_DIR_WHISPER")
  fi
  # Newer CMakes find Whisper's own build files too old.
  cmake --preset "$1" --log-level=WARNING -Wno-deprecated "${options[@]}" >/dev/null
}

# build PRESET [TARGET...]
build() {
  local preset="$1"
  shift
  configure "$preset"
  local targets=()
  if (($#)); then targets=(--target "$@"); fi
  cmake --build --preset "$preset" --parallel "$(nproc)" "${targets[@]}" -- --quiet
}

# The desktop harness needs Debian's own interpreter: another one first in PATH lacks its D-Bus.
export PYTHON=/usr/bin/python3

has_display() { [[ -n "${DISPLAY:-}" || -n "${WAYLAND_DISPLAY:-}" ]]; }
