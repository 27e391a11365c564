# Copyright (c) 2026 The rovanta Authors
# Licensed under the Apache License, Version 2.0 (the "License");
# you may not use this file except in compliance with the License.
# You may obtain a copy of the License at
#
#     http://www.apache.org/licenses/LICENSE-2.0
#
# Unless required by applicable law or agreed to in writing, software
# distributed under the License is distributed on an "AS IS" BASIS,
# WITHOUT WARRANTIES OR CONDITIONS OF ANY KIND, either express or implied.
# See the License for the specific language governing permissions and
# limitations under the License.

# Step lines for long runs, sourced by the scripts: each step prints one line
# with the time since the script started, so a slow run can be told from a
# hung one. The caller sets step_prefix (the script's name).

step_started_at="$(date +%s)"

# step DESCRIPTION: announces the step that starts now.
step() {
    printf '[%4ss] %s: %s\n' "$(($(date +%s) - step_started_at))" "$step_prefix" "$1" >&2
}

# suites TAP_FILE FILE...: runs node:test suite files with one line per file and
# every failure in full on standard output; the complete TAP goes to TAP_FILE.
suites() {
    local tap_file="$1"
    shift
    mkdir -p "$(dirname "$tap_file")"
    step "$# suite files (complete TAP in ${tap_file#"$PWD/"})"
    node --test --test-reporter="$(dirname "${BASH_SOURCE[0]}")/quiet-reporter.mjs" --test-reporter-destination=stdout \
        --test-reporter=tap --test-reporter-destination="$tap_file" "$@"
}

# logged LOG_FILE DESCRIPTION COMMAND...: runs COMMAND with its output in
# LOG_FILE; prints one line, and the whole log when it fails.
logged() {
    local log_file="$1" description="$2"
    shift 2
    mkdir -p "$(dirname "$log_file")"
    step "$description (output in ${log_file#"$PWD/"})"
    if ! "$@" >"$log_file" 2>&1; then
        cat "$log_file" >&2
        step "$description failed"
        return 1
    fi
}

# takes_no_arguments "$@": for scripts that take none; refuses any with one
# line that names it.
takes_no_arguments() {
    if [ "$#" -gt 0 ]; then
        echo "$step_prefix: unknown option '$1' (it takes none)" >&2
        exit 2
    fi
}
