#!/usr/bin/env bash
# What ./dev and .ci/run make of their arguments and of what fails, with the tools that they call replaced.
# shellcheck source=common.bash
source "$(dirname "$0")/common.bash"

mkdir tools 'a place' 'a place/.ci'
cd 'a place'
cp "$SOURCE_DIR/dev" .
for tool in cmake ctest; do
  printf '#!/bin/sh\necho %s "$@"\n' "$tool" >"../tools/$tool"
done
# Everything is installed, and asked for.
cat >../tools/dpkg-query <<END
#!/bin/sh
for word; do :; done
echo "\$word" >>"$work/asked"
echo 'install ok installed'
END
chmod +x ../tools/*
PATH=$work/tools:$PATH

# does STATUS COMMAND...: what it prints is in the file said.
does() {
  local wanted=$1 status=0
  shift
  : >"$work/asked"
  timeout 60 "$@" >said 2>&1 </dev/null || status=$?
  ((status == wanted)) || { fail "$* ended with $status, not $wanted"; cat said; }
}
runs_the_tests() {
  grep ^ctest said | diff - <(echo "$1") || fail "not '$1' is run"
}

does 0 ./dev test
runs_the_tests 'ctest --preset release'
! grep multilib "$work/asked" || fail 'a release build wants the other target'
grep -qx gfortran "$work/asked" || fail 'a release build wants no compiler'
does 0 ./dev test m32
runs_the_tests 'ctest --preset m32'
grep -qx g++-multilib "$work/asked" || fail 'the build for the narrow target does without its compiler'
does 0 ./dev test asan '^unit\.(a|b) c'
runs_the_tests 'ctest --preset asan -R ^unit\.(a|b) c'
does 2 ./dev test nothing

mkdir -p build/release/bench
for area in one two three; do
  # shellcheck disable=SC2016 # the script's own name
  printf '#!/bin/sh\necho ran %s\ntest -e "$0.fast"\n' $area >build/release/bench/bench_$area
  touch build/release/bench/bench_$area.fast
done
chmod +x build/release/bench/bench_{one,two,three}
does 0 ./dev bench
does 0 ./dev bench two
grep ^ran said | diff - <(echo ran two) || fail 'not the named area is measured'
rm build/release/bench/bench_one.fast build/release/bench/bench_two.fast
does 1 ./dev bench
[[ $(grep -c ^ran said) == 3 ]] || fail 'the areas behind one that misses a limit are not measured'
tail -n 1 said | grep -q 'one two$' || fail 'the areas that miss a limit are not named'
does 0 ./dev bench three
does 2 ./dev bench four

# What is installed is built without tests, wherever it goes, and the names that are printed can be typed.
does 0 ./dev install "new place/it's here"
sed -n 's/^cmake //p' said | diff - <(printf '%s\n' '--build --preset install') || fail 'something else is built'
! grep -qx libgtest-dev "$work/asked" || fail 'an installation wants what only tests need'
eval "$(sed -n 's/^export /local_/p' said | sed 's/^local_PKG_CONFIG_PATH=/pkg=/; s/ LD_LIBRARY_PATH=/ loader=/')"
[[ ${pkg:-} == "$PWD/new place/it's here/lib/pkgconfig" && ${loader:-} == "$PWD/new place/it's here/lib" ]] ||
  fail "the printed line leads to ${pkg:-}"
# shellcheck disable=SC2016 # as it is printed
grep -q '^eval gfortran prog.f90 "\$(pkg-config' said || fail 'blanks that pkg-config hides are not read twice'
# A name without blanks, wherever this directory is.
does 0 ./dev install /proc/self/cwd/plain
# shellcheck disable=SC2016 # as it is printed
grep -q '^gfortran prog.f90 \$(pkg-config --cflags --libs qxport)$' said || fail 'the plain line is not printed'
does 2 ./dev install
does 0 ./dev install "$work/plain/../relative"

# bare TOOL...: a PATH with nothing but what the script itself calls and the tools named.
bare() {
  local tool
  rm -rf "$work/bare"
  mkdir "$work/bare"
  for tool in bash env dirname readlink grep sed cat "$@"; do
    ln -s "$(type -P "$tool")" "$work/bare/$tool"
  done
}
# Without packages of Debian it says what to install, and builds where all is there.
bare python3 ninja
does 1 env "PATH=$work/bare" bash ./dev install "$work/plain"
grep -q 'install these first:.* g++' said || fail 'it does not say what to install'
! grep -E 'first:.*(ninja|libgtest)' said || fail 'it wants what is there, or not needed'
bare python3 ninja cmake
ln -s "$work/tools/cmake" "$work/bare/g++"
ln -s "$work/tools/cmake" "$work/bare/gfortran"
ln -s "$(type -P sh)" "$work/bare/sh"
does 0 env "PATH=$work/bare" bash ./dev install "$work/plain"
# A machine of Debian that lacks a package, and root as well.
bare dpkg-query sh tail
cat >"$work/bare/missing" <<'END'
#!/bin/sh
exit 1
END
chmod +x "$work/bare/missing"
mv "$work/bare/missing" "$work/bare/dpkg-query"
does 1 env "PATH=$work/bare" bash ./dev install "$work/plain"
grep -q 'missing and cannot be installed from here: g++ gfortran' said || fail 'it does not say what is missing'

# The steps of .ci/run, one of which may fail: those up to it stand in the table at the end, and what the test runner said
# last stands behind it.
cp "$SOURCE_DIR/.ci/run" .ci
cat >dev <<'END'
#!/bin/sh
[ "$1" != test ] || echo "100% tests passed, 0 tests failed out of ${#2}"
[ "$*" != "$FAILING" ] || exit 3
END
FAILING='' does 0 bash .ci/run
[[ $(grep -c '^ *[0-9]* s  \./dev' said) -ge 6 ]] || fail 'the steps are not told'
[[ $(grep -c '^== \./dev .* took [0-9]* s$' said) == "$(grep -c '^ *[0-9]* s  \./dev' said)" ]] ||
  fail 'a step is not told at its end'
tail -n 1 said | grep -q '^100% tests passed' || fail 'the last is not what the test runner said'
FAILING='test asan' does 3 bash .ci/run
grep -q '^ *[0-9]* s  \./dev test asan: failed with 3$' said || fail 'the failed step is not told'
! grep '\./dev test m32' said || fail 'there are steps behind a failed one'

finish
