#!/usr/bin/env bash
# install_test.sh: Installs a build tree into a scratch prefix and packages it, and checks what a
# desktop will read from them: the file list, the entries, the unit, the man pages and the package.
# Usage: install_test.sh BUILD_DIR SOURCE_DIR
set -uo pipefail
build="$1"
source="$2"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
failures=0
fail() {
  echo "FAIL: $*" >&2
  failures=$((failures + 1))
}
skip() { echo "skipped: $*"; }

# Every installed file, relative to the prefix; the package holds the same under /usr, except the
# configuration, which goes to /etc.
expected_files=(
  bin/corvetta
  bin/corvetta-ctl
  etc/xdg/autostart/corvetta.desktop
  lib/systemd/user/corvetta.service
  share/applications/com.corvetta.Corvetta.desktop
  share/icons/hicolor/scalable/apps/corvetta.svg
  share/icons/hicolor/symbolic/apps/corvetta-symbolic.svg
  share/man/man1/corvetta-ctl.1
  share/man/man1/corvetta.1
  share/doc/corvetta/README.md
)
while read -r page; do
  expected_files+=("share/doc/corvetta/docs/$page")
done < <(cd "$source/docs" && ls -- *.md)
entries=(share/applications/com.corvetta.Corvetta.desktop etc/xdg/autostart/corvetta.desktop)
unit=lib/systemd/user/corvetta.service

prefix="$scratch/prefix"
if ! cmake --install "$build" --prefix "$prefix" >"$scratch/install.log" 2>&1; then
  cat "$scratch/install.log" >&2
  fail "cmake --install failed"
  exit 1
fi

diff <(printf '%s\n' "${expected_files[@]}" | sort) \
  <(cd "$prefix" && find . -type f -o -type l | sed 's|^\./||' | sort) >"$scratch/files.diff" ||
  fail "installed files differ from the expected list (< expected, > installed):
$(cat "$scratch/files.diff")"

# Whatever starts the program must start the one just installed, in whichever prefix that is.
for file in "${entries[@]}" "$unit"; do
  while IFS='=' read -r key value; do
    [ "${value%% *}" = "$prefix/bin/corvetta" ] ||
      fail "$file: $key=$value does not start $prefix/bin/corvetta"
  done < <(grep -E '^(Exec|TryExec|ExecStart)=' "$prefix/$file")
done

for file in "${entries[@]}"; do
  desktop-file-validate "$prefix/$file" || fail "desktop-file-validate rejects $file"
done

# Each man page renders without a warning and names every option and method its program's --help
# lists.
# Lines too long to fill ("break" warnings) come from the scratch prefix's long paths, not from
# the pages.
render() { LC_ALL=C groff -man -Tascii -P-cbou -ww -Wbreak "$1" 2>"$scratch/groff.log"; }
# The options of a --help text: the names before each option line's description.
help_options() {
  grep -E '^ +-' | sed -E 's/^ +//; s/  .*//' | grep -oE -- '(^|[ ,])--?[a-zA-Z][-a-zA-Z]*' |
    tr -d ' ,' | sort -u
}
check_man_page() {
  local page="$1" help="$2" name
  local text
  if ! command -v groff >/dev/null; then
    text="$(cat "$prefix/$page")"
    skip "groff is missing; $page checked as roff source"
  else
    text="$(render "$prefix/$page")"
    [ -s "$scratch/groff.log" ] && fail "$page renders with warnings: $(cat "$scratch/groff.log")"
  fi
  text="${text//\\-/-}"
  while read -r name; do
    [ -n "$name" ] || continue
    grep -qwF -- "$name" <<<"$text" || fail "$page does not mention $name"
  done <<<"$help"
}
corvetta_help="$("$prefix/bin/corvetta" --help)" || fail "installed corvetta --help failed"
ctl_help="$("$prefix/bin/corvetta-ctl" --help)" || fail "installed corvetta-ctl --help failed"
check_man_page share/man/man1/corvetta.1 "$(help_options <<<"$corvetta_help")"
check_man_page share/man/man1/corvetta-ctl.1 "$(help_options <<<"$ctl_help")
$(sed -n '/^Methods:/,$p' <<<"$ctl_help" | grep -oE '^  [a-z_]+' | tr -d ' ')"

if command -v systemd-analyze >/dev/null; then
  mkdir -m 700 "$scratch/runtime"
  # MANPATH: the unit's Documentation= must name a man page this installation provides. Any
  # output counts: verify reports a value it ignores without failing.
  XDG_RUNTIME_DIR="$scratch/runtime" MANPATH="$prefix/share/man" \
    systemd-analyze --user verify "$prefix/$unit" >"$scratch/verify.log" 2>&1
  if grep -q 'Failed to initialize manager' "$scratch/verify.log"; then
    skip "systemd-analyze cannot run here: $(cat "$scratch/verify.log")"
  elif [ -s "$scratch/verify.log" ]; then
    fail "systemd-analyze verify: $(cat "$scratch/verify.log")"
  fi
else
  skip "systemd-analyze is missing; the unit is not verified"
fi

if command -v dpkg-deb >/dev/null; then
  # Only the package's contents are checked, so it is compressed quickly and its library
  # dependencies are not read: dpkg-shlibdeps spends seconds of CPU on the instrumented binaries.
  if cpack -G DEB --config "$build/CPackConfig.cmake" -B "$scratch/package" \
    -D CPACK_DEBIAN_COMPRESSION_TYPE=zstd -D CPACK_DEBIAN_PACKAGE_SHLIBDEPS=OFF \
    >"$scratch/cpack.log" 2>&1; then
    deb="$(ls "$scratch"/package/*.deb)"
    dpkg-deb -c "$deb" | awk '$1 !~ /^d/ {print $6}' | sort >"$scratch/packaged"
    diff <(printf '%s\n' "${expected_files[@]}" | sed -E 's|^etc/|./etc/|; t; s|^|./usr/|' | sort) \
      "$scratch/packaged" >"$scratch/package.diff" ||
      fail "packaged files differ from the expected list (< expected, > packaged):
$(cat "$scratch/package.diff")"
    [ "$(dpkg-deb -f "$deb" Package)" = corvetta ] || fail "the package is not named corvetta"
    while read -r conffile; do
      grep -qxF ".$conffile" "$scratch/packaged" || fail "conffile $conffile is not in the package"
    done < <(dpkg-deb -I "$deb" conffiles)
    dpkg-deb --fsys-tarfile "$deb" | tar -xO "./usr/$unit" |
      grep -qE '^ExecStart=/usr/bin/corvetta( |$)' ||
      fail "the packaged unit does not start /usr/bin/corvetta"
  else
    fail "cpack failed: $(cat "$scratch/cpack.log")"
  fi
else
  skip "dpkg-deb is missing; no package built"
fi

exit $((failures > 0))
