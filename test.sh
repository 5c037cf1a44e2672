#!/usr/bin/env bash
# Installs what is missing, builds, runs every test.
#   ./test.sh          all tests, release build
#   ./test.sh --asan   besides, the tests that read damaged files, under the address and
#                      undefined-behaviour sanitizers
set -euo pipefail
cd "$(dirname "$0")"
source tools/setup.sh

zel_install
tools/check_layers
zel_build release
ctest --preset release -j2
if [ "${1:-}" = "--asan" ]; then
  damaged=(archive_test project_test surrogate_test solver_test end_to_end_test)
  zel_build asan "${damaged[@]}"
  ctest --preset asan -R "^($(IFS='|'; echo "${damaged[*]}"))\$"
fi
