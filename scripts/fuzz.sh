#!/usr/bin/env bash
# Builds the fuzz harnesses (clang, libFuzzer, AddressSanitizer and UndefinedBehaviorSanitizer)
# and runs each for the given number of seconds (30 unless told), one after the other. Seeds
# come from the test builders and from the inputs under tests/regressions; the corpus grows
# under out/fuzz/ (MIRELO_FUZZ_WORK moves it). A harness that finds a crash or a forbidden
# outcome leaves the input under out/fuzz/findings/<harness>/ and the script fails.
set -euo pipefail
seconds="${1:-30}"
here="$(cd "$(dirname "$0")/.." && pwd)"
build="$here/build-fuzz"
work="${MIRELO_FUZZ_WORK:-$here/out/fuzz}"
harnesses=(intake patient_reading serialising settings login_answer)

bash "$here/scripts/install-deps.sh"
options=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DMIRELO_FUZZ=ON -DBUILD_TESTING=OFF)
if command -v ccache >/dev/null; then
  options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
CC=clang CXX=clang++ cmake -S "$here" -B "$build" "${options[@]}" >/dev/null
cmake --build "$build" -j"$(nproc)" --target make_fuzz_seeds "${harnesses[@]/%/_fuzzer}"

rm -rf "$work/seeds"
"$build/fuzz/make_fuzz_seeds" "$work/seeds"
cp "$here"/tests/regressions/*.input "$work/seeds/intake/"
cp "$here"/tests/regressions/*.settings "$work/seeds/settings/"

# The harnesses write a small application directory for every input: memory is faster than
# the disk, and the files written are flushed to disk on every save.
if [ -d /dev/shm ] && [ -w /dev/shm ]; then
  export TMPDIR=/dev/shm
fi
export ASAN_OPTIONS="detect_leaks=0:abort_on_error=1:new_delete_type_mismatch=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"

failed=()
for harness in "${harnesses[@]}"; do
  mkdir -p "$work/corpus/$harness" "$work/findings/$harness"
  log="$work/$harness.log"
  status=0
  "$build/fuzz/${harness}_fuzzer" -max_total_time="$seconds" -timeout=30 -print_final_stats=1 \
    -dict="$work/seeds/xml.dict" \
    -artifact_prefix="$work/findings/$harness/" \
    "$work/corpus/$harness" "$work/seeds/$harness" >"$log" 2>&1 || status=$?
  echo "$harness: $(grep -E '^#[0-9]+' "$log" | tail -1)"
  if [ "$status" -ne 0 ]; then
    grep -E -m5 'ERROR|Outcome not allowed|SUMMARY|Test unit written' "$log" || tail -20 "$log"
    failed+=("$harness")
  fi
done

echo "fuzz: $((${#harnesses[@]} - ${#failed[@]})) passed, ${#failed[@]} failed"
if [ ${#failed[@]} -ne 0 ]; then
  echo "A crash or a forbidden outcome in: ${failed[*]} (inputs under $work/findings/)"
  exit 1
fi
