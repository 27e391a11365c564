#!/usr/bin/env bash
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

# Run by gn's exec_script from the test templates: fails, naming them, when
# any of the given folders does not exist.
missing=""
for folder in "$@"; do
    [ -d "$folder" ] || missing="$missing $folder"
done
if [ -n "$missing" ]; then
    echo "no such folder:$missing" >&2
    exit 1
fi
