#!/usr/bin/env bash
# The example raw reads single keys from a terminal and leaves it as it was, whichever way it ends.
set -euo pipefail
exec timeout 60 "$PYTHON" "$(dirname "$0")/raw.py" "$EXAMPLES/raw"
