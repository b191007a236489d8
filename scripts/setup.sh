#!/usr/bin/env bash
# Installs what building and testing needs and is not there yet (Debian 12, as root): the cross compiler, Wine, a JDK,
# the Java libraries, a Windows Java runtime and a Wine prefix. Safe to run again; a second run takes a few seconds.
#
#   WINUTIL_CACHE       folder for downloads and the Wine prefix (default: winutil below the user's cache folder)
#   WINDOWS_JAVA_HOME   a Windows JDK or JRE to use instead of downloading one
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/environment.sh
. scripts/environment.sh

packages=(
    cmake ninja-build default-jdk-headless maven python3-pip unzip git
    g++-mingw-w64-x86-64-posix wine wine64 googletest
)
# What only the checks and the plots need comes with --all.
[ "${1:-}" = --all ] && packages+=(clang-19 clang-format-19 clang-tidy-19 libclang-rt-19-dev llvm-19 python3-matplotlib)

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "setup: installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >"$WINUTIL_CACHE/apt.log" 2>&1 ||
        { tail -20 "$WINUTIL_CACHE/apt.log"; exit 1; }
fi

jars=$WINUTIL_CACHE/jars
checksums=$PWD/scripts/downloads/checksums.sha256
if ! (cd "$jars" 2>/dev/null && sha256sum --check --status "$checksums"); then
    echo "setup: fetching the Java libraries"
    rm -rf "$jars"
    mvn -q -B -f scripts/downloads/pom.xml -Dmaven.repo.local="$WINUTIL_CACHE/maven" \
        dependency:copy-dependencies -DoutputDirectory="$jars"
    (cd "$jars" && sha256sum --check --quiet "$checksums")
fi

if [ ! -e "$WINDOWS_JAVA_HOME/bin/java.exe" ]; then
    [ "$WINDOWS_JAVA_HOME" = "$WINUTIL_CACHE/windows-java-17" ] ||
        { echo "setup: WINDOWS_JAVA_HOME has no bin/java.exe: $WINDOWS_JAVA_HOME" >&2; exit 1; }
    scripts/windows-java.sh 17
fi

if [ ! -e "$WINEPREFIX/winutil-ready" ]; then
    echo "setup: making a Wine prefix"
    rm -rf "$WINEPREFIX"
    wineboot -i >"$WINUTIL_CACHE/wineboot.log" 2>&1 || { tail -20 "$WINUTIL_CACHE/wineboot.log"; exit 1; }
    # A crash ends the program with its exit code instead of starting Wine's debugger.
    wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /d none /f >/dev/null
    wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Auto /d 0 /f >/dev/null
    wineserver -w
    touch "$WINEPREFIX/winutil-ready"
fi
