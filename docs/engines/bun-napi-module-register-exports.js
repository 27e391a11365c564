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

// Bun gives the register function of an addon that registers itself with napi_module_register (from a library
// constructor, as platform modules do) the module record instead of module.exports, and then stores the record
// as its own exports: the addon's exports gain the record's `exports` key. An addon that exports
// napi_register_module_v1 gets module.exports as it should. host/index.js undoes this for the modules it loads.
//
// Run with any engine: bun docs/engines/bun-napi-module-register-exports.js
// Needs cc and the Node-API headers in /usr/include/node. Exits 1 while the engine shows the fault.
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { execFileSync } = require('node:child_process');

const ADDON_SOURCE = `
#include <node_api.h>
static napi_value Init(napi_env env, napi_value exports) {
  napi_value one;
  napi_create_int32(env, 1, &one);
  napi_set_named_property(env, exports, "one", one);
  return exports;
}
static napi_module legacyModule = {1, 0, __FILE__, Init, "legacy", 0, {0}};
__attribute__((constructor)) static void Register(void) { napi_module_register(&legacyModule); }
`;

const dir = fs.mkdtempSync(path.join(os.tmpdir(), 'napi-module-register-'));
try {
  fs.writeFileSync(path.join(dir, 'legacy.c'), ADDON_SOURCE);
  const addon = path.join(dir, 'legacy.node');
  execFileSync('cc', ['-shared', '-fPIC', '-I/usr/include/node', '-o', addon, path.join(dir, 'legacy.c')]);

  const record = { exports: {} };
  process.dlopen(record, addon);
  const keys = Object.keys(record.exports);
  console.log(`exports keys: ${JSON.stringify(keys)}; exports is the module record: ${record.exports === record}`);
  process.exitCode = keys.join() === 'one' ? 0 : 1;
} finally {
  fs.rmSync(dir, { recursive: true, force: true });
}
