/*
 * Copyright (c) 2026 The rovanta Authors
 * Licensed under the Apache License, Version 2.0 (the "License");
 * you may not use this file except in compliance with the License.
 * You may obtain a copy of the License at
 *
 *     http://www.apache.org/licenses/LICENSE-2.0
 *
 * Unless required by applicable law or agreed to in writing, software
 * distributed under the License is distributed on an "AS IS" BASIS,
 * WITHOUT WARRANTIES OR CONDITIONS OF ANY KIND, either express or implied.
 * See the License for the specific language governing permissions and
 * limitations under the License.
 */

'use strict';

// What the memory benchmarks share: the process's RSS after full collections, which needs node --expose-gc.
if (typeof global.gc !== 'function') {
  console.error('run with node --expose-gc');
  process.exit(2);
}

function settledRss() {
  for (let round = 0; round < 3; round++) global.gc();
  return process.memoryUsage().rss;
}

module.exports = { settledRss };
