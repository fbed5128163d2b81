#!/usr/bin/env bash
# A function that is compiled for wide vectors must not take the place of one that every processor runs: what the
# tiers' files define for others to share bears the name of its tier.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"

for tier in avx2 avx512; do
  object=$BUILD_DIR/src/CMakeFiles/qxport_objects.dir/sorting/tier_$tier.cpp.o
  nm -C --defined-only "$object" | grep -E ' [TWVu] ' >shared || fail "the tier $tier defines nothing"
  # On 32 bits the compiler brings its own way to the address of the code.
  { grep -E " [TW] " shared | grep -vE "${tier}::|__x86\.get_pc_thunk\." || true; } | expect_empty "functions of the tier $tier without its name"
done
finish
