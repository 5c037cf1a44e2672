#!/usr/bin/env bash
# Installs what is missing, builds, runs every test.
#   ./test.sh          all tests, release build
#   --asan             besides, the tests that read what others wrote, under the address and
#                      undefined-behaviour sanitizers
#   --lint             besides, tools/lint: layout of all files, faults in those that changed; and
#                      the benchmarks compile
set -euo pipefail
cd "$(dirname "$0")"
source tools/setup.sh

asan=false
lint=false
for option in "$@"; do
  case $option in
    --asan) asan=true ;;
    --lint) lint=true ;;
    *)
      echo "test.sh: unknown option $option" >&2
      exit 2
      ;;
  esac
done

zel_install
zel_install tools/packages.test
if $lint; then zel_install tools/packages.lint; fi
tools/check_layers
zel_build release
ctest --preset release -j2
if $lint; then
  tools/lint
  zel_build release benchmarks
fi
if $asan; then
  damaged=(archive_test project_test surrogate_test solver_test end_to_end_test)
  zel_build asan "${damaged[@]}"
  ctest --preset asan -R "^($(IFS='|'; echo "${damaged[*]}"))\$"
fi
