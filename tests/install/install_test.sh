#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks the tree as a desktop sees it: the
# programs run, the desktop entry and the metadata validate, the file type is found for a
# database by name and by content; then the Debian package holds the same files.
set -euo pipefail
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
fail() { echo "install test: $*" >&2; exit 1; }

cmake --install "$build" --prefix "$prefix" >/dev/null
export ASAN_OPTIONS=detect_leaks=0
[[ $("$prefix/bin/qvdb" --version) == "qvdb 3.0" ]] || fail "qvdb does not run"
"$prefix/bin/qvdb" list "$prefix/share/quorvant/Inventory.PDB" --limit 1 >/dev/null ||
  fail "qvdb cannot read the installed example"
if [[ -x $prefix/bin/quorvant ]]; then
  [[ $("$prefix/bin/quorvant" --version) == "quorvant 3.0" ]] || fail "quorvant does not run"
  grep -q 'id="Main_Contents"' "$prefix/share/quorvant/quorvant.htm" || fail "no help page"
  [ -s "$prefix/share/quorvant/alarm1.wav" ] || fail "no alarm sound"
fi
for f in share/applications/quorvant.desktop share/mime/packages/quorvant.xml \
  share/icons/hicolor/scalable/apps/quorvant.svg share/icons/hicolor/48x48/apps/quorvant.png \
  share/icons/hicolor/256x256/apps/quorvant.png share/man/man1/qvdb.1 share/man/man1/quorvant.1 \
  share/bash-completion/completions/qvdb share/zsh/vendor-completions/_qvdb; do
  [[ -s $prefix/$f ]] || fail "$f is not installed"
done
desktop-file-validate "$prefix/share/applications/quorvant.desktop" || fail "desktop entry"
appstreamcli validate --no-net --pedantic "$prefix"/share/metainfo/*.metainfo.xml >/dev/null ||
  fail "metainfo"

# Only the installed MIME package: the system's own list must not answer for it.
update-mime-database "$prefix/share/mime" 2>/dev/null || fail "update-mime-database"
cp "$prefix/share/quorvant/Inventory.PDB" "$work/Sample.PDB"
cp "$prefix/share/quorvant/Inventory.PDB" "$work/sample-without-extension"
for file in "$work/Sample.PDB" "$work/sample-without-extension"; do
  type=$(XDG_DATA_HOME=$work/none XDG_DATA_DIRS=$prefix/share \
    gio info -a standard::content-type "$file" | sed -n 's/.*standard::content-type: //p')
  [[ $type == application/vnd.palm ]] || fail "$(basename "$file") is '$type'"
done

# Every command qvdb lists is in its manual page.
for command in $("$prefix/bin/qvdb" help | sed -n 's/^  qvdb \([a-z]*\).*/\1/p' | sort -u); do
  grep -q "^\.B $command " "$prefix/share/man/man1/qvdb.1" || fail "qvdb.1 lacks $command"
done

# The package installs the same files under /usr.
cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/package" >/dev/null 2>&1 || fail "cpack"
deb=$(ls "$work"/package/*.deb)
diff <(dpkg-deb -c "$deb" | awk '$1 !~ /^d/ {print $6}' | sed 's|^\./usr/||' | sort) \
  <(cd "$prefix" && find . -type f ! -path './share/mime/*' -o -path './share/mime/packages/*' -type f |
    sed 's|^\./||' | sort) || fail "the package's files differ from the installed tree"
echo "install test: OK ($(basename "$deb"))"
