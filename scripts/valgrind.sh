#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# A subset of the release build's tests under valgrind: it sees what is read before it was written, which the sanitizers
# of the other builds don't.
set -euo pipefail
cd "$(dirname "$0")/.."
# The C library's widest string functions read whole vectors, past an end that can't be passed; valgrind knows only the
# others.
export GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2,-AVX2_Usable,-AVX512VL,-EVEX
[ -x build/release/tests/test_api ] || scripts/build_and_test.sh release
run() {
  valgrind --quiet --error-exitcode=1 --leak-check=full --show-leak-kinds=definite,indirect \
    --errors-for-leak-kinds=definite,indirect "build/release/tests/test_$1" --gtest_brief=1 --gtest_filter="$2"
}
run support '*'
run model '*-*MemoryMappedArray*'
run logger '*-Damage.AccountCoversTheLoss:Damage.*Clock*:Damage.Stored*'
run legacy 'OpenFile*:HostileClaims.EveryCount*:DumpRebuild*:TraceFile*'
run api 'Exports*:OpenFile*:Threads.Share*'
run regulation 'BoostLimit*:Limiter*:Exporter*:ConfigFile*'
