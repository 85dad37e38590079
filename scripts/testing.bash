# For scripts that run tests.
# shellcheck shell=bash

# run_tests PRESET [CTEST ARGS]: fails as ctest does. Each test program writes its count into a file
# in build/PRESET/results.
run_tests() {
  local preset=$1
  shift
  rm -rf "build/$preset/results"
  with_progress "testing $preset" ctest --preset "$preset" "$@"
}

# end_tests STATUS PRESET...: prints how many cases passed and failed, and fails if STATUS is not 0.
end_tests() {
  local status=$1 preset
  shift
  for preset; do
    cat "build/$preset/results"/*.xml 2>/dev/null |
      sed -n 's/^<testsuites tests="\([0-9]*\)" failures="\([0-9]*\)".*/\1 \2/p' |
      awk -v preset="$preset" '{ all += $1; failed += $2 }
           END { printf "%s: %d passed, %d failed\n", preset, all - failed, failed }'
  done
  if ((status != 0)); then fail "FAILED, see above"; fi
  say "test: all passed"
}
