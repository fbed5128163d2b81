#!/usr/bin/env bash
# The example raw reads single keys from a terminal and leaves it as it was, whichever way it ends.
set -euo pipefail
# shellcheck source=hindered.bash
source "$(dirname "$0")/hindered.bash"
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
timeout 60 "$PYTHON" "$(dirname "$0")/raw.py" "$EXAMPLES/raw"
make_hindrance "$place/hindered.so"
timeout 60 "$PYTHON" "$(dirname "$0")/raw.py" "$EXAMPLES/raw" "$place/hindered.so"
