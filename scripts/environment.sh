# Sourced by the other scripts: where downloads and the Wine prefix live, and how Wine runs (quiet, no display).
export WINUTIL_CACHE=${WINUTIL_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/winutil}
export WINDOWS_JAVA_HOME=${WINDOWS_JAVA_HOME:-$WINUTIL_CACHE/windows-java-17}
export WINEPREFIX=$WINUTIL_CACHE/wine
export WINEDEBUG=-all WINEARCH=win64
# No 32-bit half, no browser engine, no .NET: nothing here needs them, and their installers would ask questions.
export WINEDLLOVERRIDES='mscoree,mshtml='
export LC_ALL=C.UTF-8
unset DISPLAY
mkdir -p "$WINUTIL_CACHE"
# For CMake, which would otherwise go on with the folders of the first time.
toolbox=("-DWINUTIL_CACHE=$WINUTIL_CACHE" "-DWINDOWS_JAVA_HOME=$WINDOWS_JAVA_HOME")
