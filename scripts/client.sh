#!/usr/bin/env bash
# Runs the example backup client in the Windows JVM under Wine, from the release build.
# Usage: scripts/client.sh COMMAND [ARGUMENT...]   (paths as Windows sees them; the root of this system is Z:\)
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=scripts/environment.sh
. "$root/scripts/environment.sh"
build=$root/build/mingw-release
jars=("$build"/examples/backup/backup.jar "$build"/java/winutil.jar "$WINUTIL_CACHE"/jars/picocli-*.jar)
class_path=
for jar in "${jars[@]}"; do
    class_path+="Z:${jar//\//\\};"
done
# Wine says so of Z: whenever its volume is asked for anything, even when it is told to be quiet. On a terminal the line
# stays: a filter would hold the progress line back.
[ -t 2 ] || exec 2> >(grep --line-buffered -v 'Read access denied for device' >&2)
exec wine "$WINDOWS_JAVA_HOME/bin/java.exe" -Xmx512m "-Dwinutil.library=Z:${build//\//\\}\\src\\WinUtil64.dll" \
    -Dstdout.encoding=UTF-8 -Dstderr.encoding=UTF-8 -cp "$class_path" com.qarvo.winutil.backup.Main "$@"
