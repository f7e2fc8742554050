#!/bin/sh
# scripts/check-layers on small trees made here. usage: check_layers_test.sh <scripts/check-layers>
set -eu
check=$1
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
failures=0

# expect <good or wrong> <what it shows>: then the tree starts anew.
expect() {
    said=good
    "$check" "$tree" >"$tree/said" || said=wrong
    if [ "$said" != "$1" ]; then
        echo "FAILED: $2: expected $1"
        cat "$tree/said"
        failures=$((failures + 1))
    fi
    rm -rf "$tree/src" "$tree/usbd"
}

# put <file> <header>...: a file that includes these.
put() {
    file=$tree/$1
    mkdir -p "$(dirname "$file")" "$tree/src"
    shift
    for header in "$@"; do printf '#include "%s"\n' "$header"; done >"$file"
}

put src/api/gain.cpp control/luminance.h camera/common_param.h tavra/tavra_api.h
put src/capture/thread.cpp camera/common_param.h display/draw_request.h media/recorder.h
put src/stages/gamma.cpp stages/gamma.h base/status.h platform/mutex.h vector
put usbd/registry.cpp registry.h base/little_endian.h tavra/tavra_usbd.h
expect good "includes in the direction of the table"

put src/stages/gamma.cpp camera/frame_feature.h
expect wrong "a stage that knows the camera"

put src/stages/gamma.cpp platform/thread.h
expect wrong "a stage that knows more of the platform than its mutex and the last error"

put src/control/luminance.cpp camera/common_param.h
expect wrong "a controller that includes the record"

put src/control/luminance.cpp camera/register_map.h
expect good "a controller that takes a narrow interface"

put src/camera/common_param.h control/luminance.h media/recorder.h
expect good "the record names everything"

put src/camera/geometry.h control/luminance.h
expect wrong "another file of the camera does not"

put src/base/status.h platform/last_error.h
expect wrong "base knows nobody"

put src/settings/file.cpp camera/geometry.h
expect wrong "settings are a client of the public interface"

put usbd/registry.cpp tavra/tavra_api.h
expect wrong "the USB access library knows one public header"

put usbd/registry.cpp platform/event.h
expect wrong "the USB access library does not know libtavra's platform"

put src/attic/old.cpp base/status.h
expect wrong "a folder that nobody has given a place"

mkdir -p "$tree/src"
expect wrong "no files at all: the check looked in the wrong place"

exit "$failures"
