#!/usr/bin/env bash
# The Debian package of this very build: packs the build's binaries with cpack (no new
# build), unpacks the .deb into a temporary folder with dpkg-deb -x, and from there runs
# tl42rq-script --version, a script on the installed simulated board, and the program
# offscreen until its detection splash reports the board; then lintian must find no error.
# Usage: deb_test.sh BUILD_DIR VERSION    Exit 77 (skipped) only when dpkg-deb is missing.
set -euo pipefail
build=$(cd "$1" && pwd)
project_version=$2

if ! command -v dpkg-deb >/dev/null; then
  echo "SKIPPED: dpkg-deb is not installed, no Debian package can be built or unpacked"
  exit 77
fi
for tool in cpack dpkg-shlibdeps lintian; do
  command -v "$tool" >/dev/null || { echo "FAILED: $tool is missing (scripts/setup installs it)"; exit 1; }
done

tmp=$(mktemp -d "${TMPDIR:-/tmp}/tl42rq-deb-XXXXXX")
trap 'rm -rf "$tmp"' EXIT
trap 'echo "FAILED: line $LINENO: $BASH_COMMAND"' ERR
fail() { echo "FAILED: $*"; exit 1; }

# --- pack and unpack ------------------------------------------------------------------
cpack -G DEB --config "$build/CPackConfig.cmake" -B "$tmp/out" >"$tmp/cpack.log" 2>&1 ||
  { cat "$tmp/cpack.log"; fail "cpack"; }
debs=("$tmp"/out/*.deb)
[[ ${#debs[@]} -eq 1 && -f ${debs[0]} ]] || fail "expected one .deb in $tmp/out"
deb=${debs[0]}
echo "package: $(basename "$deb")"
dpkg-deb -x "$deb" "$tmp/root"
depends=$(dpkg-deb -f "$deb" Depends)
echo "Depends: $depends"
[[ $depends == *libqt6widgets6* && $depends == *libqt6core6* ]] || fail "Depends lacks Qt 6: $depends"

root=$tmp/root/usr
# Nothing from the build tree or the caller's settings may reach the installed programs.
export HOME=$tmp/home
mkdir -p "$HOME"
unset TL42RQ_DRIVER TL42RQ_FIELD XDG_CONFIG_HOME DISPLAY WAYLAND_DISPLAY
export ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0

# --- the files a Debian program carries -------------------------------------------------------
for f in bin/tl42rq bin/tl42rq-script share/tl42rq/TL42RQ_products.ini share/tl42rq/TL42RQ_field.json \
  share/tl42rq/usageTL42RQsoftware.dat share/applications/tl42rq.desktop \
  share/icons/hicolor/scalable/apps/tl42rq.svg share/man/man1/tl42rq.1.gz share/man/man1/tl42rq-script.1.gz \
  share/doc/tl42rq/copyright share/doc/tl42rq/changelog.Debian.gz; do
  [[ -f $root/$f ]] || fail "the package lacks /usr/$f"
done
grep -qx 'Categories=Development;Electronics;' "$root/share/applications/tl42rq.desktop" || fail "menu category"

# --- tl42rq-script --version ------------------------------------------------------------
version=$("$root/bin/tl42rq-script" --version)
[[ $version == "tl42rq-script (TL42RQ Development Software) $project_version" ]] ||
  fail "tl42rq-script --version printed '$version'"
echo "$version"

# --- a script against the installed simulated board and its installed field file -----------
# REQA and the two cascade levels of the field file's double-size ISO 14443-A tag
# 04 A1 B2 C3 D4 E5 F6: cascade tag 88 and BCC 9F (88^04^A1^B2), then BCC 04
# (C3^D4^E5^F6); SAK 04 then 00, each with its CRC_A. Without the installed field file the
# field would be empty and REQA unanswered.
printf 'TL42RQDLL_GETDLLREV\r\nTL42RQDLL_SELECT, 02000180\r\nTL42RQ_ISO14443-A_ANTICOLSELECT123\r\n' >"$tmp/anticol.txt"
stamp="11-23-2026 10:00:00"
T=$'\t' N=$'\r\n'
expected="${N}${stamp}${T}>>> TL42RQDLL_GETDLLREV${N}${T}${T}${T}<<< 0.5.0${N}\
${stamp}${T}>>> TL42RQDLL_SELECT, 02000180${N}${T}${T}${T}<<< 0000${N}${N}\
${stamp}${T}>>> TL42RQDLL_ANTICOLSELECT123${N}${N}${T}------ ISO14443-A STARTING ANTICOLISION ALGORITHM ------${N}${N}\
${stamp}${T}ISO14443-A REQA${N}${T}${T}${T}>>> TL42RQDLL_SENDRECV, 2607${N}${T}${T}${T}<<< 80054C00880003${N}\
${stamp}${T}ISO14443-A ANTICOL 1${N}${T}${T}${T}>>> TL42RQDLL_SENDRECV, 932008${N}${T}${T}${T}<<< 80088804A1B29F080000${N}\
${stamp}${T}ISO14443-A SELECT 1${N}${T}${T}${T}>>> TL42RQDLL_SENDRECV, 93708804A1B29F28${N}${T}${T}${T}<<< 800604DA17080000${N}\
${stamp}${T}ISO14443-A ANTICOL 2${N}${T}${T}${T}>>> TL42RQDLL_SENDRECV, 952008${N}${T}${T}${T}<<< 8008C3D4E5F604080000${N}\
${stamp}${T}ISO14443-A SELECT 2${N}${T}${T}${T}>>> TL42RQDLL_SENDRECV, 9570C3D4E5F60428${N}${T}${T}${T}<<< 800600FE51080000${N}${N}\
${T}${T}${T}--> UID = 04A1B2D4E5F604${N}${T}${T}${T}--> TAG selected${N}${N}\
${T}------ ISO14443-A END OF ANTICOLISION ALGORITHM ------${N}${T}${T}${T} "
TL42RQ_TRACE_TIME=$stamp "$root/bin/tl42rq-script" "$tmp/anticol.txt" >"$tmp/trace.txt" 2>"$tmp/trace.err" ||
  { cat "$tmp/trace.err"; fail "tl42rq-script ended with $?"; }
[[ ! -s $tmp/trace.err ]] || { cat "$tmp/trace.err"; fail "tl42rq-script complained"; }
printf '%s' "$expected" >"$tmp/expected.txt"
cmp -s "$tmp/expected.txt" "$tmp/trace.txt" ||
  { diff <(cat -A "$tmp/expected.txt") <(cat -A "$tmp/trace.txt") || true; fail "script trace differs"; }
echo "script trace: as expected ($(wc -c <"$tmp/trace.txt") bytes)"

# A user's own field file in the configuration folder comes before the installed one.
mkdir -p "$HOME/.config/tl42rq"
printf '{ "board": { "dllRevision": "0.7.2" } }\n' >"$HOME/.config/tl42rq/TL42RQ_field.json"
printf 'TL42RQDLL_GETDLLREV\r\n' >"$tmp/rev.txt"
rev=$(TL42RQ_TRACE_TIME=$stamp "$root/bin/tl42rq-script" "$tmp/rev.txt" | tr -d '\r' | sed -n 's/^\t\t\t<<< //p')
[[ $rev == "0.7.2" ]] || fail "user's field file not used: library revision '$rev'"
rm -r "$HOME/.config/tl42rq"
echo "user's field file: used"

# --- the program offscreen, until the detection splash reports the simulated board -------
[[ $("$root/bin/tl42rq" --version) == "tl42rq (TL42RQ Development Software) $project_version" ]] ||
  fail "tl42rq --version"
QT_QPA_PLATFORM=offscreen TL42RQ_REPORT_DETECTION=1 timeout 120 "$root/bin/tl42rq" >"$tmp/detect.txt" 2>"$tmp/detect.err" ||
  { cat "$tmp/detect.txt" "$tmp/detect.err"; fail "tl42rq ended with $?"; }
cat "$tmp/detect.txt"
libdir=$(cd "$tmp/root" && find usr/lib -name libTL42RQ.so -printf '%h\n')
expected_detect="lblDllRev: DLL REV = 0.5.0
lblMCUrev: MCU REV = 1.4.1
lblIDn: NFC TL42RQ
lblDetectionStatus: DEMO-TL42RQ-A detection is OK.
StatusBar_1:  DEMO-TL42RQ-A BOARD CONNECTED
StatusBar_2: $tmp/root/$libdir/libTL42RQ.so (simulated board)"
[[ $(cat "$tmp/detect.txt") == "$expected_detect" ]] || fail "detection report differs from:
$expected_detect"
[[ ! -e $HOME/.config/tl42rq ]] || fail "starting the program wrote into the user's folder"

# --- lintian ----------------------------------------------------------------------------------
status=0
lintian --fail-on error "$deb" >"$tmp/lintian.txt" 2>&1 || status=$?
grep -v "running with root privileges" "$tmp/lintian.txt" || true
[[ $status -eq 0 ]] && ! grep -q '^E:' "$tmp/lintian.txt" || fail "lintian reports errors (status $status)"
echo "PASSED"
